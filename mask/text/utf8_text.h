// Text in UTF-8 and wide form, for the engine, the providers and the programs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "korv/datacnv.h"

namespace text {

inline constexpr uint32_t kUtf8CodePage = 1208;
extern const CnvOptions kUtf8Options;

// The number of bytes before the first one that is not UTF-8; `length` when all are.
size_t validUtf8Length(const char* bytes, size_t length);

// Whether all bytes are ASCII characters other than zero.
bool isPlainAscii(const char* bytes, size_t length);

class ConversionError : public std::runtime_error {
  public:
    explicit ConversionError(int32_t status)
        : std::runtime_error("text cannot be converted, status " + std::to_string(status)) {}
};

// Both throw ConversionError.
std::wstring toWide(std::string_view utf8);
std::string toUtf8(std::wstring_view wide);

}  // namespace text
