// UTF-16 to UTF-32 and back, without pairs and with a tenth of the characters outside the BMP.
#include "korv/text.h"
#include "peers/system.h"
#include "reference/units.h"
#include "support/families.h"
#include "support/inputs.h"
#include "support/row.h"

namespace bench {
namespace {

// Texts of `units` UTF-16 units each, in both forms.
struct Pages {
    std::size_t units;
    std::vector<std::u16string> narrow;
    std::vector<std::wstring> wide;
};

Pages pagesOf(std::size_t units, bool pairs) {
    const std::size_t count = 8192 / units;
    Random random(3);
    Pages pages{units, std::vector<std::u16string>(count), std::vector<std::wstring>(count)};
    for (std::size_t i = 0; i < count; ++i) {
        auto& narrow = pages.narrow[i];
        while (narrow.size() < units) {
            if (pairs && narrow.size() + 1 < units && randomNumber(random, 0, 9) == 0) {
                const auto beyond = randomNumber<uint32_t>(random, 0, 0xFFFFF);
                narrow += static_cast<char16_t>(0xD800 + (beyond >> 10));
                narrow += static_cast<char16_t>(0xDC00 + (beyond & 0x3FF));
                pages.wide[i] += static_cast<wchar_t>(0x10000 + beyond);
            } else {
                narrow += static_cast<char16_t>(randomNumber(random, 1, 0xD7FF));
                pages.wide[i] += static_cast<wchar_t>(narrow.back());
            }
        }
    }
    return pages;
}

void widen(const Pages& pages, const std::string& input) {
    const auto bytes = static_cast<int32_t>(pages.units * sizeof(char16_t));
    auto& output = forever(std::wstring(pages.units, 0));
    const auto units = static_cast<int32_t>(pages.units);
    auto& count = forever(uint32_t{});
    auto& iconv = forever(peers::Iconv("UTF-32LE", "UTF-16LE"));
    const auto source = [&](std::size_t i) {
        return reinterpret_cast<const uint16_t*>(pages.narrow[i].data());
    };
    Row("KORV_Utf16ToUtf32", input, pages.narrow.size())
        .observe([&](std::size_t i) {
            return bytesOf(output.data(), pages.wide[i].size()) + bytesOf(count);
        })
        .with("ours",
              [&, source, bytes](std::size_t i) {
                  KORV_Utf16ToUtf32(source(i), bytes, output.data(), bytes * 2, &count);
              })
        .with("literal",
              [&, source, units](std::size_t i) {
                  reference::utf16ToUtf32(source(i), units, output.data(), units, &count);
              })
        .with("iconv", [&, bytes](std::size_t i) {
            const auto room = static_cast<std::size_t>(bytes);
            count = iconv.convert(pages.narrow[i].data(), room, output.data(), room * 2) / 4;
        });
}

void narrow(const Pages& pages, const std::string& input) {
    const auto room = static_cast<uint32_t>(pages.units * sizeof(char16_t));
    auto& output = forever(std::vector<uint16_t>(pages.units));
    const auto units = static_cast<int32_t>(pages.units);
    auto& count = forever(uint32_t{});
    auto& iconv = forever(peers::Iconv("UTF-16LE", "UTF-32LE"));
    const auto bytes = [&](std::size_t i) {
        return static_cast<int32_t>(pages.wide[i].size() * sizeof(wchar_t));
    };
    Row("KORV_Utf32ToUtf16", input, pages.wide.size())
        .observe(
            [&](std::size_t) { return bytesOf(output.data(), output.size()) + bytesOf(count); })
        .with("ours",
              [&, bytes, room](std::size_t i) {
                  KORV_Utf32ToUtf16(pages.wide[i].data(), bytes(i), output.data(), room, &count);
              })
        .with("literal",
              [&, bytes, units](std::size_t i) {
                  reference::utf32ToUtf16(pages.wide[i].data(), bytes(i) / 4, output.data(), units,
                                          &count);
              })
        .with("iconv", [&, bytes, room](std::size_t i) {
            const auto size = static_cast<std::size_t>(bytes(i));
            count = iconv.convert(pages.wide[i].data(), size, output.data(), room) / 2;
        });
}

}  // namespace

void addUnicode() {
    for (bool pairs : {false, true}) {
        for (std::size_t units : {64, 1024}) {
            const auto& pages = forever(pagesOf(units, pairs));
            const std::string input =
                std::to_string(units) + " units" + (pairs ? ", a tenth in pairs" : "");
            widen(pages, input);
            narrow(pages, input);
        }
    }
}

}  // namespace bench
