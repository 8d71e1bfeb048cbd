// Escaping of records: \t, \n, \\ and \xHH for other control characters.
#include "record.h"

#include <charconv>

namespace kit {

namespace {

constexpr char kDigits[] = "0123456789abcdef";

void appendEscaped(std::string& line, std::string_view text) {
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\\') {
            line += "\\\\";
        } else if (c == '\t') {
            line += "\\t";
        } else if (c == '\n') {
            line += "\\n";
        } else if (byte < 0x20 || byte == 0x7F) {
            line += {'\\', 'x', kDigits[byte / 16], kDigits[byte % 16]};
        } else {
            line += c;
        }
    }
}

// The character that an escape stands for; `at` moves to its last character.
char unescape(std::string_view line, size_t& at) {
    if (at + 1 == line.size()) return '\\';
    const char c = line[++at];
    if (c == 't') return '\t';
    if (c == 'n') return '\n';
    if (c != 'x' || at + 2 >= line.size()) return c;
    unsigned byte = '?';
    std::from_chars(line.data() + at + 1, line.data() + at + 3, byte, 16);
    at += 2;
    return static_cast<char>(byte);
}

}  // namespace

std::string toLine(const Record& record) {
    std::string line;
    for (size_t i = 0; i < record.size(); ++i) {
        if (i > 0) line += '\t';
        appendEscaped(line, record[i]);
    }
    return line;
}

Record fromLine(std::string_view line) {
    Record record(1);
    for (size_t at = 0; at < line.size(); ++at) {
        if (line[at] == '\t') {
            record.emplace_back();
        } else {
            record.back() += line[at] == '\\' ? unescape(line, at) : line[at];
        }
    }
    return record;
}

std::vector<Record> recordsIn(std::string_view text) {
    std::vector<Record> records;
    for (size_t end; (end = text.find('\n')) != std::string_view::npos;) {
        records.push_back(fromLine(text.substr(0, end)));
        text.remove_prefix(end + 1);
    }
    return records;
}

}  // namespace kit
