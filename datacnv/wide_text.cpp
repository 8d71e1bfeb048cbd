// Fixed and variable wide text to zero-terminated wide text.
#include "common/length_prefix.h"
#include "output.h"

namespace korv::datacnv {
namespace {

int32_t terminateWide(const void* source, int32_t bytes, wchar_t* target, uint32_t capacity,
                      uint32_t* outLen) noexcept {
    return produce(target, capacity, outLen, [=](Output<wchar_t>& out) noexcept {
        if (bytes < 0) return CNV_BAD_LENGTH;
        const uint32_t units = static_cast<uint32_t>(bytes) / sizeof(wchar_t);
        // The source of an empty text may be null.
        return units == 0 ? CNV_SUCCESS : out.append(source, units);
    });
}

}  // namespace
}  // namespace korv::datacnv

using korv::datacnv::terminateWide;

extern "C" {

int32_t KORVCnvWCharToWVarcharSz(const wchar_t* source, const uint32_t* sourceLen, wchar_t* target,
                                 uint32_t targetCapacity, uint32_t* outLen, const CnvOptions*) {
    return terminateWide(source, static_cast<int32_t>(*sourceLen), target, targetCapacity, outLen);
}

int32_t KORVCnvWVarcharToWVarcharSz(const void* source, const uint32_t*, wchar_t* target,
                                    uint32_t targetCapacity, uint32_t* outLen, const CnvOptions*) {
    const int16_t bytes = korv::lengthPrefix(source);
    return terminateWide(static_cast<const char*>(source) + sizeof bytes, bytes, target,
                         targetCapacity, outLen);
}

}  // extern "C"
