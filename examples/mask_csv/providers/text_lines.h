// The lines of a provider's text file.
#pragma once

#include <string>
#include <vector>

#include "providers/provider_support.h"

namespace provider {

struct Line {
    std::string text;
    int32_t number;  // from 1
};

// The lines of a UTF-8 file without empty ones and those that begin with #. Throws Error.
std::vector<Line> readLines(const std::wstring& path);

}  // namespace provider
