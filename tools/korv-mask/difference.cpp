// The layout of --diff.
#include "difference.h"

#include <algorithm>
#include <cinttypes>

#include "shape.h"

namespace tool {

namespace {

// In characters. A name, a text before and a text after share a line where they fit; otherwise the
// text after gets a line of its own, so that no line is longer than 80.
constexpr size_t kLongestName = 24;
constexpr size_t kLongestText = 40;  // as a shape
constexpr size_t kLineLength = 80;

constexpr const char* kIndent = "  ";
constexpr const char* kArrow = "-> ";

std::string shown(const std::string& text, bool clear) {
    if (text.empty()) return "(empty)";
    return clear ? printable(text, kLongestText) : shapeOf(text);
}

std::string padded(std::string text, size_t width) {
    const size_t length = characterCount(text);
    if (length < width) text.append(width - length, ' ');
    return text;
}

struct Line {
    std::string name;
    std::string before;
    std::string after;
};

Line lineOf(const std::string& name, const std::string& before,
            const std::optional<std::string>& after, bool showClear) {
    Line line{printable(name, kLongestName), shown(before, showClear), ""};
    if (!after) {
        line.after = "(left out)";
    } else if (*after == before) {
        line.after = "(unchanged)";
    } else {
        line.after = kArrow + shown(*after, true);
    }
    return line;
}

// The column in which the masked texts begin: after the longest clear text that leaves room for
// its masked text.
size_t textWidth(const std::vector<Line>& lines, size_t room) {
    size_t width = 0;
    for (const Line& line : lines) {
        const size_t before = characterCount(line.before);
        if (before + 1 + characterCount(line.after) <= room) width = std::max(width, before);
    }
    return width;
}

void printRow(std::FILE* stream, const std::vector<Line>& lines, size_t nameWidth) {
    const size_t indent = nameWidth + 2 + 2;
    const size_t room = kLineLength - indent;
    const size_t width = textWidth(lines, room);
    for (const Line& line : lines) {
        std::string text = kIndent + padded(line.name, nameWidth) + kIndent;
        const size_t before = std::max(width, characterCount(line.before));
        if (before + 1 + characterCount(line.after) <= room) {
            text += padded(line.before, width) + " " + line.after;
        } else {
            text += line.before + "\n" + std::string(indent, ' ') + line.after;
        }
        std::fprintf(stream, "%s\n", text.c_str());
    }
}

}  // namespace

void printDifference(std::FILE* stream, const std::vector<std::string>& names,
                     const std::vector<DifferenceRow>& rows, bool showClear) {
    const char* separator = "";
    for (const DifferenceRow& row : rows) {
        std::vector<Line> lines;
        size_t nameWidth = 0;
        for (size_t i = 0; i < names.size(); ++i) {
            lines.push_back(lineOf(names[i], row.before[i], row.after[i], showClear));
            nameWidth = std::max(nameWidth, characterCount(lines.back().name));
        }
        std::fprintf(stream, "%sRow %" PRIu64 "\n", separator, row.row);
        printRow(stream, lines, nameWidth);
        separator = "\n";
    }
}

}  // namespace tool
