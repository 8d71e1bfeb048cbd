// Narrow text to zero-terminated wide text, and back.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <cwchar>

#include "code_page.h"
#include "common/length_prefix.h"

namespace korv::datacnv {
namespace {

int32_t widenText(const char* source, int32_t bytes, wchar_t* target, uint32_t capacity,
                  uint32_t* outLen, const CnvOptions* options) noexcept {
    return produce(target, capacity, outLen, [=](Output<wchar_t>& out) noexcept {
        if (bytes < 0) return CNV_BAD_LENGTH;
        return widen(options, source, static_cast<uint32_t>(bytes), out);
    });
}

int32_t narrowText(const wchar_t* source, int32_t characters, char* target, uint32_t capacity,
                   uint32_t* outLen, const CnvOptions* options) noexcept {
    return produce(target, capacity, outLen, [=](Output<char>& out) noexcept {
        if (characters < 0) return CNV_BAD_LENGTH;
        const std::size_t length = characters == 0
                                       ? std::wcslen(source)
                                       : wcsnlen(source, static_cast<std::size_t>(characters));
        return narrow(options, source, static_cast<uint32_t>(length), out);
    });
}

}  // namespace
}  // namespace korv::datacnv

using korv::datacnv::widenText;

extern "C" {

int32_t KORVCnvCharToWVarcharSz(const char* source, const uint32_t* sourceLen, wchar_t* target,
                                uint32_t targetCapacity, uint32_t* outLen,
                                const CnvOptions* options) {
    return widenText(source, static_cast<int32_t>(*sourceLen), target, targetCapacity, outLen,
                     options);
}

int32_t KORVCnvVarcharToWVarcharSz(const void* source, const uint32_t*, wchar_t* target,
                                   uint32_t targetCapacity, uint32_t* outLen,
                                   const CnvOptions* options) {
    const int16_t bytes = korv::lengthPrefix(source);
    return widenText(static_cast<const char*>(source) + sizeof bytes, bytes, target, targetCapacity,
                     outLen, options);
}

int32_t KORVCnvVarcharSzToWVarcharSz(const char* source, const uint32_t*, wchar_t* target,
                                     uint32_t targetCapacity, uint32_t* outLen,
                                     const CnvOptions* options) {
    // 2 GiB and more become a bad length.
    const auto length =
        static_cast<int32_t>(std::min<std::size_t>(std::strlen(source), UINT32_MAX));
    return widenText(source, length, target, targetCapacity, outLen, options);
}

int32_t KORVCnvWVarcharSzToVarcharSz(const wchar_t* source, const uint32_t* sourceLen, char* target,
                                     uint32_t targetCapacity, uint32_t* outLen,
                                     const CnvOptions* options) {
    return korv::datacnv::narrowText(source, static_cast<int32_t>(*sourceLen), target,
                                     targetCapacity, outLen, options);
}

}  // extern "C"
