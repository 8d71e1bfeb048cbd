// Comparison without regard to case, of equal texts of opposite case.
#include <cwchar>
#include <cwctype>

#include "korv/text.h"
#include "reference/text.h"
#include "support/families.h"
#include "support/inputs.h"
#include "support/row.h"

namespace bench {
namespace {

constexpr std::size_t kInputs = 64;

std::wstring letters(Random& random, std::size_t length) {
    std::wstring text(length, 0);
    for (wchar_t& character : text) {
        character = static_cast<wchar_t>((randomNumber(random, 0, 1) ? L'a' : L'A') +
                                         randomNumber(random, 0, 25));
    }
    return text;
}

void compare(const char* locale) {
    const auto& first = forever(texts<wchar_t>(kInputs, 40, letters));
    auto& second = forever(first);
    for (wchar_t& character : second.units) {
        if (character) character ^= 0x20;
    }
    auto& order = forever(int32_t{});
    auto& plain = forever(reference::Comparison());
    Row("StringWCaseCompare", std::string("40 characters, ") + locale + " locale", kInputs)
        .locale(locale)
        .observe([&](std::size_t) { return bytesOf(order); })
        .with("ours", [&](std::size_t i) { order = StringWCaseCompare(first.at(i), second.at(i)); })
        .with("literal", [&](std::size_t i) { order = plain.compare(first.at(i), second.at(i)); })
        .with("wcscasecmp", [&](std::size_t i) { order = wcscasecmp(first.at(i), second.at(i)); });
}

}  // namespace

void addCompare() {
    compare("C");
    compare("C.UTF-8");
}

}  // namespace bench
