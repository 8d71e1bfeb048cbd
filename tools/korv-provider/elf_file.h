// What the ELF file of a module says, read without loading it. The reader is our own because libelf
// is not at hand for 32-bit builds.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace kit {

struct ElfFile {
    int bits = 0;           // 32 or 64
    bool isShared = false;  // a shared object and no program
    bool isX86 = false;     // of the word size's instruction set
    bool hasExecutableStack = false;
    bool hasTextRelocations = false;
    bool isBoundAtStart = false;  // -z now
    std::string name;             // DT_SONAME
    std::string searchPath;       // DT_RUNPATH, or DT_RPATH without one
    std::string buildId;          // in hexadecimal digits
    std::vector<std::string> needed;
    std::vector<std::string> exports;
};

class ElfFault : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Reads any bytes. Throws ElfFault, which says what is wrong with the file.
ElfFile readElf(std::string_view bytes);

// Reads a file of at most 1 GiB. Throws ElfFault, or std::system_error when it cannot be read.
ElfFile readElfFile(const std::string& path);

}  // namespace kit
