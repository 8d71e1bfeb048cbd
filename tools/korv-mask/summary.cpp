// Counting, and writing of JSON.
#include "summary.h"

#include <cstdio>
#include <string_view>

#include "text/utf8_text.h"

namespace tool {

namespace {

// Appends valid UTF-8. All control characters of ASCII are escaped: the line may be shown on a
// terminal.
void appendEscaped(std::string& json, std::string_view text) {
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            json += '\\';
            json += c;
        } else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
            char code[8];
            std::snprintf(code, sizeof code, "\\u%04x", static_cast<unsigned>(c));
            json += code;
        } else {
            json += c;
        }
    }
}

std::string quoted(std::string_view text) {
    std::string json = "\"";
    for (;;) {
        const size_t valid = text::validUtf8Length(text.data(), text.size());
        appendEscaped(json, text.substr(0, valid));
        if (valid == text.size()) return json + '"';
        json += "\\ufffd";
        text.remove_prefix(valid + 1);
    }
}

std::string member(const char* name, uint64_t number) {
    return std::string(",\"") + name + "\":" + std::to_string(number);
}

std::string toJson(const ColumnSummary& column) {
    std::string json = "{\"number\":" + std::to_string(column.number);
    json += ",\"name\":" + quoted(column.name) + ",\"action\":" + quoted(column.action);
    json += member("values", column.values) + member("nulls", column.nulls);
    json += member("masked", column.masked) + member("unchanged", column.unchanged);
    json += ",\"failed\":{";
    const char* separator = "";
    for (const auto& [code, count] : column.failed) {
        json += separator + quoted(std::to_string(code)) + ":" + std::to_string(count);
        separator = ",";
    }
    json += '}';
    const Protection& protection = column.protection;
    if (!protection.method.empty()) json += ",\"method\":" + quoted(protection.method);
    if (protection.isDisguise) json += ",\"disguise\":true";
    if (!protection.secret.empty()) {
        json += ",\"secret\":" + quoted(protection.secret) +
                ",\"fingerprint\":" + quoted(protection.fingerprint);
    }
    if (column.formulas != 0) json += member("formulas", column.formulas);
    return json + '}';
}

}  // namespace

std::string Protection::text() const {
    if (method.empty()) return {};
    return ", method " + method + (isDisguise ? ", a disguise" : "") +
           (secret.empty() ? "" : ", secret " + secret + " " + fingerprint);
}

uint64_t ColumnSummary::failedValues() const {
    uint64_t sum = 0;
    for (const auto& [code, count] : failed) sum += count;
    return sum;
}

void ColumnSummary::add(const KorvMaskStatistics& statistics) {
    values += statistics.values;
    nulls += statistics.nulls;
    masked += statistics.masked;
    unchanged += statistics.unchanged;
    formulas += statistics.formulas;
    for (uint32_t i = 0; i < statistics.failureCount; ++i) {
        failed[statistics.failures[i].code] += statistics.failures[i].count;
    }
}

void ColumnSummary::add(const ColumnSummary& other) {
    values += other.values;
    nulls += other.nulls;
    masked += other.masked;
    unchanged += other.unchanged;
    formulas += other.formulas;
    for (const auto& [code, count] : other.failed) failed[code] += count;
}

uint64_t Summary::failedValues() const {
    uint64_t sum = 0;
    for (const ColumnSummary& column : columns) sum += column.failedValues();
    return sum;
}

std::string toJson(const Summary& summary) {
    std::string json = "{\"format\":1" + member("status", static_cast<uint64_t>(summary.status));
    json += member("rows_in", summary.rowsIn) + member("rows_out", summary.rowsOut);
    json += ",\"columns\":[";
    const char* separator = "";
    for (const ColumnSummary& column : summary.columns) {
        json += separator + toJson(column);
        separator = ",";
    }
    return json + "]}\n";
}

std::string grouped(uint64_t number) {
    std::string digits = std::to_string(number);
    for (size_t at = digits.size(); at > 3; at -= 3) digits.insert(at - 3, 1, ',');
    return digits;
}

}  // namespace tool
