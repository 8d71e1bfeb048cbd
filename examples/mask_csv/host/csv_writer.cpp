// Quoting of fields.
#include "host/csv_writer.h"

namespace host {

namespace {

bool needsQuotes(std::string_view text) {
    for (const char c : text) {
        if (c == ',' || c == '"' || c == '\r' || c == '\n') return true;
    }
    return false;
}

}  // namespace

void CsvWriter::appendField(std::string_view text, bool quote) {
    if (!quote && !needsQuotes(text)) return append(text);
    append("\"");
    for (;;) {
        const size_t at = text.find('"');
        append(text.substr(0, at));
        if (at == std::string_view::npos) break;
        append("\"\"");
        text.remove_prefix(at + 1);
    }
    append("\"");
}

void CsvWriter::flush() {
    file_.write(buffer_.data(), used_);
    used_ = 0;
}

}  // namespace host
