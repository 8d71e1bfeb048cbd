// Code pages that the system's iconv converts.
#pragma once

#include "output.h"

namespace korv::datacnv {

CnvStatus widenByIconv(uint32_t codePage, const char* source, uint32_t bytes,
                       Output<wchar_t>& out) noexcept;
CnvStatus narrowByIconv(uint32_t codePage, const wchar_t* source, uint32_t characters,
                        Output<char>& out) noexcept;

}  // namespace korv::datacnv
