// Decoding of secrets. No table is indexed by their characters.
#include "secrets/secret_text.h"

#include <algorithm>

#include "secrets/secret_pages.h"

namespace secrets {

namespace {

constexpr int kNone = -1;

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return kNone;
}

int base64Value(char c) {
    if (c >= 'A' && c <= 'Z') return c - 'A';
    if (c >= 'a' && c <= 'z') return c - 'a' + 26;
    if (c >= '0' && c <= '9') return c - '0' + 52;
    if (c == '+') return 62;
    return c == '/' ? 63 : kNone;
}

size_t decodeHex(std::string_view text, uint8_t* bytes) {
    for (size_t i = 0; i < text.size(); i += 2) {
        bytes[i / 2] = static_cast<uint8_t>(hexValue(text[i]) * 16 + hexValue(text[i + 1]));
    }
    return text.size() / 2;
}

// Returns 0 for anything but the one way to write the bytes.
size_t decodeBase64(std::string_view text, uint8_t* bytes) {
    if (text.size() % 4 != 0) return 0;
    size_t padding = 0;
    while (padding < 2 && text.ends_with('=')) {
        text.remove_suffix(1);
        ++padding;
    }
    uint32_t bits = 0;
    int count = 0;
    size_t length = 0;
    for (const char c : text) {
        const int value = base64Value(c);
        if (value == kNone) return 0;
        bits = bits << 6 | static_cast<uint32_t>(value);
        count += 6;
        if (count < 8) continue;
        count -= 8;
        bytes[length++] = static_cast<uint8_t>(bits >> count);
        bits &= (1u << count) - 1;
    }
    return bits == 0 ? length : 0;
}

}  // namespace

bool isSecretName(std::string_view name) {
    const auto isLetter = [](char c) { return c >= 'a' && c <= 'z'; };
    const auto isPart = [&](char c) { return isLetter(c) || (c >= '0' && c <= '9') || c == '_'; };
    const bool isHex =
        std::all_of(name.begin(), name.end(), [](char c) { return hexValue(c) != kNone; });
    return !name.empty() && name.size() <= kLongestName && isLetter(name[0]) &&
           std::all_of(name.begin(), name.end(), isPart) &&
           !(isHex && name.size() >= 2 * kShortestSecret);
}

size_t decodeSecret(std::string_view text, uint8_t* bytes) {
    constexpr size_t kLongestText = kLongestSecret * 2;
    if (text.empty() || text.size() > kLongestText) return 0;
    const bool isHex = text.size() % 2 == 0 && std::all_of(text.begin(), text.end(), [](char c) {
                           return hexValue(c) != kNone;
                       });
    uint8_t decoded[kLongestText];
    size_t length = isHex ? decodeHex(text, decoded) : decodeBase64(text, decoded);
    if (length < kShortestSecret || length > kLongestSecret) length = 0;
    std::copy_n(decoded, length, bytes);
    wipe(decoded, sizeof decoded);
    return length;
}

}  // namespace secrets
