// The lines of a provider's text file.
#pragma once

#include <functional>
#include <string>

#include "providers/value_text.h"

namespace provider {

// An error that names the file and, unless `reason` is 0, what the system says about that errno.
Error fileError(const std::wstring& path, int reason);

// Calls `take` with each line of a UTF-8 file and its number, which counts from 1. Empty lines and
// those that begin with # are passed over. Throws Error when the file cannot be read, is not UTF-8
// text or has no other lines.
void readLines(const std::wstring& path,
               const std::function<void(const std::string& line, int32_t number)>& take);

}  // namespace provider
