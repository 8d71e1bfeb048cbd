// Date and time records to zero-terminated wide text.
#include "decimal.h"
#include "output.h"

namespace korv::datacnv {
namespace {

CnvStatus appendNumber(Output<wchar_t>& out, const Decimal& decimal) noexcept {
    return out.append(decimal.text(), decimal.length());
}

CnvStatus widenTimestamp(const void* source, Output<wchar_t>& out) noexcept {
    // Year, month, day, hour, minute, second; only the year is signed.
    uint16_t numbers[6];
    std::memcpy(numbers, source, sizeof numbers);
    CnvStatus status = appendNumber(out, Decimal(static_cast<int16_t>(numbers[0]), 4));
    for (int i = 1; i < 6 && status == CNV_SUCCESS; ++i) {
        if (!out.put(L"--- ::"[i])) return CNV_TARGET_TOO_SMALL;
        status = appendNumber(out, Decimal(numbers[i], 2));
    }
    return status;
}

}  // namespace
}  // namespace korv::datacnv

int32_t KORVGetStringFromTS(const void* source, wchar_t* target, uint32_t targetCapacity,
                            uint32_t* outLen) {
    using namespace korv::datacnv;
    return produce(target, targetCapacity, outLen,
                   [=](Output<wchar_t>& out) noexcept { return widenTimestamp(source, out); });
}
