// The field that a reference names, by walking from the first one.
#pragma once

#include <cstdint>

#include "korv/ctrlblk.h"

namespace reference {

// One step for each count below `position`. The address beyond the last record is as far as it
// goes.
inline FieldDefX* walk(FieldDefX* first, std::int16_t position) {
    FieldDefX* at = first;
    for (int step = 0; step < position; ++step) {
        if (!at) continue;
        if (!at->link) return at + 1;
        at = at->link;
    }
    return at;
}

}  // namespace reference
