// Integers to zero-terminated wide text.
#include "decimal.h"
#include "output.h"

namespace korv::datacnv {
namespace {

template <class Int>
int32_t widenInteger(const Int* source, wchar_t* target, uint32_t capacity,
                     uint32_t* outLen) noexcept {
    return produce(target, capacity, outLen, [=](Output<wchar_t>& out) noexcept {
        // An integer inside a caller's row buffer need not be aligned.
        Int value;
        std::memcpy(&value, static_cast<const void*>(source), sizeof value);
        const Decimal decimal(value);
        return out.append(decimal.text(), decimal.length());
    });
}

}  // namespace
}  // namespace korv::datacnv

using korv::datacnv::widenInteger;

extern "C" {

int32_t KORVCnvIntToWVarcharSz1(const int32_t* source, const uint32_t*, wchar_t* target,
                                uint32_t targetCapacity, uint32_t* outLen, const CnvOptions*) {
    return widenInteger(source, target, targetCapacity, outLen);
}

int32_t KORVCnvUIntToWVarcharSz(const uint32_t* source, const uint32_t*, wchar_t* target,
                                uint32_t targetCapacity, uint32_t* outLen, const CnvOptions*) {
    return widenInteger(source, target, targetCapacity, outLen);
}

int32_t KORVCnvSmallIntToWVarcharSz(const int16_t* source, const uint32_t*, wchar_t* target,
                                    uint32_t targetCapacity, uint32_t* outLen, const CnvOptions*) {
    return widenInteger(source, target, targetCapacity, outLen);
}

int32_t KORVCnvSmallUIntToWVarcharSz(const uint16_t* source, const uint32_t*, wchar_t* target,
                                     uint32_t targetCapacity, uint32_t* outLen, const CnvOptions*) {
    return widenInteger(source, target, targetCapacity, outLen);
}

}  // extern "C"
