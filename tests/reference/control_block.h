// Conversion and release of a control block.
#pragma once

#include <cstdint>

#include "korv/ctrlblk.h"

namespace reference {

int32_t cnvCtrlBlkFromIToX(const CtrlBlkI* source, CtrlBlkX* target);
int32_t cleanCtrlBlkX(CtrlBlkX* block);

}  // namespace reference
