// The elements of a list, cut out and upper-cased.
#include "korv/text.h"
#include "peers/system.h"
#include "reference/text.h"
#include "support/families.h"
#include "support/inputs.h"
#include "support/row.h"

namespace bench {
namespace {

// `count` elements of `length` letters and digits.
std::wstring listOf(Random& random, std::size_t count, std::size_t length) {
    static const std::wstring units =
        L"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_0123456789";
    std::wstring list;
    for (std::size_t i = 0; i < count * (length + 1) - 1; ++i) {
        const auto at = randomNumber<std::size_t>(random, 0, units.size() - 1);
        list += i % (length + 1) == length ? L',' : units[at];
    }
    return list;
}

// Lists of one shape, read element by element, one list after the other.
struct Reader {
    Texts<wchar_t> fresh;
    std::size_t lists = fresh.units.size() / (fresh.length + 1);
    Texts<wchar_t> work{fresh};
    std::wstring output = std::wstring(fresh.length + 1, 0);
    uint32_t length = 0;
    std::size_t list = 0;
    uint32_t start = 0;
    wchar_t* state = nullptr;

    template <class Next>
    void next(Next nextElement) {
        const wchar_t* source = fresh.at(list);
        const int32_t result = nextElement(source, output.data(), &length, L',', 0, start);
        start = result > 0 ? static_cast<uint32_t>(result) : 0;
        if (!start) list = list + 1 == lists ? 0 : list + 1;
    }
};

Reader readerOf(std::size_t lists, std::size_t count, std::size_t length) {
    const auto make = [&](Random& random, std::size_t) { return listOf(random, count, length); };
    return {texts<wchar_t>(lists, count * (length + 1) - 1, make)};
}

// All elements of one list.
template <class Next>
auto wholeList(Reader& reader, Next nextElement) {
    return [&reader, nextElement](std::size_t) {
        do reader.next(nextElement);
        while (reader.start);
    };
}

void oneElement() {
    constexpr std::size_t elements = 128;
    auto& reader = forever(readerOf(1, elements, 24));
    Row("KORV_GetNextElement", "24 characters", elements)
        .refresh([&] {
            reader.work = reader.fresh;
            reader.start = 0;
        })
        .observe([&](std::size_t) { return bytesOf(reader.output.data(), 25); })
        .with("ours", [&](std::size_t) { reader.next(KORV_GetNextElement); })
        .with("literal", [&](std::size_t) { reader.next(reference::nextElement); })
        .with("wcstok, towupper", [&](std::size_t i) {
            wchar_t* list = i ? nullptr : reader.work.at(0);
            peers::nextElement(list, reader.output.data(), &reader.state);
        });
}

// Growth of the time of one character. There are as many characters in all in both kinds of list,
// so that neither kind is learned better by the branch predictor.
void growth(const std::string& shape, Reader& small, Reader& large) {
    const auto row = [&](Reader& reader) {
        return Row("KORV_GetNextElement", shape, reader.lists).units(reader.fresh.units.size());
    };
    row(large)
        .with("ours", wholeList(large, KORV_GetNextElement))
        .with("literal", wholeList(large, reference::nextElement));
    row(small).with("ours at 1000", wholeList(small, KORV_GetNextElement));
}

}  // namespace

void addElements() {
    oneElement();
    growth("100000 characters in 1 element", forever(readerOf(100, 1, 1000)),
           forever(readerOf(1, 1, 100000)));
    growth("100000 characters in 4000 elements", forever(readerOf(100, 40, 24)),
           forever(readerOf(1, 4000, 24)));
}

}  // namespace bench
