// Provider numbers by name.
#include "korv/ctrlblk.h"
#include "korv/text.h"

namespace korv {
namespace {

struct Provider {
    const char* name;
    int32_t number;
};

// Two names share number 4, and the numbers do not follow the order: providers rely on both.
constexpr Provider kProviders[] = {
    {"CCN", 1},  {"NID", 2}, {"EML", 3},   {"AFF", 4},     {"COL", 4},    {"AGE", 6},
    {"HASH", 5}, {"LKP", 7}, {"DSWAP", 8}, {"CDSWAP", 10}, {"DDSWAP", 9},
};

// Letters are those of ASCII: a locale in which i is not the small I must not hide a provider.
bool isNamed(const char* given, const char* name) noexcept {
    while (*name && toportwupper(*given) == *name) {
        ++given;
        ++name;
    }
    return *given == *name;
}

int32_t providerNumber(const char* name) noexcept {
    for (const Provider& provider : kProviders) {
        if (isNamed(name, provider.name)) return provider.number;
    }
    return KORV_PROVIDER_UNKNOWN;
}

}  // namespace
}  // namespace korv

int32_t GetProviderID(const char* name) {
    return korv::providerNumber(name);
}
