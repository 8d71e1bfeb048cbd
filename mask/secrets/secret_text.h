// Secrets as text: their names, and their bytes in hexadecimal digits or base64.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace secrets {

inline constexpr size_t kShortestSecret = 16;
inline constexpr size_t kLongestSecret = 64;
inline constexpr size_t kLongestName = 64;

// A lower-case letter, then lower-case letters, digits and underscores. What could be a secret in
// hexadecimal digits is no name, so that messages with names show no secret.
bool isSecretName(std::string_view name);

// Decodes an even count of hexadecimal digits, or else padded base64, to `bytes`, which has room
// for kLongestSecret. Returns the length; 0 when the text is malformed or the secret has a length
// that is not allowed.
size_t decodeSecret(std::string_view text, uint8_t* bytes);

}  // namespace secrets
