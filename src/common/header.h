// Block headers of the records that the library writes.
#pragma once

#include <cstring>

#include "korv/base.h"

namespace korv {

inline void writeHeader(BlockHeader& header, const char (&eyeCatcher)[5],
                        uint16_t length) noexcept {
    std::memcpy(header.eyeCatcher, eyeCatcher, sizeof header.eyeCatcher);
    header.version = KORV_BLOCK_VERSION;
    header.length = length;
}

}  // namespace korv
