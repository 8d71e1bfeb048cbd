// Conversion of UTF-16 in chunks. A unit or a surrogate pair may lie partly in two chunks.
#include "utf16_source.h"

#include <algorithm>

#include "korv/korv.h"

namespace tool {

namespace {

bool isHighSurrogate(uint16_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
bool isLowSurrogate(uint16_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

// The number of units before the first surrogate that is not part of a pair.
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
      wide_(units_.size()) {}

// Returns false at the end of the input.
bool Utf16Source::fillUnits() {
    auto* const bytes = reinterpret_cast<char*>(units_.data());
    const size_t kept = unitCount_ * 2;
    size_t filled = kept;
    if (hasOddByte_) bytes[filled++] = oddByte_;
    const size_t count = source_.read(bytes + filled, units_.size() * 2 - filled);
    filled += count;
    hasOddByte_ = filled % 2 != 0;
    if (hasOddByte_) oddByte_ = bytes[filled - 1];
    unitCount_ = filled / 2;

    // This stops at a zero unit; append() lets the input end there.
    if (swap_) {
        SwapnBytes_2(units_.data() + kept / 2, static_cast<int32_t>((unitCount_ - kept / 2) * 2));
    }
    return count > 0;
}

void Utf16Source::convertMore() {
    const bool ended = !fillUnits();
    // The partner of the last unit may follow.
    size_t usable = unitCount_;
    if (!ended && usable > 0 && isHighSurrogate(units_[usable - 1])) --usable;
    const size_t paired = pairedLength(units_.data(), usable);

    uint32_t characters = 0;
    if (KORV_Utf16ToUtf32(units_.data(), static_cast<int32_t>(paired * 2), wide_.data(),
                          static_cast<int32_t>(wide_.size() * sizeof(wchar_t)), &characters) != 0) {
        return end("the input cannot be converted from UTF-16");
    }
    append(wide_.data(), characters);
    if (paired < usable) return end("a UTF-16 surrogate without its partner");
    if (ended) return end(hasOddByte_ ? "the input ends within a UTF-16 unit" : "");

    std::copy(units_.begin() + static_cast<ptrdiff_t>(usable),
              units_.begin() + static_cast<ptrdiff_t>(unitCount_), units_.begin());
    unitCount_ -= usable;
}

}  // namespace tool
