// The tests of a module's file, which run without loading it.
#pragma once

#include <string>
#include <vector>

#include "catalogue.h"
#include "elf_file.h"

namespace kit {

// What is wrong with the file. `file` is nullptr when it could not be read: only the first test
// finds something then, which is `fault`.
std::vector<std::string> runFileTest(const TestInfo& test, const std::string& path,
                                     const ElfFile* file, const std::string& fault);

}  // namespace kit
