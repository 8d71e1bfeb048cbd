// Comparison of wide texts without regard to case.
#include <cwctype>

#include "korv/text.h"

namespace korv {
namespace {

// The two lowered characters that a comparison function compared last. When one text is a prefix of
// the other they give the result, also when they come from the call before.
struct LastPair {
    uint32_t first = 0;
    uint32_t second = 0;
};

int32_t difference(uint32_t first, uint32_t second) noexcept {
    return static_cast<int32_t>(first - second);
}

// Compares while `more()` allows another character and both texts have one.
int32_t compare(const wchar_t* first, const wchar_t* second, LastPair& last,
                const int32_t* limit) noexcept {
    int32_t left = limit ? *limit : 0;
    for (; *first && *second && (!limit || left > 0); ++first, ++second, --left) {
        last = {std::towlower(static_cast<std::wint_t>(*first)),
                std::towlower(static_cast<std::wint_t>(*second))};
        if (last.first != last.second) return difference(last.first, last.second);
    }
    if (limit && left == 0) return 0;
    if (!*first && !*second) return 0;
    return !*first ? difference(0, last.second) : difference(last.first, 0);
}

thread_local constinit LastPair lastWhole;
thread_local constinit LastPair lastCounted;

}  // namespace
}  // namespace korv

int32_t StringWCaseCompare(const wchar_t* first, const wchar_t* second) {
    return korv::compare(first, second, korv::lastWhole, nullptr);
}

int32_t StringWNCaseCompare(const wchar_t* first, const wchar_t* second, int32_t count) {
    return korv::compare(first, second, korv::lastCounted, &count);
}
