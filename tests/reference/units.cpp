// Unicode units, step by step.
#include "reference/units.h"

namespace reference {

namespace {

constexpr int32_t kTooSmall = 1;
constexpr int32_t kMalformed = 2;

bool isHigh(uint32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
bool isLow(uint32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

}  // namespace

int32_t utf16ToUtf32(const uint16_t* source, int32_t sourceUnits, wchar_t* target,
                     int32_t targetUnits, uint32_t* count) {
    int32_t written = 0;
    for (int32_t i = 0; i < sourceUnits; ++i) {
        uint32_t unit = source[i];
        if (isHigh(unit)) {
            if (i + 1 == sourceUnits || !isLow(source[i + 1])) return kMalformed;
            unit = 0x10000 + ((unit - 0xD800) << 10) + (source[++i] - 0xDC00U);
        } else if (isLow(unit)) {
            return kMalformed;
        }
        if (written == targetUnits) return kTooSmall;
        target[written++] = static_cast<wchar_t>(unit);
    }
    *count = static_cast<uint32_t>(written);
    return 0;
}

int32_t utf32ToUtf16(const wchar_t* source, int32_t sourceUnits, uint16_t* target,
                     int32_t targetUnits, uint32_t* count) {
    int32_t written = 0;
    for (int32_t i = 0; i < sourceUnits; ++i) {
        const auto unit = static_cast<uint32_t>(source[i]);
        if (isHigh(unit) || isLow(unit) || unit > 0x10FFFF) return kMalformed;
        if (written + (unit > 0xFFFF ? 2 : 1) > targetUnits) return kTooSmall;
        if (unit > 0xFFFF) {
            target[written++] = static_cast<uint16_t>(0xD800 + ((unit - 0x10000) >> 10));
            target[written++] = static_cast<uint16_t>(0xDC00 + ((unit - 0x10000) & 0x3FF));
        } else {
            target[written++] = static_cast<uint16_t>(unit);
        }
    }
    *count = static_cast<uint32_t>(written);
    return 0;
}

}  // namespace reference
