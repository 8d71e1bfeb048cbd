// The option --diff: some rows before and after masking, for people.
#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace tool {

struct DifferenceRow {
    uint64_t row;
    // One text for each column of the input.
    std::vector<std::string> before;
    std::vector<std::optional<std::string>> after;  // nothing where the output has no field
};

// Prints one block for each row. Texts of the input, which are also the texts that came out
// unchanged, are replaced by their shapes unless `showClear`. Masked texts are shown as they are.
// No text reaches the terminal with its control characters. The caller checks the stream.
void printDifference(std::FILE* stream, const std::vector<std::string>& names,
                     const std::vector<DifferenceRow>& rows, bool showClear);

}  // namespace tool
