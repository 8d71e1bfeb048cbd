// Unicode units.
#pragma once

#include <cstdint>

namespace reference {

// Both return 0, 1 when the target is too small, or 2 for malformed source.
int32_t utf16ToUtf32(const uint16_t* source, int32_t sourceUnits, wchar_t* target,
                     int32_t targetUnits, uint32_t* count);
int32_t utf32ToUtf16(const wchar_t* source, int32_t sourceUnits, uint16_t* target,
                     int32_t targetUnits, uint32_t* count);

}  // namespace reference
