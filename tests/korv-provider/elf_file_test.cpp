// The reader of ELF files: what it reads of a sound module, and that no file whatever harms it.
#include "elf_file.h"

#include <elf.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace {

using kit::ElfFault;
using kit::ElfFile;

std::string contentsOf(const char* path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

const std::string& module() {
    static const std::string bytes = contentsOf(KORV_SOUND_MODULE);
    return bytes;
}

// Reads bytes that may be anything.
void readAny(const std::string& bytes) {
    // A copy of its own, so that the address sanitizer sees every access beyond it.
    const std::string copy(bytes);
    try {
        kit::readElf(copy);
    } catch (const ElfFault& fault) {
        EXPECT_GT(std::strlen(fault.what()), 0u);
    }
}

TEST(ElfFile, ReadsASoundModule) {
    const ElfFile file = kit::readElf(module());
    EXPECT_EQ(static_cast<int>(8 * sizeof(void*)), file.bits);
    EXPECT_TRUE(file.isX86);
    EXPECT_TRUE(file.isShared);
    EXPECT_FALSE(file.hasExecutableStack);
    EXPECT_FALSE(file.hasTextRelocations);
    EXPECT_EQ(std::vector<std::string>{"KorvProviderEntry"}, file.exports);
    EXPECT_NE(file.needed.end(),
              std::find(file.needed.begin(), file.needed.end(), "libKORVSupport.so.21"));
    EXPECT_TRUE(file.searchPath.starts_with("$ORIGIN")) << file.searchPath;
}

TEST(ElfFile, RefusesOtherFiles) {
    EXPECT_THROW(kit::readElf(""), ElfFault);
    EXPECT_THROW(kit::readElf("#!/bin/sh\nexit 0\n"), ElfFault);
    EXPECT_THROW(kit::readElf(std::string(1000, '\0')), ElfFault);
    std::string bytes = module();
    bytes[EI_CLASS] = 7;
    EXPECT_THROW(kit::readElf(bytes), ElfFault);
    bytes = module();
    bytes[EI_DATA] = ELFDATA2MSB;
    EXPECT_THROW(kit::readElf(bytes), ElfFault);
    EXPECT_THROW(kit::readElfFile("/dev/null"), ElfFault);
    EXPECT_THROW(kit::readElfFile("/"), ElfFault);
    EXPECT_THROW(kit::readElfFile("/no/such/file"), std::exception);
}

TEST(ElfFile, SurvivesAFileThatIsCutOff) {
    for (size_t length = 0; length < module().size(); length += length < 2000 ? 1 : 97) {
        readAny(module().substr(0, length));
    }
}

TEST(ElfFile, SurvivesEveryChangedByteOfItsHeaders) {
    for (size_t at = 0; at < 1200; ++at) {
        for (const unsigned char byte : {0x00, 0x01, 0x7F, 0x80, 0xFF}) {
            std::string bytes = module();
            bytes[at] = static_cast<char>(byte);
            readAny(bytes);
        }
    }
}

TEST(ElfFile, SurvivesRandomChanges) {
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        std::string bytes = module().substr(0, 8192);
        for (unsigned changes = 1 + random() % 8; changes > 0; --changes) {
            bytes[random() % bytes.size()] = static_cast<char>(random());
        }
        readAny(bytes);
    }
}

}  // namespace
