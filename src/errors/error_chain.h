// What opening a record and capturing its tokens share.
#pragma once

#include "korv/errors.h"

namespace korv {

// Adds bytes to the newest record's size; the anchor's largest size follows.
void account(ErrorAnchor& anchor, uint32_t bytes) noexcept;

}  // namespace korv
