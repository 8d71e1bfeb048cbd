// Conversion of UTF-16 in chunks: a pair of surrogates or a unit may lie across the border of two.
#include "host/utf16_source.h"

#include <algorithm>
#include <cstring>

#include "text/utf8_text.h"

namespace host {

namespace {

bool isHighSurrogate(uint16_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
bool isLowSurrogate(uint16_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

// The number of units before the first surrogate without its partner.
size_t pairedLength(const uint16_t* units, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        if (isLowSurrogate(units[i])) return i;
        if (isHighSurrogate(units[i])) {
            if (i + 1 == count || !isLowSurrogate(units[i + 1])) return i;
            ++i;
        }
    }
    return count;
}

}  // namespace

Utf16Source::Utf16Source(ByteSource& source, bool bigEndian, size_t unitsPerChunk)
    : source_(source),
      swap_(bigEndian != (KORV_IsPlatformBigEndian() == 1)),
      units_(std::max<size_t>(unitsPerChunk, 2)),
      wide_(units_.size() + 1),
      utf8_(units_.size() * 4 + 1) {}

void Utf16Source::fillUnits() {
    auto* const bytes = reinterpret_cast<char*>(units_.data());
    const size_t kept = unitCount_ * 2;
    size_t filled = kept;
    if (hasOddByte_) bytes[filled++] = oddByte_;
    const size_t count = source_.read(bytes + filled, units_.size() * 2 - filled);
    ended_ = count == 0;
    filled += count;
    hasOddByte_ = filled % 2 != 0;
    if (hasOddByte_) oddByte_ = bytes[filled - 1];
    unitCount_ = filled / 2;

    uint16_t* const fresh = units_.data() + kept / 2;
    if (swap_) SwapnBytes_2(fresh, static_cast<int32_t>((unitCount_ - kept / 2) * 2));
    // The swap ends at a zero unit. So does the text: the reader refuses NUL wherever it stands.
    const auto* const end = units_.data() + unitCount_;
    const auto* const zero = std::find(fresh, units_.data() + unitCount_, 0);
    if (zero != end) {
        unitCount_ = static_cast<size_t>(zero - units_.data()) + 1;
        hasOddByte_ = false;
        ended_ = true;
    }
}

void Utf16Source::convertUnits() {
    size_t usable = unitCount_;
    if (!ended_ && usable > 0 && isHighSurrogate(units_[usable - 1])) --usable;
    const size_t paired = pairedLength(units_.data(), usable);
    if (paired < usable) {
        fault_ = "a UTF-16 surrogate without its partner";
    } else if (ended_ && hasOddByte_) {
        fault_ = "the input ends within a UTF-16 unit";
    }

    uint32_t characters = 0;
    uint32_t bytes = 0;
    if (KORV_Utf16ToUtf32(units_.data(), static_cast<int32_t>(paired * 2), wide_.data(),
                          static_cast<int32_t>((wide_.size() - 1) * sizeof(wchar_t)),
                          &characters) != 0) {
        throw MalformedInput("the input cannot be converted from UTF-16");
    }
    wide_[characters] = 0;
    const bool zeroAtEnd = characters > 0 && wide_[characters - 1] == 0;
    if (zeroAtEnd) --characters;
    if (characters > 0 && KORVCnvWVarcharSzToVarcharSz(wide_.data(), &characters, utf8_.data(),
                                                       static_cast<uint32_t>(utf8_.size()), &bytes,
                                                       &text::kUtf8Options) != 0) {
        throw MalformedInput("the input cannot be converted to UTF-8");
    }
    if (zeroAtEnd) utf8_[bytes++] = 0;
    utf8Begin_ = 0;
    utf8End_ = bytes;

    std::copy(units_.begin() + static_cast<ptrdiff_t>(usable),
              units_.begin() + static_cast<ptrdiff_t>(unitCount_), units_.begin());
    unitCount_ -= usable;
}

size_t Utf16Source::read(char* buffer, size_t capacity) {
    while (utf8Begin_ == utf8End_) {
        if (!fault_.empty()) throw MalformedInput(fault_);
        if (ended_) return 0;
        fillUnits();
        convertUnits();
    }
    const size_t count = std::min(capacity, utf8End_ - utf8Begin_);
    std::memcpy(buffer, utf8_.data() + utf8Begin_, count);
    utf8Begin_ += count;
    return count;
}

ByteSource& openAsUtf8(FileSource& file, std::unique_ptr<ByteSource>& conversion) {
    const std::string_view mark = file.peek(2);
    const bool little = mark == std::string_view("\xFF\xFE", 2);
    const bool big = mark == std::string_view("\xFE\xFF", 2);
    if (!little && !big) return file;
    char taken[2];
    size_t count = 0;
    while (count < sizeof taken) count += file.read(taken + count, sizeof taken - count);
    conversion = std::make_unique<Utf16Source>(file, big);
    return *conversion;
}

}  // namespace host
