// Quoting of fields.
#include "csv_field.h"

namespace tool {

std::string_view unquoted(const CsvField& field, std::string& work) {
    if (!field.quoted) return {field.raw, field.length};
    if (!field.doubled) return {field.raw + 1, field.length - 2};
    work.clear();
    appendUnquoted(field, work);
    return work;
}

bool needsQuotes(std::string_view text, char delimiter) {
    for (; text.size() >= kBlockSize; text.remove_prefix(kBlockSize)) {
        if (Block(text.data()).special(delimiter) != 0) return true;
    }
    for (const char c : text) {
        if (isSpecial(c, delimiter)) return true;
    }
    return false;
}

}  // namespace tool
