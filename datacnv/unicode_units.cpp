// UTF-16 units to UTF-32 units, and back.
#include "korv/datacnv.h"
#include "unicode.h"

namespace korv::datacnv {
namespace {

constexpr bool isHighSurrogate(uint32_t unit) noexcept {
    return (unit & 0xFFFFFC00u) == 0xD800;
}

constexpr bool isLowSurrogate(uint32_t unit) noexcept {
    return (unit & 0xFFFFFC00u) == 0xDC00;
}

CnvStatus join(const uint16_t* source, int32_t sourceUnits, wchar_t* target, int32_t targetUnits,
               uint32_t* count) noexcept {
    if (sourceUnits < 0 || targetUnits < 0) return CNV_BAD_LENGTH;
    int32_t written = 0;
    for (int32_t i = 0; i < sourceUnits; ++i) {
        uint32_t c = source[i];
        if (isHighSurrogate(c) && i + 1 < sourceUnits && isLowSurrogate(source[i + 1])) {
            c = 0x10000 + ((c - 0xD800) << 10 | (source[++i] - 0xDC00u));
        }
        if (!isCharacter(c)) return CNV_MALFORMED_SOURCE;
        if (written == targetUnits) return CNV_TARGET_TOO_SMALL;
        target[written++] = static_cast<wchar_t>(c);
    }
    *count = static_cast<uint32_t>(written);
    return CNV_SUCCESS;
}

CnvStatus split(const wchar_t* source, int32_t sourceUnits, uint16_t* target, int32_t targetUnits,
                uint32_t* count) noexcept {
    if (sourceUnits < 0 || targetUnits < 0) return CNV_BAD_LENGTH;
    int32_t written = 0;
    for (int32_t i = 0; i < sourceUnits; ++i) {
        const uint32_t c = codeOf(source[i]);
        if (!isCharacter(c)) return CNV_MALFORMED_SOURCE;
        const bool pair = c > 0xFFFF;
        if (targetUnits - written < (pair ? 2 : 1)) return CNV_TARGET_TOO_SMALL;
        if (pair) {
            target[written++] = static_cast<uint16_t>(0xD7C0 + (c >> 10));
            target[written++] = static_cast<uint16_t>(0xDC00 | (c & 0x3FF));
        } else {
            target[written++] = static_cast<uint16_t>(c);
        }
    }
    *count = static_cast<uint32_t>(written);
    return CNV_SUCCESS;
}

}  // namespace
}  // namespace korv::datacnv

extern "C" {

int32_t Convert16To32(const uint16_t* source, int32_t sourceUnits, wchar_t* target,
                      int32_t targetUnits, uint32_t* count) {
    return korv::datacnv::join(source, sourceUnits, target, targetUnits, count);
}

int32_t Convert32To16(const wchar_t* source, int32_t sourceUnits, uint16_t* target,
                      int32_t targetUnits, uint32_t* count) {
    return korv::datacnv::split(source, sourceUnits, target, targetUnits, count);
}

}  // extern "C"
