// The companion's conversions that tokens need: they take the place of the library's.
#include "errors/scripted_companion.h"

#include "korv/datacnv.h"

namespace companion {

int calls;
Call last;
std::int32_t status;
bool writes;
std::int64_t outLen;

void reset() {
    calls = 0;
    last = {};
    status = 0;
    writes = false;
    outLen = -1;
}

namespace {

std::int32_t answer(const char* function, const void* source, std::uint32_t sourceLen,
                    wchar_t* target, std::uint32_t capacity, std::uint32_t* length,
                    const void* options) {
    ++calls;
    last = {function, source, sourceLen, target, capacity, *length, options};
    if (writes) {
        const std::uint32_t units = capacity / 4;
        for (std::uint32_t i = 0; i < units; ++i) target[i] = i + 1 < units ? L'#' : L'\0';
    }
    if (outLen >= 0) *length = static_cast<std::uint32_t>(outLen);
    return status;
}

}  // namespace
}  // namespace companion

#define SCRIPTED(function, Source)                                                         \
    extern "C" std::int32_t function(const Source* source, const std::uint32_t* sourceLen, \
                                     wchar_t* target, std::uint32_t capacity,              \
                                     std::uint32_t* length, const CnvOptions* options) {   \
        return companion::answer(#function, source, *sourceLen, target, capacity, length,  \
                                 options);                                                 \
    }

SCRIPTED(KORVCnvCharToWVarcharSz, char)
SCRIPTED(KORVCnvVarcharToWVarcharSz, void)
SCRIPTED(KORVCnvVarcharSzToWVarcharSz, char)
SCRIPTED(KORVCnvWCharToWVarcharSz, wchar_t)
SCRIPTED(KORVCnvWVarcharToWVarcharSz, void)
SCRIPTED(KORVCnvIntToWVarcharSz1, std::int32_t)
SCRIPTED(KORVCnvUIntToWVarcharSz, std::uint32_t)
SCRIPTED(KORVCnvSmallIntToWVarcharSz, std::int16_t)
SCRIPTED(KORVCnvSmallUIntToWVarcharSz, std::uint16_t)

extern "C" std::int32_t KORVGetStringFromTS(const void* source, wchar_t* target,
                                            std::uint32_t capacity, std::uint32_t* length) {
    return companion::answer("KORVGetStringFromTS", source, 0, target, capacity, length, nullptr);
}
