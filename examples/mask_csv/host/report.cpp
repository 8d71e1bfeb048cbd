// Formatting of errors.
#include "host/report.h"

#include <cerrno>
#include <cstring>

#include "host/host_error.h"
#include "text/utf8_text.h"

namespace host {

namespace {

const char* meaning(const PrvEntry& provider, uint32_t code) {
    for (uint32_t i = 0; i < provider.errorCount; ++i) {
        if (provider.errors[i].code == code) return provider.errors[i].text;
    }
    return "no description";
}

// One line, whatever the text holds, and also where conversions fail.
std::string printable(const wchar_t* text) {
    if (text == nullptr) return "?";
    std::wstring copy(text);
    for (wchar_t& c : copy) {
        if (c < L' ' || c == 0x7F) c = L'?';
    }
    try {
        return text::toUtf8(copy);
    } catch (const text::ConversionError&) {
        return "?";
    }
}

// The catalogue's names are ASCII.
std::string nameOf(uint32_t tokenId) {
    const std::wstring name = gTokenIds[tokenId];
    return std::string(name.begin(), name.end());
}

}  // namespace

Report::Report(const std::string& path) : path_(path), file_(stderr) {
    if (path.empty()) return;
    file_ = std::fopen(path.c_str(), "we");
    if (file_ == nullptr) throw HostError(path + ": " + std::strerror(errno));
}

Report::~Report() {
    if (file_ != stderr) std::fclose(file_);
}

void Report::atRule(const std::string& file, uint64_t line) {
    inputFile_ = &file;
    line_ = line;
    column_ = nullptr;
}

void Report::atValue(const std::string& file, uint64_t line, uint64_t row,
                     const std::string& column) {
    inputFile_ = &file;
    line_ = line;
    row_ = row;
    column_ = &column;
}

std::string Report::place() const {
    std::string text = *inputFile_ + ":" + std::to_string(line_) + ": ";
    if (column_ != nullptr) text += "row " + std::to_string(row_) + ", column " + *column_ + ": ";
    return text;
}

void Report::error(const Provider& provider, const ErrorRecord& record) {
    std::string text = place() + provider.entry->name + " error " +
                       std::to_string(record.firstCode) + ", " +
                       meaning(*provider.entry, record.firstCode);
    const char* separator = ":";
    for (int16_t i = 0; i < record.tokenSlotCount; ++i) {
        const TokenSlot& slot = record.tokenSlots[i];
        if (slot.tokenId == KORV_TOKID_UNUSED || slot.tokenId >= KORV_TOKID_COUNT) continue;
        text += separator;
        text += " " + nameOf(slot.tokenId) + "=" + printable(slot.text);
        separator = "";
    }
    print(text);
}

void Report::failure(const Provider& provider, int32_t status) {
    print(place() + "the request to " + provider.entry->name + " failed with status " +
          std::to_string(status));
}

void Report::print(const std::string& line) {
    if (beforeLine_) beforeLine_();
    if (std::fprintf(file_, "%s\n", line.c_str()) < 0) fail();
}

void Report::flush() {
    if (std::fflush(file_) != 0) fail();
}

void Report::fail() const {
    throw HostError((path_.empty() ? "standard error" : path_) + ": " + std::strerror(errno));
}

}  // namespace host
