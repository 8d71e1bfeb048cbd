// Text in UTF-8 and wide form, for the engine, the providers and the programs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
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
inline bool isPlainAscii(const char* bytes, size_t length) {
    constexpr uint64_t kOnes = 0x0101010101010101u;
    // A zero byte borrows into its high bit; so may a 1 above it, which then is no false alarm.
    const auto suspects = [](uint64_t word) { return word | (word - kOnes); };
    const auto load = [bytes](size_t at) {
        uint64_t word;
        std::memcpy(&word, bytes + at, sizeof word);
        return word;
    };
    uint64_t found = 0;
    if (length >= 8) {
        for (size_t i = 0; i + 8 < length; i += 8) found |= suspects(load(i));
        found |= suspects(load(length - 8));
    } else {
        uint64_t word = 0x20 * kOnes;
        for (size_t i = 0; i < length; ++i) word = word << 8 | static_cast<unsigned char>(bytes[i]);
        found = suspects(word);
    }
    return (found & 0x80 * kOnes) == 0;
}

class ConversionError : public std::runtime_error {
  public:
    explicit ConversionError(int32_t status)
        : std::runtime_error("text cannot be converted, status " + std::to_string(status)) {}
};

// Both throw ConversionError.
std::wstring toWide(std::string_view utf8);
std::string toUtf8(std::wstring_view wide);

}  // namespace text
