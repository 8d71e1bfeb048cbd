// Upper-casing in place; every batch finds fresh texts, and their copying is not timed.
#include <cwctype>
#include <locale>
#include <string>

#include "korv/text.h"
#include "reference/text.h"
#include "support/families.h"
#include "support/inputs.h"
#include "support/row.h"

namespace bench {
namespace {

// As many texts as the first-level cache holds.
template <class Unit>
std::size_t inputsOf(std::size_t length) {
    return 32768 / (length * sizeof(Unit));
}

template <class Unit, class Make, class Ours, class Literal>
void upper(const char* function, const char* localeName, std::size_t length,
           const std::string& input, const char* peer, Make make, Ours ours, Literal literal) {
    const std::size_t inputs = inputsOf<Unit>(length);
    const auto& fresh = forever(texts<Unit>(inputs, length, make));
    auto& work = forever(fresh);
    const auto& locale = forever(std::locale(localeName));
    const auto& facet = std::use_facet<std::ctype<Unit>>(locale);
    Row(function, input, inputs)
        .locale(localeName)
        .refresh([&] { work = fresh; })
        .observe([&, length](std::size_t i) { return bytesOf(work.at(i), length + 1); })
        .with("ours", [&, ours](std::size_t i) { ours(work.at(i)); })
        .with("literal", [&, literal](std::size_t i) { literal(work.at(i)); })
        .with(peer, [&](std::size_t i) {
            Unit* text = work.at(i);
            facet.toupper(text, text + std::char_traits<Unit>::length(text));
        });
}

// One letter of eight carries an accent.
std::wstring accented(Random& random, std::size_t length) {
    std::wstring text = randomText<wchar_t>(random, length);
    for (wchar_t& character : text) {
        if (randomNumber(random, 0, 7) == 0) {
            character = static_cast<wchar_t>(randomNumber(random, 0xE0, 0xF6));
        }
    }
    return text;
}

}  // namespace

void addCase() {
    for (std::size_t length : {10, 256}) {
        const std::string characters = std::to_string(length) + " characters, ";
        upper<char>("KORV_StrToUpper", "C", length, characters + "C locale",
                    "std::ctype<char>::toupper", randomText<char>, KORV_StrToUpper,
                    reference::upper<char>);
        for (const char* locale : {"C", "C.UTF-8"}) {
            upper<wchar_t>("KORV_StrToWUpper", locale, length, characters + locale + " locale",
                           "std::ctype<wchar_t>::toupper", randomText<wchar_t>, KORV_StrToWUpper,
                           reference::upper<wchar_t>);
        }
    }
    upper<wchar_t>("KORV_StrToWUpper", "C.UTF-8", 256, "256 accented characters, C.UTF-8 locale",
                   "std::ctype<wchar_t>::toupper", accented, KORV_StrToWUpper,
                   reference::upper<wchar_t>);
}

}  // namespace bench
