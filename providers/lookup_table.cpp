// Reading of a lookup file.
#include "providers/lookup_table.h"

#include <algorithm>

#include "providers/text_lines.h"

namespace provider {

namespace {

std::string withoutBlanks(std::string_view text) {
    const size_t first = std::min(text.find_first_not_of(' '), text.size());
    return std::string(text.substr(first, text.find_last_not_of(' ') + 1 - first));
}

}  // namespace

LookupTable::LookupTable(const std::wstring& path) {
    readLines(path, [&](const std::string& line, int32_t number) { add(path, line, number); });
}

void LookupTable::add(const std::wstring& path, const std::string& line, int32_t number) {
    const auto fail = [&](ErrorCode code) {
        return Error(code, {{KORV_TOKID_PATH, path}, {KORV_TOKID_ROW_COUNT, number}});
    };
    const std::string_view whole = line;
    const size_t separator = whole.find('=');
    if (separator == whole.npos) throw fail(kBadLine);
    const std::string value = withoutBlanks(whole.substr(0, separator));
    std::string replacement = withoutBlanks(whole.substr(separator + 1));
    if (value.empty() || replacement.empty()) throw fail(kBadLine);

    std::wstring lowered = toWide(value);
    KORV_StrToWLower(lowered.data());
    const auto [entry, isNew] =
        replacements_.try_emplace(std::move(lowered), std::move(replacement));
    if (!isNew) throw fail(kTwice);
}

}  // namespace provider
