// Digit fields, written and read.
#include <array>

#include "korv/numeric.h"
#include "peers/charconv.h"
#include "peers/system.h"
#include "reference/numeric.h"
#include "support/families.h"
#include "support/inputs.h"
#include "support/row.h"

namespace bench {
namespace {

// Numbers of up to `width` digits, as far as 31 bits go.
std::vector<int32_t> numbersOf(int16_t width) {
    int32_t limit = 0;
    for (int i = 0; i < width && i < 9; ++i) limit = limit * 10 + 9;
    return randomNumbers<int32_t>(kManyInputs, 0, width < 10 ? limit : INT32_MAX);
}

std::string digitsOf(int16_t width) {
    return std::to_string(width) + " digits";
}

void write(int16_t width) {
    const auto& values = forever(numbersOf(width));
    auto& field = forever(std::array<char, 16>{});
    Row("PXLongToNum", digitsOf(width), kManyInputs)
        .observe([&](std::size_t) { return bytesOf(field); })
        .with("ours", [&, width](std::size_t i) { PXLongToNum(values[i], width, field.data()); })
        .with("literal",
              [&, width](std::size_t i) { reference::writeField(values[i], width, field.data()); })
        .with("std::to_chars, padded",
              [&, width](std::size_t i) { peers::writeDigits(values[i], width, field.data()); });
}

void writeWide(int16_t width) {
    const auto& values = forever(numbersOf(width));
    auto& field = forever(std::array<wchar_t, 16>{});
    Row("PXLongToNumW", digitsOf(width), kManyInputs)
        .observe([&](std::size_t) { return bytesOf(field); })
        .with("ours", [&, width](std::size_t i) { PXLongToNumW(values[i], width, field.data()); })
        .with("literal",
              [&, width](std::size_t i) { reference::writeField(values[i], width, field.data()); })
        .with("std::to_chars, widened",
              [&, width](std::size_t i) { peers::writeDigits(values[i], width, field.data()); });
}

void read(int16_t digits) {
    const auto& fields =
        forever(texts<char>(kManyInputs, static_cast<std::size_t>(digits), randomDigits<char>));
    auto& value = forever(int32_t{});
    Row("PXNumToLong", digitsOf(digits), kManyInputs)
        .observe([&](std::size_t) { return bytesOf(value); })
        .with("ours",
              [&, digits](std::size_t i) { PXNumToLong(fields.at(i), digits, digits, &value); })
        .with("literal",
              [&, digits](std::size_t i) {
                  reference::readField(fields.at(i), digits, digits, value);
              })
        .with("std::from_chars",
              [&, digits](std::size_t i) { peers::readDigits(fields.at(i), digits, value); });
}

void readWide(int16_t blanks) {
    constexpr int16_t digits = 8;
    const auto width = static_cast<int16_t>(digits + blanks);
    const std::size_t count = blanks ? 64 : kManyInputs;
    const auto& fields = forever(texts<wchar_t>(
        count, static_cast<std::size_t>(width), [blanks](Random& random, std::size_t) {
            return randomDigits<wchar_t>(random, digits) +
                   std::wstring(static_cast<std::size_t>(blanks), L' ');
        }));
    auto& value = forever(int32_t{});
    Row row("PXNumToLongW",
            digitsOf(digits) + (blanks ? ", " + std::to_string(blanks) + " blanks" : ""), count);
    row.observe([&](std::size_t) { return bytesOf(value); })
        .with("ours",
              [&, width](std::size_t i) { PXNumToLongW(fields.at(i), digits, width, &value); })
        .with("literal", [&, width](std::size_t i) {
            reference::readField(fields.at(i), digits, width, value);
        });
    if (blanks) {
        const std::size_t tail = static_cast<std::size_t>(blanks);
        row.with("wcstol, wmemcmp", [&, tail](std::size_t i) {
            peers::readDigits(fields.at(i), digits, PXSpacesW, tail, value);
        });
    } else {
        row.with("wcstol", [&](std::size_t i) { peers::readDigits(fields.at(i), digits, value); });
    }
}

}  // namespace

void addNumericText() {
    for (int16_t width : {4, 8, 10}) write(width);
    for (int16_t width : {4, 8, 10}) writeWide(width);
    for (int16_t digits : {4, 8, 9}) read(digits);
    for (int16_t blanks : {0, 256}) readWide(blanks);
}

}  // namespace bench
