// Reading of the header.
#include "input.h"

#include <algorithm>
#include <utility>

#include "code_page_source.h"
#include "csv_field.h"
#include "text/utf8_text.h"

namespace tool {

Input::Input(const Options& options)
    : dialect_(options.dialect),
      header_(options.dialect.header),
      file_(options.input),
      source_(openAsUtf8(file_, options.encoding)),
      reader_(*source_, file_.name()),
      hasFirst_(reader_.next(first_)),
      hasByteOrderMark_(reader_.hasByteOrderMark()) {
    if (!hasFirst_) {
        throw ToolError("korv-mask: " + name() +
                        (header_ ? ": there is no header row" : ": the input is empty"));
    }
    try {
        readHeader();
    } catch (const MalformedRow& malformed) {
        throw errorAt(0, malformed);
    }
}

void Input::readHeader() {
    RowParser parser(first_, dialect_);
    parser.next();
    std::string work;
    for (const CsvField& field : parser.fields()) {
        if (!header_) {
            columns_.push_back("@" + std::to_string(columns_.size() + 1));
            continue;
        }
        const size_t valid = text::validUtf8Length(field.raw, field.length);
        if (valid != field.length) parser.fail(field.raw + valid, "bytes that are not UTF-8");
        columns_.emplace_back(unquoted(field, work));
        rawColumns_.emplace_back(field.raw, field.length);
    }
    if (header_) lineEnd_ = parser.lineEnd();
}

std::string Input::headerFor(const std::vector<bool>& isLeftOut) const {
    std::string text;
    bool isBlank = true;
    for (size_t i = 0; i < rawColumns_.size(); ++i) {
        if (isLeftOut[i]) continue;
        if (!std::exchange(isBlank, false)) text += dialect_.delimiter;
        text += rawColumns_[i];
    }
    // An empty line would not be a header.
    if (header_ && text.empty() && rawColumns_.size() > 1) text = "\"\"";
    if (hasByteOrderMark_) text.insert(0, "\xEF\xBB\xBF");
    return text + lineEnd_;
}

std::string Input::delimiterHint() const {
    if (rawColumns_.size() != 1) return {};
    for (const char delimiter : {';', '\t', '|', ','}) {
        if (delimiter == dialect_.delimiter ||
            rawColumns_[0].find(delimiter) == std::string::npos) {
            continue;
        }
        const std::string shown = delimiter == '\t' ? "tab" : std::string{'\'', delimiter, '\''};
        return "korv-mask: the header has one column; is --delimiter " + shown + " missing?";
    }
    return {};
}

bool Input::next(Chunk& chunk) {
    if (!hasFirst_) return reader_.next(chunk);
    hasFirst_ = false;
    chunk = std::move(first_);
    return true;
}

}  // namespace tool
