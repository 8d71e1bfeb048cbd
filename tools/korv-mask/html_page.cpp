// The page's parts. It has no scripts and loads nothing; its policy forbids both.
#include "html_page.h"

#include <algorithm>
#include <string_view>

#include "html_style.h"
#include "shape.h"

namespace tool {

namespace {

std::string escaped(std::string_view text) {
    std::string html;
    for (const char c : printable(text, std::string_view::npos, "\uFFFD")) {
        switch (c) {
            case '&':
                html += "&amp;";
                break;
            case '<':
                html += "&lt;";
                break;
            case '>':
                html += "&gt;";
                break;
            case '"':
                html += "&quot;";
                break;
            case '\'':
                html += "&#39;";
                break;
            default:
                html += c;
        }
    }
    return html;
}

// A text of any direction between others.
std::string isolated(std::string_view text) {
    return "<bdi>" + escaped(text) + "</bdi>";
}

std::string counted(uint64_t count, const char* singular, const char* plural) {
    return grouped(count) + " " + (count == 1 ? singular : plural);
}

struct Segment {
    const char* style;
    uint64_t count;
    const char* text;
};

// Widths are thousandths of the bar.
constexpr double kFullWidth = 1000;
// So much can be seen, however small the share is.
constexpr double kLeastWidth = 8;

std::string rectangle(const char* style, double at, double width) {
    return std::string("<rect class=\"") + style + "\" x=\"" +
           std::to_string(static_cast<int>(at)) + "\" width=\"" +
           std::to_string(static_cast<int>(at + width) - static_cast<int>(at)) +
           "\" height=\"10\"/>";
}

constexpr const char* kBarStart =
    "<svg class=\"bar\" viewBox=\"0 0 1000 10\" preserveAspectRatio=\"none\" aria-hidden=\"true\">";

// Segments one after the other, together `total` wide; what is missing stays empty.
std::string bar(const std::vector<Segment>& segments, uint64_t total) {
    double room = kFullWidth;
    for (const Segment& segment : segments) {
        if (segment.count != 0) room -= kLeastWidth;
    }
    std::string html = kBarStart;
    double at = 0;
    for (const Segment& segment : segments) {
        if (segment.count == 0) continue;
        const double share = static_cast<double>(segment.count) / static_cast<double>(total);
        const double width = kLeastWidth + share * room;
        html += rectangle(segment.style, at, width);
        at += width;
    }
    return html + "</svg>";
}

std::string counts(const std::vector<Segment>& segments) {
    std::string html = "<ul class=\"counts\">";
    for (const Segment& segment : segments) {
        if (segment.count == 0) continue;
        html += "<li><svg class=\"key\" viewBox=\"0 0 10 10\" aria-hidden=\"true\">" +
                rectangle(segment.style, 0, 10) + "</svg>" + grouped(segment.count) + " " +
                segment.text + "</li>";
    }
    return html + "</ul>";
}

bool isKept(const ColumnSummary& column) {
    return column.action == "KEEP";
}
bool isDropped(const ColumnSummary& column) {
    return column.action == "DROP";
}

std::string outcome(const ColumnSummary& column) {
    if (isDropped(column)) return "<p class=\"small\">left out of the output</p>";
    std::vector<Segment> segments;
    if (isKept(column)) {
        segments = {{"clear", column.values, "in clear"}};
    } else {
        segments = {{"masked", column.masked - column.unchanged, "masked"},
                    {"clear", column.unchanged, "unchanged"},
                    {"failed", column.failedValues(), "failed"}};
    }
    segments.push_back({"empty", column.nulls, "empty"});
    const uint64_t total = column.values + column.nulls;
    if (total == 0) return "<p class=\"small\">no values</p>";
    std::string html = bar(segments, total) + counts(segments);
    if (column.formulas != 0) {
        html += "<p class=\"small\">" +
                counted(column.formulas, "masked value begins", "masked values begin") +
                " with =, +, - or @, and may be taken for a formula by a spreadsheet.</p>";
    }
    return html;
}

std::string figure(const char* name, uint64_t number) {
    return std::string("<div><dt>") + name + "</dt><dd>" + grouped(number) + "</dd></div>\n";
}

std::string status(const Page& page, uint64_t failed) {
    const char* style = "good";
    std::string text = "\u2713 The run is complete. No value failed.";
    if (page.summary.status == 1) {
        style = "warn";
        text = "! The run is complete, but " + counted(failed, "value", "values") + " failed.";
    } else if (page.summary.status != 0) {
        style = "bad";
        text = "\u2717 The run ended early. There is no output.";
    }
    return std::string("<p class=\"status ") + style + "\">" + text + "</p>\n";
}

std::string overview(const Page& page) {
    uint64_t masked = 0;
    uint64_t failed = 0;
    uint64_t kept = 0;
    for (const PageColumn& column : page.columns) {
        failed += column.summary.failedValues();
        if (isKept(column.summary)) {
            ++kept;
        } else {
            masked += column.summary.masked - column.summary.unchanged;
        }
    }
    return status(page, failed) + "<dl class=\"figures\">\n" +
           figure("Rows read", page.summary.rowsIn) + figure("Rows written", page.summary.rowsOut) +
           figure("Values masked", masked) + figure("Values failed", failed) +
           figure("Columns", page.columns.size()) + figure("Columns in clear", kept) + "</dl>\n";
}

// The roles keep the table a table where the style sheet stacks its cells.
std::string columnTable(const std::vector<PageColumn>& columns) {
    std::string html =
        "<table class=\"stack\" role=\"table\">\n"
        "<caption>What happened to each column, and which rule says so</caption>\n"
        "<thead role=\"rowgroup\"><tr role=\"row\">"
        "<th class=\"c1\" scope=\"col\" role=\"columnheader\">Column</th>"
        "<th class=\"c2\" scope=\"col\" role=\"columnheader\">Action</th>"
        "<th scope=\"col\" role=\"columnheader\">Values</th></tr></thead>\n"
        "<tbody role=\"rowgroup\">\n";
    for (const PageColumn& column : columns) {
        html += "<tr role=\"row\"><th scope=\"row\" role=\"rowheader\">" +
                isolated(column.summary.name) + " <span class=\"small\">column " +
                std::to_string(column.summary.number) + "</span></th><td role=\"cell\">" +
                "<span class=\"action\">" +
                escaped(column.summary.action + column.summary.protection.text()) +
                "</span> <span class=\"small\">" + isolated(column.reason) +
                "</span></td><td role=\"cell\">" + outcome(column.summary) + "</td></tr>\n";
    }
    return html + "</tbody></table>\n";
}

std::string failureRow(const PageColumn& column, uint32_t code, uint64_t count, uint64_t most) {
    const auto text = column.errorTexts.find(code);
    const std::vector<Segment> segment = {{"failed", count, count == 1 ? "value" : "values"}};
    return "<tr><th scope=\"row\">" + isolated(column.summary.name) + " <span class=\"small\">" +
           escaped(column.summary.action) + " error " + std::to_string(code) +
           (text == column.errorTexts.end() ? "" : ": " + isolated(text->second)) +
           "</span></th><td>" + bar(segment, most) + counts(segment) + "</td></tr>\n";
}

// Nothing when no value failed.
std::string failureSection(const std::vector<PageColumn>& columns) {
    uint64_t most = 0;
    for (const PageColumn& column : columns) {
        for (const auto& [code, count] : column.summary.failed) most = std::max(most, count);
    }
    if (most == 0) return "";
    std::string html =
        "<h2>Failed values</h2>\n<table>\n<caption>Failed values by column and error</caption>\n"
        "<thead><tr><th class=\"half\" scope=\"col\">Column and error</th>"
        "<th scope=\"col\">Values</th></tr></thead>\n<tbody>\n";
    for (const PageColumn& column : columns) {
        for (const auto& [code, count] : column.summary.failed) {
            html += failureRow(column, code, count, most);
        }
    }
    return html + "</tbody></table>\n";
}

std::string shapeCell(const std::optional<std::string>& text) {
    if (!text) return "<td><span class=\"soft\">(left out)</span></td>";
    if (text->empty()) return "<td><span class=\"soft\">(empty)</span></td>";
    return "<td><code>" + isolated(shapeOf(*text)) + "</code></td>";
}

// Nothing without samples.
std::string shapeSection(const std::vector<PageColumn>& columns) {
    std::string rows;
    for (const PageColumn& column : columns) {
        if (column.samples.empty()) continue;
        rows += "<tbody><tr><th class=\"group\" scope=\"rowgroup\" colspan=\"2\">" +
                isolated(column.summary.name) + "</th></tr>\n";
        for (const ColumnSample& sample : column.samples) {
            rows += "<tr>" + shapeCell(sample.before) + shapeCell(sample.after) + "</tr>\n";
        }
        rows += "</tbody>\n";
    }
    if (rows.empty()) return "";
    return "<h2>Shapes before and after</h2>\n<table>\n<caption>A stands for a capital letter, a "
           "for another letter, 9 for a digit. Punctuation stays, and ? stands for all "
           "else.</caption>\n<thead><tr>"
           "<th class=\"half\" scope=\"col\">Before</th><th "
           "scope=\"col\">After</th></tr></thead>\n" +
           rows + "</table>\n";
}

}  // namespace

std::string toHtml(const Page& page) {
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
           "style-src 'unsafe-inline'\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>"
           "Masking of " +
           escaped(page.input) + "</title>\n<style>" + std::string(kHtmlStyle) +
           "</style>\n</head>\n<body>\n<header>\n<h1>Masking of " + isolated(page.input) +
           "</h1>\n</header>\n<main>\n" + overview(page) + "<h2>Columns</h2>\n" +
           columnTable(page.columns) + failureSection(page.columns) + shapeSection(page.columns) +
           "</main>\n<footer>This page holds no value of the data: only counts, names of columns, "
           "and shapes.</footer>\n</body>\n</html>\n";
}

}  // namespace tool
