// Code pages: narrow text to wide and back.
#pragma once

#include "output.h"

namespace korv::datacnv {

// Without options a byte is one ISO 8859-1 character. The first fault met, from the start of the
// text, is the one reported.
CnvStatus widen(const CnvOptions* options, const char* source, uint32_t bytes,
                Output<wchar_t>& out) noexcept;
CnvStatus narrow(const CnvOptions* options, const wchar_t* source, uint32_t characters,
                 Output<char>& out) noexcept;

}  // namespace korv::datacnv
