// Unicode units, byte order and bit order, step by step.
#include "literal/literal.h"

namespace {

constexpr int32_t tooSmall = 1;
constexpr int32_t malformed = 2;

bool isHigh(uint32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
bool isLow(uint32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

}  // namespace

int32_t literalUtf16ToUtf32(const uint16_t* source, int32_t sourceUnits, wchar_t* target,
                            int32_t targetUnits, uint32_t* count) {
    int32_t written = 0;
    for (int32_t i = 0; i < sourceUnits; ++i) {
        uint32_t unit = source[i];
        if (isHigh(unit)) {
            if (i + 1 == sourceUnits || !isLow(source[i + 1])) return malformed;
            unit = 0x10000 + ((unit - 0xD800) << 10) + (source[++i] - 0xDC00U);
        } else if (isLow(unit)) {
            return malformed;
        }
        if (written == targetUnits) return tooSmall;
        target[written++] = static_cast<wchar_t>(unit);
    }
    *count = static_cast<uint32_t>(written);
    return 0;
}

int32_t literalUtf32ToUtf16(const wchar_t* source, int32_t sourceUnits, uint16_t* target,
                            int32_t targetUnits, uint32_t* count) {
    int32_t written = 0;
    for (int32_t i = 0; i < sourceUnits; ++i) {
        const auto unit = static_cast<uint32_t>(source[i]);
        if (isHigh(unit) || isLow(unit) || unit > 0x10FFFF) return malformed;
        if (written + (unit > 0xFFFF ? 2 : 1) > targetUnits) return tooSmall;
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

uint16_t* literalSwapnBytes_2(uint16_t* units, int32_t bytes) {
    uint16_t* unit = units;
    for (int32_t done = 0; done < bytes && *unit; done += 2, ++unit) {
        *unit = static_cast<uint16_t>(*unit << 8 | *unit >> 8);
    }
    return units;
}

uint32_t* literalSwapnBytes_4(uint32_t* units, int32_t bytes) {
    uint32_t* unit = units;
    for (int32_t done = 0; done < bytes && *unit; done += 4, ++unit) {
        *unit = *unit << 24 | (*unit & 0xFF00) << 8 | (*unit >> 8 & 0xFF00) | *unit >> 24;
    }
    return units;
}

void literalBitfieldFlip(uint8_t* target, const uint8_t* source, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
        target[i] = 0;
        if (source[i] & 0x80) target[i] |= 0x01;
        if (source[i] & 0x40) target[i] |= 0x02;
        if (source[i] & 0x20) target[i] |= 0x04;
        if (source[i] & 0x10) target[i] |= 0x08;
        if (source[i] & 0x08) target[i] |= 0x10;
        if (source[i] & 0x04) target[i] |= 0x20;
        if (source[i] & 0x02) target[i] |= 0x40;
        if (source[i] & 0x01) target[i] |= 0x80;
    }
}
