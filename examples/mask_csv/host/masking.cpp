// Header and rows.
#include "host/masking.h"

#include <algorithm>

#include "host/faults.h"
#include "host/host_error.h"
#include "text/utf8_text.h"

namespace host {

namespace {
constexpr uint64_t kRowsBetweenCalls = 1024;
}

Masking::Masking(const Rules& rules, ProviderLoader& loader, CsvReader& reader,
                 const std::string& inputName, Report& report)
    : reader_(reader), inputName_(inputName), report_(report) {
    readHeader(rules, loader);
}

void Masking::readHeader(const Rules& rules, ProviderLoader& loader) {
    if (!reader_.next()) throw HostError(inputName_ + ": there is no header row");
    if (reader_.hasByteOrderMark()) header_ = "\xEF\xBB\xBF";
    header_ += reader_.rawRow();
    header_ += reader_.lineEnd();
    columnCount_ = reader_.fields().size();
    for (const CsvField& field : reader_.fields()) {
        const size_t valid = text::validUtf8Length(field.raw, field.length);
        if (valid != field.length) reader_.fail(field.raw + valid, "bytes that are not UTF-8");
    }

    std::vector<std::string> names;
    for (CsvField& field : reader_.fields()) names.emplace_back(CsvReader::text(field));
    Faults faults;
    for (const Rule& rule : rules.rules) {
        faults.collect([&] { addColumn(rules, rule, loader, names); });
    }
    faults.raise();
    std::sort(columns_.begin(), columns_.end(),
              [](const MaskedColumn& a, const MaskedColumn& b) { return a.index < b.index; });
}

void Masking::addColumn(const Rules& rules, const Rule& rule, ProviderLoader& loader,
                        const std::vector<std::string>& names) {
    const auto means = [&](const std::string& name) { return namesColumn(rule, name); };
    const auto found = std::find_if(names.begin(), names.end(), means);
    if (found == names.end()) rules.fail(rule, 1, inputName_ + " has no column " + rule.column);
    if (std::find_if(found + 1, names.end(), means) != names.end()) {
        rules.fail(rule, 1, inputName_ + " has more than one column " + rule.column);
    }
    const auto index = static_cast<size_t>(found - names.begin());
    for (const MaskedColumn& other : columns_) {
        if (other.index == index) rules.fail(rule, 1, "column " + *found + " has two rules");
    }
    report_.atRule(rules.file, rule.line);
    columns_.push_back(
        {index, std::make_unique<Request>(rules, rule, loader.load(rules, rule), *found, report_)});
}

Summary Masking::run(CsvWriter& writer, const std::function<void()>& afterRow) {
    writer.append(header_);
    while (reader_.next()) {
        ++summary_.rows;
        checkRow();
        maskRow(writer);
        if (summary_.rows % kRowsBetweenCalls == 0) afterRow();
    }
    writer.flush();
    return summary_;
}

// Everything that ends the run is found before the first field of the row is changed.
void Masking::checkRow() const {
    const std::vector<CsvField>& fields = reader_.fields();
    if (fields.size() != columnCount_) {
        const CsvField& at = fields[std::min(fields.size() - 1, columnCount_)];
        reader_.fail(at.raw, "the row has " + std::to_string(fields.size()) +
                                 " fields where the header has " + std::to_string(columnCount_));
    }
    for (const MaskedColumn& column : columns_) {
        const CsvField& field = fields[column.index];
        if (text::isAscii(field.raw, field.length)) continue;
        const size_t valid = text::validUtf8Length(field.raw, field.length);
        if (valid != field.length) {
            reader_.fail(field.raw + valid, "bytes that are not UTF-8, in the masked column " +
                                                column.request->columnName());
        }
    }
}

// Fields without a rule are copied with their delimiters as one stretch each.
void Masking::maskRow(CsvWriter& writer) {
    std::vector<CsvField>& fields = reader_.fields();
    const char* const end = fields.back().raw + fields.back().length;
    const char* from = fields.front().raw;
    for (const MaskedColumn& column : columns_) {
        CsvField& field = fields[column.index];
        writer.append(from, static_cast<size_t>(field.raw - from));
        const std::string_view value = CsvReader::text(field);
        const std::string& name = column.request->columnName();
        report_.atValue(inputName_, reader_.line(), summary_.rows, name);
        ++summary_.values;
        std::string_view masked;
        if (column.request->mask(value, masked, report_)) {
            writer.appendField(masked, field.quoted);
        } else {
            // The field is left empty: a value that cannot be masked never passes in clear.
            ++summary_.failed;
        }
        from = field.raw + field.length;
        if (column.index + 1 < fields.size()) {
            writer.append(",");
            ++from;
        }
    }
    writer.append(from, static_cast<size_t>(end - from));
    writer.append(reader_.lineEnd());
}

}  // namespace host
