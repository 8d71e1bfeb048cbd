// Variables of the environment that hold secrets.
#include "secret_variables.h"

#include <sys/random.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

#include "process.h"
#include "secrets/secret_text.h"
#include "tool_error.h"

namespace tool {

namespace {

constexpr std::string_view kPrefix = "KORV_SECRET_";

// Throws ToolError for what is no name of a secret in capitals.
std::string nameIn(std::string_view variable) {
    std::string name(variable.substr(kPrefix.size()));
    const bool hasSmall =
        std::any_of(name.begin(), name.end(), [](char c) { return c >= 'a' && c <= 'z'; });
    for (char& c : name) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    if (hasSmall || !secrets::isSecretName(name)) {
        throw ToolError(
            "korv-mask: a variable whose name begins with KORV_SECRET_ needs the name "
            "of a secret in capitals after it");
    }
    return name;
}

}  // namespace

void SecretVariables::take() {
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        const std::string_view variable(*entry);
        if (!variable.starts_with(kPrefix)) continue;
        const size_t separator = std::min(variable.find('='), variable.size());
        char* const text = *entry + std::min(separator + 1, variable.size());
        const std::string_view value(text);
        uint8_t* const bytes = pages_.allocate(secrets::kLongestSecret);
        const size_t length = secrets::decodeSecret(value, bytes);
        secrets::wipe(text, value.size());
        const std::string name = nameIn(variable.substr(0, separator));
        if (length == 0) {
            throw ToolError("korv-mask: " + std::string(variable.substr(0, separator)) +
                            ": a secret must be 16 to 64 bytes, in hexadecimal digits or padded "
                            "base64");
        }
        names_.push_back(name);
        secrets_.push_back({nullptr, bytes, static_cast<uint32_t>(length)});
    }
    for (size_t i = 0; i < names_.size(); ++i) secrets_[i].name = names_[i].c_str();
    // A provider or a child finds not even the names.
    for (std::string name : names_) {
        for (char& c : name) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
        ::unsetenv((std::string(kPrefix) + name).c_str());
    }
}

int printNewSecret(const std::string& name) {
    if (!secrets::isSecretName(name)) {
        throw ToolError(
            "korv-mask: --new-secret: a name has lower-case letters, digits and "
            "underscores, a letter first");
    }
    uint8_t bytes[32];
    if (::getrandom(bytes, sizeof bytes, 0) != static_cast<ssize_t>(sizeof bytes)) {
        throw ToolError("korv-mask: the system gives no random bytes");
    }
    std::string line = name + " = ";
    for (const uint8_t byte : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", unsigned{byte});
        line += digits;
    }
    line += '\n';
    const bool written = std::fputs(line.c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
    secrets::wipe(line.data(), line.size());
    secrets::wipe(bytes, sizeof bytes);
    if (!written) throw ToolError("korv-mask: cannot write to standard output");
    return kAllMasked;
}

}  // namespace tool
