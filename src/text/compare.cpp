// Comparison of wide texts without regard to case.
#include <algorithm>
#include <cwchar>

#include "korv/text.h"
#include "text/letter_case.h"

namespace korv {
namespace {

// The two lowered characters that a comparison function compared last. When one text is a prefix of
// the other they give the result, also when they come from the call before.
struct LastPair {
    wchar_t first = 0;
    wchar_t second = 0;
};

int32_t difference(wchar_t first, wchar_t second) noexcept {
    return static_cast<int32_t>(static_cast<uint32_t>(first) - static_cast<uint32_t>(second));
}

using LowerCase = WideCase<Lower>;

// The index of the first difference among `length` characters, or length.
std::size_t findDifference(const wchar_t* first, const wchar_t* second, std::size_t length,
                           const LowerCase& lower) noexcept {
    const bool ascii = length >= kBlockUnits<wchar_t> && lower.isAsciiLocale();
    std::size_t i = 0;
    const auto isEqual = [&](std::size_t at) {
        return first[at] == second[at] || lower.convert(first[at]) == lower.convert(second[at]);
    };
    while (length - i >= kBlockUnits<wchar_t>) {
        const Block<wchar_t> a = loadBlock(first + i);
        const Block<wchar_t> b = loadBlock(second + i);
        if (ascii && isAscii(a | b) &&
            allLanes(convertAscii<Lower, int32_t>(a) == convertAscii<Lower, int32_t>(b))) {
            i += kBlockUnits<wchar_t>;
            continue;
        }
        for (const std::size_t end = i + kBlockUnits<wchar_t>; i < end; ++i) {
            if (!isEqual(i)) return i;
        }
    }
    while (i < length && isEqual(i)) ++i;
    return i;
}

// How many characters are measured and compared at a time, so that texts that differ early are not
// read to their ends.
constexpr std::size_t kStride = 64;

// The result when a text has ended, or when none was compared.
int32_t resultAtEnd(const wchar_t* first, const wchar_t* second, const LastPair& last) noexcept {
    if (!*first && !*second) return 0;
    return *first ? last.first : difference(0, last.second);
}

// Compares at most `limit` characters.
int32_t compareUpTo(const wchar_t* first, const wchar_t* second, std::size_t limit,
                    LastPair& last) noexcept {
    const LowerCase lower;
    while (limit > 0 && *first && *second) {
        const std::size_t most = std::min(limit, kStride);
        const std::size_t length = wcsnlen(second, wcsnlen(first, most));
        const std::size_t at = findDifference(first, second, length, lower);
        const std::size_t compared = std::min(at, length - 1);
        last = {lower.convert(first[compared]), lower.convert(second[compared])};
        if (at < length) return difference(last.first, last.second);
        first += length;
        second += length;
        limit -= length;
    }
    return limit == 0 ? 0 : resultAtEnd(first, second, last);
}

thread_local constinit LastPair lastWhole;
thread_local constinit LastPair lastCounted;

}  // namespace
}  // namespace korv

int32_t StringWCaseCompare(const wchar_t* first, const wchar_t* second) {
    return korv::compareUpTo(first, second, SIZE_MAX, korv::lastWhole);
}

int32_t StringWNCaseCompare(const wchar_t* first, const wchar_t* second, int32_t count) {
    if (count < 0) return korv::resultAtEnd(first, second, korv::lastCounted);
    return korv::compareUpTo(first, second, static_cast<std::size_t>(count), korv::lastCounted);
}
