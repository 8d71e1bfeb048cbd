// Secrets as text, and the memory that holds them.
#include "secrets/secret_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <new>
#include <string>
#include <vector>

#include "secrets/secret_pages.h"

namespace {

// The bytes in hexadecimal digits; empty when the text is refused.
std::string decoded(std::string_view text) {
    uint8_t bytes[secrets::kLongestSecret];
    const size_t length = secrets::decodeSecret(text, bytes);
    std::string hex;
    for (size_t i = 0; i < length; ++i) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", unsigned{bytes[i]});
        hex += digits;
    }
    return hex;
}

TEST(SecretText, EvenCountsOfHexDigitsAreHex) {
    EXPECT_EQ("00112233445566778899aabbccddeeff", decoded("00112233445566778899AABBccddeeff"));
    EXPECT_EQ(std::string(128, 'a'), decoded(std::string(128, 'a')));
    EXPECT_EQ("", decoded(std::string(30, 'a')));
    EXPECT_EQ("", decoded(std::string(130, 'a')));
    EXPECT_EQ("", decoded(std::string(33, 'a')));
}

TEST(SecretText, AnythingElseIsPaddedBase64) {
    EXPECT_EQ("000102030405060708090a0b0c0d0e0f", decoded("AAECAwQFBgcICQoLDA0ODw=="));
    EXPECT_EQ("000102030405060708090a0b0c0d0e0f10", decoded("AAECAwQFBgcICQoLDA0ODxA="));
    EXPECT_EQ("000102030405060708090a0b0c0d0e0f1011", decoded("AAECAwQFBgcICQoLDA0ODxAR"));
    EXPECT_EQ(std::string("ffffff") + std::string(26, 'f'), decoded("/////////////////////w=="));
    for (const char* text :
         {"", "AAECAwQFBgcICQoLDA0ODw", "AAECAwQFBgcICQoLDA0ODw=", "AAECAwQFBgcICQoLDA0ODx==",
          "AAECAwQFBgcICQoLDA0OD===", "AAECAwQF=gcICQoLDA0ODw==", "AAECAwQF BgcICQoLDA0ODw==",
          "AAECAwQF-_cICQoLDA0ODw==", "AAECAwQFBgcICQoLDA0O", "===="}) {
        EXPECT_EQ("", decoded(text)) << text;
    }
}

TEST(SecretText, NamesAreLowerCase) {
    for (const char* name : {"a", "crm", "crm_2", "a__"}) EXPECT_TRUE(secrets::isSecretName(name));
    EXPECT_TRUE(secrets::isSecretName(std::string(64, 'x')));
    EXPECT_TRUE(secrets::isSecretName(std::string(31, 'a')));
    for (const char* name : {"", "A", "1a", "_a", "a-b", "a b", "aÄ", "crM"}) {
        EXPECT_FALSE(secrets::isSecretName(name)) << name;
    }
    EXPECT_FALSE(secrets::isSecretName(std::string(65, 'x')));
    EXPECT_FALSE(secrets::isSecretName(std::string(32, 'a')));  // a secret of 16 bytes
}

// The flag `dd` of a mapping: it is left out of core dumps.
bool isLeftOut(const void* address) {
    std::ifstream maps("/proc/self/smaps");
    std::string line;
    bool isHere = false;
    while (std::getline(maps, line)) {
        unsigned long begin = 0;
        unsigned long end = 0;
        if (std::sscanf(line.c_str(), "%lx-%lx ", &begin, &end) == 2) {
            const auto at = reinterpret_cast<unsigned long>(address);
            isHere = at >= begin && at < end;
        } else if (isHere && line.starts_with("VmFlags:")) {
            return line.find(" dd") != std::string::npos;
        }
    }
    return false;
}

TEST(SecretPages, AreZeroAlignedApartAndLeftOutOfCoreDumps) {
    secrets::SecretPages pages;
    std::vector<uint8_t*> blocks;
    for (const size_t size : {1, 32, 16, 5000, 32, 4096}) {
        uint8_t* const block = pages.allocate(size);
        EXPECT_EQ(0u, reinterpret_cast<uintptr_t>(block) % 16);
        for (size_t i = 0; i < size; ++i) EXPECT_EQ(0, block[i]);
        std::fill(block, block + size, static_cast<uint8_t>(0xFF));
        EXPECT_TRUE(isLeftOut(block));
        blocks.push_back(block);
    }
    std::sort(blocks.begin(), blocks.end());
    EXPECT_EQ(blocks.end(), std::adjacent_find(blocks.begin(), blocks.end()));
    EXPECT_THROW(pages.allocate(SIZE_MAX), std::bad_alloc);
    EXPECT_THROW(pages.allocate(SIZE_MAX - 20), std::bad_alloc);
}

}  // namespace
