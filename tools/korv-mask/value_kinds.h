// Single values: whether one has the form of a card number, an e-mail address, and the like.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tool {

inline bool isDigitCharacter(char c) {
    return c >= '0' && c <= '9';
}
inline bool isLetterCharacter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// 12 to 19 digits with a correct check digit, between them blanks and hyphens. Number 0 is no card.
inline bool isCard(std::string_view value) {
    size_t digits = 0;
    int32_t sum = 0;
    for (size_t i = value.size(); i > 0; --i) {
        const char c = value[i - 1];
        if (c == ' ' || c == '-') continue;
        if (!isDigitCharacter(c)) return false;
        // From the right, every second digit counts double, as the sum of its digits.
        const int32_t digit = (c - '0') << (digits++ % 2);
        sum += digit > 9 ? digit - 9 : digit;
    }
    return digits >= 12 && digits <= 19 && sum > 0 && sum % 10 == 0;
}

// One @ between a user and a domain with a dot, without blanks.
inline bool isEMail(std::string_view value) {
    const size_t at = value.find('@');
    if (at == 0 || at == value.npos || value.find_first_of("@ \t\r\n,;", at + 1) != value.npos ||
        value.substr(0, at).find_first_of(" \t\r\n,;") != value.npos) {
        return false;
    }
    const std::string_view domain = value.substr(at + 1);
    const size_t dot = domain.rfind('.');
    return dot != domain.npos && dot > 0 && dot + 1 < domain.size();
}

// 7 to 15 digits, the longest number of ITU-T E.164, and the separators that people write.
inline bool isTelephone(std::string_view value) {
    size_t digits = 0;
    for (size_t i = 0; i < value.size(); ++i) {
        const char c = value[i];
        if (isDigitCharacter(c)) {
            ++digits;
        } else if (c == '+' ? i > 0
                            : std::string_view(" -./()").find(c) == std::string_view::npos) {
            return false;
        }
    }
    return digits >= 7 && digits <= 15;
}

// The digits of a value that may be an identity number: digits, no more letters than digits,
// blanks and - . / between them. 0 for any other value, and for a number with decimals.
inline size_t identityDigits(std::string_view value) {
    constexpr size_t kLongest = 34;  // an IBAN (ISO 13616) without blanks
    const auto isPart = [](char c) { return isDigitCharacter(c) || isLetterCharacter(c); };
    if (value.empty() || value.size() > kLongest || !isPart(value.front()) ||
        !isPart(value.back())) {
        return 0;
    }
    const auto count = [&](auto test) {
        return static_cast<size_t>(std::count_if(value.begin(), value.end(), test));
    };
    const size_t digits = count(isDigitCharacter);
    const size_t letters = count(isLetterCharacter);
    const size_t others = value.size() - digits - letters;
    const size_t dots = count([](char c) { return c == '.'; });
    const size_t blanks = count([](char c) { return c == ' ' || c == '-' || c == '/'; });
    if (dots + blanks != others || letters > digits) return 0;
    const bool isDecimal = others == 1 && dots == 1 && letters == 0;
    return isDecimal ? 0 : digits;
}

// Whether the shape of a value has more letters than digits, as names and addresses do.
inline bool isWords(std::string_view shape) {
    const auto letters = std::count_if(shape.begin(), shape.end(), isLetterCharacter);
    return letters > std::count(shape.begin(), shape.end(), '9');
}

}  // namespace tool
