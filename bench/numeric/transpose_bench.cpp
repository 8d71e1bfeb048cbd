// Keyed transposition of 12 digits with a shift, narrow and wide.
#include <array>

#include "korv/numeric.h"
#include "reference/numeric.h"
#include "support/families.h"
#include "support/inputs.h"
#include "support/row.h"

namespace bench {
namespace {

constexpr int16_t kLength = 12;
constexpr std::size_t kInputs = 1024;

template <class Unit, class Ours, class Literal>
void transpose(const char* function, Ours ours, Literal literal) {
    const auto& fields = forever(texts<Unit>(kInputs, kLength, randomDigits<Unit>));
    const auto& keys = forever(randomNumbers<int32_t>(kInputs, 0, INT32_MAX));
    const auto& shifts = forever(randomNumbers<int16_t>(kInputs, 1, 9));
    auto& output = forever(std::array<Unit, kLength>{});
    Row(function, "12 digits, shifted", kInputs)
        .observe([&](std::size_t) { return bytesOf(output); })
        .with("ours",
              [&, ours](std::size_t i) {
                  ours(fields.at(i), output.data(), kLength, keys[i], shifts[i]);
              })
        .with("literal", [&, literal](std::size_t i) {
            literal(fields.at(i), output.data(), kLength, keys[i], shifts[i]);
        });
}

}  // namespace

void addTranspose() {
    transpose<char>("PXTransposeNum", PXTransposeNum, reference::transpose<char>);
    transpose<wchar_t>("PXTransposeNumW", PXTransposeNumW, reference::transpose<wchar_t>);
}

}  // namespace bench
