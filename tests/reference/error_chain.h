// Error records, with tokens of the types VARCHAR_SZ, WVARCHAR_SZ and INTEGER.
#pragma once

#include <cstdint>

#include "korv/errors.h"

namespace reference {

int32_t errorCapture(ErrorAnchor* anchor, uint32_t firstCode, uint32_t secondCode,
                     int16_t slotCount);
int32_t tokenCapture(ErrorAnchor* anchor, const void* value, int16_t dataType, uint32_t tokenId);
int32_t termErrors(ErrorAnchor* anchor);

}  // namespace reference
