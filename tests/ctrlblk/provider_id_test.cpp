// Provider numbers by name.
#include <gtest/gtest.h>

#include <cctype>
#include <string>

#include "korv/ctrlblk.h"
#include "support/fenced.h"
#include "text/locales.h"

namespace {

struct Provider {
    const char* name;
    int number;
};
constexpr Provider kProviders[] = {{"CCN", 1},   {"NID", 2},     {"EML", 3},   {"AFF", 4},
                                   {"COL", 4},   {"AGE", 6},     {"HASH", 5},  {"LKP", 7},
                                   {"DSWAP", 8}, {"CDSWAP", 10}, {"DDSWAP", 9}};

int expected(const std::string& name) {
    std::string upper = name;
    for (char& c : upper) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    for (const Provider& provider : kProviders) {
        if (upper == provider.name) return provider.number;
    }
    return 11;
}

// The name ends at an unreadable page.
int numberOf(const std::string& name) {
    Fenced<char> fenced{std::string_view(name)};
    return GetProviderID(fenced.data());
}

TEST(ProviderId, OfEveryNameInEveryCase) {
    for (const Provider& provider : kProviders) {
        const std::string name = provider.name;
        for (unsigned lower = 0; lower < 1u << name.size(); ++lower) {
            std::string mixed = name;
            for (std::size_t i = 0; i < name.size(); ++i) {
                if (lower >> i & 1) mixed[i] = static_cast<char>(mixed[i] - 'A' + 'a');
            }
            EXPECT_EQ(provider.number, numberOf(mixed)) << mixed;
        }
    }
}

TEST(ProviderId, OfAnyOtherNameIsEleven) {
    for (const char* name : {"", " ", "SWAP", "CCN ", " CCN", "CC", "C", "CCNN", "HAS", "HASHES",
                             "SWAPD", "DDDSWAP", "CDDSWAP", "AFFCOL", "CCN\n",
                             "\xC3\x87"
                             "CN"}) {
        EXPECT_EQ(KORV_PROVIDER_UNKNOWN, numberOf(name)) << name;
        EXPECT_EQ(KORV_PROVIDER_UNKNOWN, numberOf(name)) << name;
    }
}

// Every byte in every place of every name, and every proper prefix and longer name.
TEST(ProviderId, ComparesWholeNames) {
    for (const Provider& provider : kProviders) {
        const std::string name = provider.name;
        for (std::size_t i = 0; i < name.size(); ++i) {
            EXPECT_EQ(KORV_PROVIDER_UNKNOWN, numberOf(name.substr(0, i)));
            for (int byte = 1; byte <= 255; ++byte) {
                std::string changed = name;
                changed[i] = static_cast<char>(byte);
                ASSERT_EQ(expected(changed), numberOf(changed)) << changed;
            }
        }
        for (int byte = 1; byte <= 255; ++byte) {
            ASSERT_EQ(KORV_PROVIDER_UNKNOWN, numberOf(name + static_cast<char>(byte))) << byte;
            ASSERT_EQ(expected(static_cast<char>(byte) + name),
                      numberOf(static_cast<char>(byte) + name));
        }
    }
}

TEST(ProviderId, OfAllNamesOfThreeLetters) {
    std::string name(3, ' ');
    for (char a = 'A'; a <= 'Z'; ++a) {
        for (char b = 'A'; b <= 'Z'; ++b) {
            for (char c = 'A'; c <= 'Z'; ++c) {
                name = {a, b, c};
                ASSERT_EQ(expected(name), GetProviderID(name.c_str())) << name;
            }
        }
    }
}

// In Turkish the capital of i is not I, nor the small letter of I an i.
TEST(ProviderId, DoesNotFollowTheLocale) {
    for (const char* name : locales::kAll) {
        const locales::Global inLocale(name);
        EXPECT_EQ(2, GetProviderID("nid")) << name;
        EXPECT_EQ(2, GetProviderID("NID")) << name;
        EXPECT_EQ(KORV_PROVIDER_UNKNOWN, GetProviderID("n\xFD"
                                                       "d"))
            << name;
        EXPECT_EQ(KORV_PROVIDER_UNKNOWN, GetProviderID("N\xDD"
                                                       "D"))
            << name;
    }
}

}  // namespace
