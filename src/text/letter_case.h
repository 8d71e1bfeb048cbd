// Case conversion that follows the host's locale, but converts ASCII letters in blocks where that
// locale converts them as ASCII does. Each call looks at the locale, because the host may change
// it at any time.
#pragma once

#include <langinfo.h>
#include <locale.h>
#include <wctype.h>

#include <array>
#include <atomic>
#include <limits>
#include <type_traits>

#include "common/block.h"

namespace korv {

// libc's own table of narrow conversions in the current locale, indexed from -128. It is the one
// that toupper and tolower read; the pointers that the macros of ctype.h read are not, in a thread
// that runs while another changes the locale of the process.
constexpr int32_t kTableOrigin = 128;
inline const int32_t* tableOf(const char* entries) noexcept {
    return reinterpret_cast<const int32_t*>(entries) + kTableOrigin;
}

// The two directions: the first of the 26 letters that change, and the functions of the locale.
struct Upper {
    static constexpr int32_t firstLetter = 'a';
    static constexpr nl_item item = _NL_CTYPE_TOUPPER;
    static wint_t convert(wint_t character) noexcept { return towupper(character); }
};
struct Lower {
    static constexpr int32_t firstLetter = 'A';
    static constexpr nl_item item = _NL_CTYPE_TOLOWER;
    static wint_t convert(wint_t character) noexcept { return towlower(character); }
};

template <class Case>
const int32_t* currentTable() noexcept {
    return tableOf(nl_langinfo(Case::item));
}

// The table of the C locale, which changes ASCII letters only, is a constant of libc and at no
// other locale's address. It is null before it is known, while the process is being loaded, and
// without memory for its locale.
template <class Case>
const int32_t* classicTable() noexcept {
    const locale_t classic = newlocale(LC_CTYPE_MASK, "C", nullptr);
    return classic ? tableOf(nl_langinfo_l(Case::item, classic)) : nullptr;
}
template <class Case>
inline const int32_t* const kCTable = classicTable<Case>();

constexpr int32_t kLetterCount = 26;
constexpr int32_t kCaseBit = 0x20;

// What a table holds in a locale that changes ASCII letters only, as low bytes.
template <class Case>
constexpr auto kAsciiTable = [] {
    std::array<int32_t, 2 * kTableOrigin> table{};
    for (int32_t i = 0; i != 2 * kTableOrigin; ++i) {
        const int32_t byte = (i - kTableOrigin) & 0xFF;
        const int32_t letter = byte - Case::firstLetter;
        table[i] = letter >= 0 && letter < kLetterCount ? byte ^ kCaseBit : byte;
    }
    return table;
}();

// Whether a table agrees with the ASCII one on the characters from `from` to 127.
template <class Case>
bool isAsciiTable(const int32_t* table, int32_t from) noexcept {
    if (table == kCTable<Case>) return true;
    Block<int32_t> different{};
    for (int32_t c = from; c < 128; c += kBlockUnits<int32_t>) {
        different |= loadBlock(table + c) ^ loadBlock(&kAsciiTable<Case>[c + kTableOrigin]);
    }
    return allLanes((different & 0xFF) == 0);
}

// A block of ASCII characters with its letters converted. Bytes above 127 are negative.
template <class Case, class Unit>
Block<Unit> convertAscii(Block<Unit> block) noexcept {
    // Shifted so that the last letter is the largest number, one comparison finds the letters.
    using Bits = std::make_unsigned_t<Unit>;
    constexpr Unit largest = std::numeric_limits<Unit>::max();
    constexpr auto shift = static_cast<Bits>(largest - (Case::firstLetter + kLetterCount - 1));
    const auto shifted =
        reinterpret_cast<Block<Unit>>(reinterpret_cast<Block<Bits>>(block) + shift);
    const auto letters = shifted > static_cast<Unit>(largest - kLetterCount);
    return block ^ (reinterpret_cast<Block<Unit>>(letters) & static_cast<Unit>(kCaseBit));
}

// Whether convertAscii may convert a block of wide characters, where the locale's table is ASCII's.
inline bool isAscii(Block<wchar_t> block) noexcept {
    return allLanes((block & ~0x7F) == 0);
}

// A character converted as in a locale that changes ASCII letters only.
template <class Case>
wchar_t convertAscii(wchar_t character) noexcept {
    const auto letter = static_cast<uint32_t>(character - Case::firstLetter);
    return letter < kLetterCount ? character ^ kCaseBit : character;
}

// The table of the process's locale that was asked last, and in bit 0 whether the locale converts
// the wide ASCII characters as convertAscii does.
template <class Case>
inline std::atomic<uintptr_t> lastAnswer{0};

// Whether the locale of the moment converts the wide ASCII characters as convertAscii does. A
// locale of the process is never unloaded, so that its table tells it from others. Those of single
// threads are, and another one can take their place: they are asked for every character.
template <class Case>
bool isAsciiLocale() noexcept {
    const int32_t* const table = currentTable<Case>();
    if (table == kCTable<Case>) return true;
    if (uselocale(nullptr) != LC_GLOBAL_LOCALE) return false;
    const auto name = reinterpret_cast<uintptr_t>(table);
    const uintptr_t last = lastAnswer<Case>.load(std::memory_order_relaxed);
    if (last >> 1 == name >> 1) return last & 1;
    bool ascii = true;
    for (wchar_t c = 0; c < 0x80; ++c) {
        ascii &=
            static_cast<wchar_t>(Case::convert(static_cast<wint_t>(c))) == convertAscii<Case>(c);
    }
    // Another thread may have changed the locale meanwhile. The answer no is right for every one.
    ascii &= currentTable<Case>() == table;
    lastAnswer<Case>.store((name & ~uintptr_t{1}) | ascii, std::memory_order_relaxed);
    return ascii;
}

// Wide conversion in the locale of the moment.
template <class Case>
class WideCase {
  public:
    WideCase() noexcept : ascii_(korv::isAsciiLocale<Case>()) {}

    wchar_t convert(wchar_t character) const noexcept {
        if (ascii_ && static_cast<uint32_t>(character) < 0x80) return convertAscii<Case>(character);
        return static_cast<wchar_t>(Case::convert(static_cast<wint_t>(character)));
    }

    bool isAsciiLocale() const noexcept { return ascii_; }

  private:
    bool ascii_;
};

// Upper-cases a wide text of `length` characters in place.
void upperCase(wchar_t* text, std::size_t length) noexcept;

}  // namespace korv
