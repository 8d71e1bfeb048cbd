// The digits and letters of a text as numerals, which are permuted together.
#pragma once

#include <algorithm>
#include <cwchar>
#include <cwctype>

#include "providers/crypto/permutation.h"
#include "providers/value_text.h"

namespace provider {

// Whether a character outside ASCII belongs to a word: a letter, a digit, or a combining mark.
inline bool isForeign(char) {
    return false;  // narrow text is ASCII
}
inline bool isForeign(wchar_t c) {
    return static_cast<uint32_t>(c) >= 0x80 &&
           (std::iswalnum(static_cast<wint_t>(c)) != 0 || ::wcwidth(c) <= 0);
}

// The stretch of a text with the numerals from number `first` on, `count` of them.
template <class Char>
class NumeralRange {
  public:
    // With `letters`, ASCII letters are numerals, too.
    NumeralRange(Char* begin, Char* end, bool letters)
        : begin_(begin), end_(end), letters_(letters) {}

    bool isNumeral(Char c) const { return isDigit(c) || (letters_ && isLetter(c)); }

    int32_t count() const {
        return static_cast<int32_t>(
            std::count_if(begin_, end_, [this](Char c) { return isNumeral(c); }));
    }
    // The first character that belongs to a word and is no numeral, or the end.
    Char* findForeign() const {
        return std::find_if(begin_, end_,
                            [this](Char c) { return isForeign(c) || (!letters_ && isLetter(c)); });
    }
    Char* begin() const { return begin_; }
    Char* end() const { return end_; }

    // Leaves out numerals at both ends; there are at least that many. Appends those, in capitals
    // and with a slash between them, to `tweak`.
    void narrow(int32_t prefix, int32_t last, std::string& tweak) {
        for (; prefix > 0; ++begin_) {
            if (!isNumeral(*begin_)) continue;
            tweak += static_cast<char>(upperAscii(*begin_));
            --prefix;
        }
        tweak += '/';
        for (int32_t left = last; left > 0; left -= isNumeral(*end_) ? 1 : 0) --end_;
        Char* p = end_;
        for (int32_t left = last; left > 0; ++p) {
            if (!isNumeral(*p)) continue;
            tweak += static_cast<char>(upperAscii(*p));
            --left;
        }
    }

    void appendPattern(std::string& tweak) const {
        for (const Char c : *this) {
            if (isNumeral(c)) tweak += isDigit(c) ? '9' : 'a';
        }
    }

    void read(crypto::Permuted& number) const {
        uint32_t digits = 0;
        bool hasLetter = false;
        for (const Char c : *this) {
            if (isDigit(c)) {
                number.append(static_cast<uint32_t>(c - '0'), 10);
                ++digits;
            } else if (isNumeral(c)) {
                number.append(static_cast<uint32_t>(lowerAscii(c) - 'a'), 26);
                hasLetter = true;
            }
        }
        number.powerOfTen = hasLetter ? 0 : digits;
    }

    // Letters keep their case.
    void write(crypto::Permuted& number) const {
        for (Char* p = end_; p != begin_;) {
            --p;
            if (isDigit(*p)) {
                *p = static_cast<Char>('0' + number.takeLast(10));
            } else if (isNumeral(*p)) {
                const Char first = *p >= 'a' ? 'a' : 'A';
                *p = static_cast<Char>(first + static_cast<Char>(number.takeLast(26)));
            }
        }
    }

  private:
    Char* begin_;
    Char* end_;
    bool letters_;
};

}  // namespace provider
