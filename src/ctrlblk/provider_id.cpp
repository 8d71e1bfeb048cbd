// Provider numbers by name.
#include <strings.h>

#include "korv/ctrlblk.h"

namespace korv {
namespace {

struct Provider {
    const char* name;
    int32_t number;
};

// Two names share number 4, and the numbers do not follow the order: providers rely on both.
constexpr Provider providers[] = {
    {"CCN", 1},  {"NID", 2}, {"EML", 3},   {"AFF", 4},     {"COL", 4},    {"AGE", 6},
    {"HASH", 5}, {"LKP", 7}, {"DSWAP", 8}, {"CDSWAP", 10}, {"DDSWAP", 9},
};

int32_t providerNumber(const char* name) noexcept {
    for (const Provider& provider : providers) {
        if (strcasecmp(name, provider.name) == 0) return provider.number;
    }
    return KORV_PROVIDER_UNKNOWN;
}

}  // namespace
}  // namespace korv

int32_t GetProviderID(const char* name) {
    return korv::providerNumber(name);
}
