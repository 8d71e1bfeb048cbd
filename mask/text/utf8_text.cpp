// Validation of UTF-8, and its conversion through the companion library.
#include "text/utf8_text.h"

#include <bit>
#include <cstring>
#include <vector>

namespace text {

const CnvOptions kUtf8Options = {{}, kUtf8CodePage, 0};

namespace {

constexpr uint64_t kHighBits = 0x8080808080808080u;

// The bytes of the well-formed character at `p`, or 0.
size_t characterLength(const unsigned char* p, size_t left) {
    auto follows = [&](size_t i, unsigned low, unsigned high) {
        return i < left && p[i] >= low && p[i] <= high;
    };
    auto tail = [&](size_t i) { return follows(i, 0x80, 0xBF); };
    const unsigned lead = p[0];
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead <= 0xDF) return tail(1) ? 2 : 0;
    if (lead == 0xE0) return follows(1, 0xA0, 0xBF) && tail(2) ? 3 : 0;
    if (lead == 0xED) return follows(1, 0x80, 0x9F) && tail(2) ? 3 : 0;
    if (lead >= 0xE1 && lead <= 0xEF) return tail(1) && tail(2) ? 3 : 0;
    if (lead == 0xF0) return follows(1, 0x90, 0xBF) && tail(2) && tail(3) ? 4 : 0;
    if (lead == 0xF4) return follows(1, 0x80, 0x8F) && tail(2) && tail(3) ? 4 : 0;
    if (lead >= 0xF1 && lead <= 0xF3) return tail(1) && tail(2) && tail(3) ? 4 : 0;
    return 0;
}

}  // namespace

size_t validUtf8Length(const char* bytes, size_t length) {
    const auto* p = reinterpret_cast<const unsigned char*>(bytes);
    size_t i = 0;
    for (;;) {
        // Most text is ASCII.
        for (; i + 8 <= length; i += 8) {
            uint64_t word;
            std::memcpy(&word, bytes + i, sizeof word);
            const uint64_t others = word & kHighBits;
            if (others == 0) continue;
            i += static_cast<size_t>(std::countr_zero(others)) / 8;
            break;
        }
        while (i < length && p[i] < 0x80) ++i;
        if (i == length) return length;
        const size_t n = characterLength(p + i, length - i);
        if (n == 0) return i;
        i += n;
    }
}

std::wstring toWide(std::string_view utf8) {
    if (utf8.empty()) return {};
    std::vector<wchar_t> wide(utf8.size() + 1);
    const uint32_t length = static_cast<uint32_t>(utf8.size());
    uint32_t characters = 0;
    const int32_t status = KORVCnvCharToWVarcharSz(
        utf8.data(), &length, wide.data(), static_cast<uint32_t>(wide.size() * sizeof(wchar_t)),
        &characters, &kUtf8Options);
    if (status != CNV_SUCCESS) throw ConversionError(status);
    return std::wstring(wide.data(), characters);
}

std::string toUtf8(std::wstring_view wide) {
    if (wide.empty()) return {};
    const std::wstring terminated(wide);
    std::vector<char> narrow(wide.size() * 4 + 1);
    const uint32_t length = static_cast<uint32_t>(wide.size());
    uint32_t bytes = 0;
    const int32_t status =
        KORVCnvWVarcharSzToVarcharSz(terminated.c_str(), &length, narrow.data(),
                                     static_cast<uint32_t>(narrow.size()), &bytes, &kUtf8Options);
    if (status != CNV_SUCCESS) throw ConversionError(status);
    return std::string(narrow.data(), bytes);
}

}  // namespace text
