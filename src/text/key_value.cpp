// The value of a key, separator, value text.
#include <cstring>

#include "korv/text.h"

namespace korv {
namespace {

// The first character of the value; nullptr if the value is missing or an empty string.
const char* findValue(const char* source, char separator) noexcept {
    const char* at = separator ? std::strchr(source, separator) : nullptr;
    if (!at) return nullptr;
    ++at;
    while (*at == ' ') ++at;
    return *at ? at : nullptr;
}

// Copies at least one byte, which is no space; the length counts trailing spaces that are cut.
void copyValue(const char* value, char* output, int32_t maxCount, uint32_t* length) noexcept {
    int32_t copied = 0;
    do {
        output[copied] = value[copied];
        ++copied;
    } while (copied < maxCount && value[copied]);
    if (length) *length = static_cast<uint32_t>(copied);
    while (output[copied - 1] == ' ') --copied;
    output[copied] = '\0';
}

}  // namespace
}  // namespace korv

int32_t GetKeyValue(const char* source, char* output, int32_t maxCount, uint32_t* length,
                    char separator) {
    if (!source || !output) return KORV_FAILURE;
    const char* value = korv::findValue(source, separator);
    if (!value) return KORV_FAILURE;
    korv::copyValue(value, output, maxCount, length);
    return KORV_SUCCESS;
}
