// Writing of JSON and of text for terminals.
#include "json.h"

#include <cstdio>

#include "text/utf8_text.h"

namespace kit {

namespace {

bool isControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

// Calls `valid` for stretches of UTF-8 text and `invalid` for each other byte.
template <class Valid, class Invalid>
void forEachPart(std::string_view text, Valid valid, Invalid invalid) {
    for (;;) {
        const size_t length = text::validUtf8Length(text.data(), text.size());
        valid(text.substr(0, length));
        if (length == text.size()) return;
        invalid();
        text.remove_prefix(length + 1);
    }
}

template <class Items, class Write>
std::string listOf(char begin, const Items& items, char end, Write write) {
    std::string json(1, begin);
    for (const auto& item : items) {
        if (json.size() > 1) json += ", ";
        json += write(item);
    }
    return json + end;
}

}  // namespace

std::string jsonString(std::string_view text) {
    std::string json = "\"";
    forEachPart(
        text,
        [&json](std::string_view part) {
            for (const char c : part) {
                if (c == '"' || c == '\\') json += '\\';
                if (isControl(c)) {
                    char code[8];
                    std::snprintf(code, sizeof code, "\\u%04x", static_cast<unsigned>(c));
                    json += code;
                } else {
                    json += c;
                }
            }
        },
        [&json] { json += "\\ufffd"; });
    return json + '"';
}

std::string jsonStrings(const std::vector<std::string>& texts) {
    return listOf('[', texts, ']', [](const std::string& text) { return jsonString(text); });
}

std::string jsonObject(const std::vector<std::pair<std::string, std::string>>& members) {
    return listOf('{', members, '}', [](const auto& member) {
        return jsonString(member.first) + ": " + member.second;
    });
}

std::string jsonArray(const std::vector<std::string>& values) {
    return listOf('[', values, ']', [](const std::string& value) { return value; });
}

std::string printable(std::string_view text) {
    std::string line;
    forEachPart(
        text,
        [&line](std::string_view part) {
            for (const char c : part) line += isControl(c) ? '?' : c;
        },
        [&line] { line += '?'; });
    return line;
}

}  // namespace kit
