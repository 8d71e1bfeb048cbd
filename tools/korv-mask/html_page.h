// The option --html: a run as one page that needs nothing but a browser.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "summary.h"

namespace tool {

// A value and what has become of it. The page shows the shapes of both.
struct ColumnSample {
    std::string before;
    std::optional<std::string> after;  // nothing where the output has no field
};

struct PageColumn {
    ColumnSummary summary;
    std::string reason;  // why it has this action: "rule CARD (rules.txt:3)", "kept: no rule"
    std::vector<ColumnSample> samples;
    std::map<uint32_t, std::string> errorTexts;  // meanings of the codes in summary.failed
};

struct Page {
    std::string input;  // its name
    Summary summary;    // status and rows; the counts come from `columns`
    std::vector<PageColumn> columns;
};

// The page as HTML in UTF-8, with all texts escaped. It holds no value.
std::string toHtml(const Page& page);

}  // namespace tool
