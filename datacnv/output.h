// Text on its way into a caller's buffer: the bound, the terminator and the count of every
// conversion.
#pragma once

#include <cstdint>
#include <cstring>

#include "korv/datacnv.h"

namespace korv::datacnv {

template <class Unit>
struct Output {
    Unit* units;
    uint32_t room;  // units that may be written; one more is kept for the terminator
    uint32_t written = 0;

    bool put(Unit unit) noexcept {
        if (written == room) return false;
        units[written++] = unit;
        return true;
    }

    // Appends `count` units that need not be aligned.
    CnvStatus append(const void* source, uint32_t count) noexcept {
        if (count > room - written) return CNV_TARGET_TOO_SMALL;
        std::memcpy(units + written, source, count * sizeof(Unit));
        written += count;
        return CNV_SUCCESS;
    }
};

// Runs convert(Output&), and leaves its text terminated and counted, or an empty string after a
// failure.
template <class Unit, class Convert>
int32_t produce(Unit* target, uint32_t capacity, uint32_t* outLen, Convert convert) noexcept {
    const uint32_t units = capacity / sizeof(Unit);
    if (units == 0) return CNV_TARGET_TOO_SMALL;
    Output<Unit> out{target, units - 1};
    const CnvStatus status = convert(out);
    if (status == CNV_SUCCESS) {
        *outLen = out.written;
    } else {
        // Nothing of a text that could not be converted stays in the target after the terminator.
        std::memset(target, 0, out.written * sizeof(Unit));
        out.written = 0;
    }
    target[out.written] = Unit{};
    return status;
}

}  // namespace korv::datacnv
