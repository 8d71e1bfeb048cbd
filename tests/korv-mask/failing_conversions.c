/* A companion library whose n-th call fails as the companion's header says; the others go to the
 * real one. */
#include <dlfcn.h>

#include "korv/datacnv.h"
#include "nth_call.h"

static void* realOne(const char* function) {
    void* address = dlsym(RTLD_NEXT, function);
    if (!address) abort();
    return address;
}

static int32_t fail(void* target, uint32_t capacity, size_t unit) {
    if (capacity >= unit) memset(target, 0, unit);
    return CNV_NO_MEMORY;
}

/* The text and integer conversions. */
#define CONVERSION(function, Source, Target)                                           \
    int32_t function(const Source* source, const uint32_t* sourceLen, Target* target,  \
                     uint32_t capacity, uint32_t* outLen, const CnvOptions* options) { \
        int32_t (*call)(const Source*, const uint32_t*, Target*, uint32_t, uint32_t*,  \
                        const CnvOptions*);                                            \
        if (isNthCall()) return fail(target, capacity, sizeof *target);                \
        *(void**)&call = realOne(#function);                                           \
        return call(source, sourceLen, target, capacity, outLen, options);             \
    }

CONVERSION(KORVCnvCharToWVarcharSz, char, wchar_t)
CONVERSION(KORVCnvVarcharToWVarcharSz, void, wchar_t)
CONVERSION(KORVCnvVarcharSzToWVarcharSz, char, wchar_t)
CONVERSION(KORVCnvWCharToWVarcharSz, wchar_t, wchar_t)
CONVERSION(KORVCnvWVarcharToWVarcharSz, void, wchar_t)
CONVERSION(KORVCnvIntToWVarcharSz1, int32_t, wchar_t)
CONVERSION(KORVCnvUIntToWVarcharSz, uint32_t, wchar_t)
CONVERSION(KORVCnvSmallIntToWVarcharSz, int16_t, wchar_t)
CONVERSION(KORVCnvSmallUIntToWVarcharSz, uint16_t, wchar_t)
CONVERSION(KORVCnvWVarcharSzToVarcharSz, wchar_t, char)

int32_t KORVGetStringFromTS(const void* source, wchar_t* target, uint32_t capacity,
                            uint32_t* outLen) {
    int32_t (*call)(const void*, wchar_t*, uint32_t, uint32_t*);
    if (isNthCall()) return fail(target, capacity, sizeof *target);
    *(void**)&call = realOne("KORVGetStringFromTS");
    return call(source, target, capacity, outLen);
}

/* The conversions of units, which may leave anything in the target. */
#define UNITS(function, Source, Target)                                         \
    int32_t function(const Source* source, int32_t sourceUnits, Target* target, \
                     int32_t targetUnits, uint32_t* count) {                    \
        int32_t (*call)(const Source*, int32_t, Target*, int32_t, uint32_t*);   \
        if (isNthCall()) return CNV_NO_MEMORY;                                  \
        *(void**)&call = realOne(#function);                                    \
        return call(source, sourceUnits, target, targetUnits, count);           \
    }

UNITS(Convert16To32, uint16_t, wchar_t)
UNITS(Convert32To16, wchar_t, uint16_t)
