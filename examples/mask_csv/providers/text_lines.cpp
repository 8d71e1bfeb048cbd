// Reading of a provider's text file.
#include "providers/text_lines.h"

#include <fstream>

#include "text/utf8_text.h"

namespace provider {

std::vector<Line> readLines(const std::wstring& path) {
    std::ifstream input(text::toUtf8(path), std::ios::binary);
    if (!input) throw Error(kBadFile, {{KORV_TOKID_PATH, path}});
    std::vector<Line> lines;
    std::string line;
    for (int32_t number = 1; std::getline(input, line); ++number) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty() || line[0] == '#') continue;
        if (text::validUtf8Length(line.data(), line.size()) != line.size() ||
            line.find('\0') != std::string::npos) {
            throw Error(kBadFile, {{KORV_TOKID_PATH, path}, {KORV_TOKID_ROW_COUNT, number}});
        }
        lines.push_back({line, number});
    }
    if (input.bad() || lines.empty()) throw Error(kBadFile, {{KORV_TOKID_PATH, path}});
    return lines;
}

}  // namespace provider
