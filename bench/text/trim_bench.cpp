// The growth of trimming with the length of the text; the time is that of one character.
#include "korv/text.h"
#include "reference/text.h"
#include "support/families.h"
#include "support/inputs.h"
#include "support/row.h"

namespace bench {
namespace {

constexpr const wchar_t* kDelimiters = L" ,;";

// On average, a delimiter follows seven other characters.
std::wstring delimited(Random& random, std::size_t length) {
    std::wstring text(length, 0);
    for (wchar_t& character : text) {
        character = randomNumber(random, 0, 7) == 0
                        ? kDelimiters[randomNumber(random, 0, 2)]
                        : static_cast<wchar_t>(L'a' + randomNumber(random, 0, 25));
    }
    return text;
}

struct Trimming {
    Texts<wchar_t> fresh;
    Texts<wchar_t> text{fresh};
    std::wstring work = std::wstring(fresh.length + 1, 0);
    uint32_t length = 0;
};

Row rowOf(Trimming& trimming) {
    const std::size_t count = trimming.text.units.size() / (trimming.text.length + 1);
    Row row("TrimSourceW", "100000 characters", count);
    row.units(trimming.text.units.size())
        .refresh([&] { trimming.text = trimming.fresh; })
        .observe([&](std::size_t i) {
            return bytesOf(trimming.text.at(i), trimming.length + 1) + bytesOf(trimming.length);
        });
    return row;
}

}  // namespace

void addTrim() {
    auto& large = forever(Trimming{texts<wchar_t>(1, 100000, delimited)});
    auto& small = forever(Trimming{texts<wchar_t>(100, 1000, delimited)});
    rowOf(large)
        .with("ours",
              [&](std::size_t i) {
                  TrimSourceW(large.text.at(i), &large.length, kDelimiters, large.work.data(), 1);
              })
        .with("literal", [&](std::size_t i) {
            reference::trim(large.text.at(i), &large.length, kDelimiters, large.work.data(), 1);
        });
    rowOf(small).with("ours at 1000", [&](std::size_t i) {
        TrimSourceW(small.text.at(i), &small.length, kDelimiters, small.work.data(), 1);
    });
}

}  // namespace bench
