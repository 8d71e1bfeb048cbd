// Reading of a provider's text file.
#include "providers/text_lines.h"

#include <cerrno>
#include <fstream>
#include <system_error>

#include "text/utf8_text.h"

namespace provider {

Error fileError(const std::wstring& path, int reason) {
    if (reason == 0) return Error(kBadFile, {{KORV_TOKID_PATH, path}});
    const std::wstring message = toWide(std::generic_category().message(reason));
    return Error(kBadFile, {{KORV_TOKID_PATH, path}, {KORV_TOKID_ERRMSG, message}});
}

void readLines(const std::wstring& path,
               const std::function<void(const std::string& line, int32_t number)>& take) {
    errno = 0;
    std::ifstream input(toUtf8(path), std::ios::binary);
    if (!input) throw fileError(path, errno);
    bool anyLine = false;
    std::string line;
    for (int32_t number = 1; std::getline(input, line); ++number) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty() || line[0] == '#') continue;
        if (text::validUtf8Length(line.data(), line.size()) != line.size() ||
            line.find('\0') != std::string::npos) {
            throw Error(kBadFile, {{KORV_TOKID_PATH, path}, {KORV_TOKID_ROW_COUNT, number}});
        }
        take(line, number);
        anyLine = true;
    }
    if (input.bad()) throw fileError(path, errno);
    if (!anyLine) throw fileError(path, 0);
}

}  // namespace provider
