// Reads CSV by RFC 4180 row by row out of one buffer, without copying the fields.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/byte_source.h"

namespace host {

// One field as it stands in the input, quotes included.
struct CsvField {
    char* raw;
    uint32_t length;
    bool quoted;
    bool doubled;  // has doubled quotes inside
};

class CsvReader {
  public:
    static constexpr size_t kBufferSize = 128 * 1024;
    static constexpr size_t kLongestRow = 8 * 1024 * 1024;

    CsvReader(ByteSource& source, std::string name, size_t bufferSize = kBufferSize,
              size_t longestRow = kLongestRow);

    // Reads the next row; false at the end of the input. A row's fields live until the next call.
    // Lines end in LF or CRLF, the last one also at the end of the input.
    bool next();

    std::vector<CsvField>& fields() { return fields_; }
    // The end of the row's line, "" at the end of the input.
    std::string_view lineEnd() const { return lineEnd_; }
    // The row with its delimiters, as long as text() has not been asked for.
    std::string_view rawRow() const;
    // The line on which the row begins, from 1.
    uint64_t line() const { return line_; }
    // Whether the input began with the UTF-8 byte order mark, which belongs to no field.
    bool hasByteOrderMark() const { return hasByteOrderMark_; }

    // The field's text, zero-terminated, with quotes taken off. Overwrites the field and its
    // delimiter in the buffer: take what is needed of the raw row, and check all fields that may
    // fail, before.
    static std::string_view text(CsvField& field);

    // Throws HostError with the position of `at`, which points into the row.
    [[noreturn]] void fail(const char* at, const std::string& message) const;

  private:
    bool parseRow();
    bool parseQuoted(char*& p, CsvField& field);
    void fill();

    ByteSource& source_;
    std::string name_;
    size_t longestRow_;
    std::vector<char> buffer_;  // one byte longer than what is filled, for a terminator
    char* begin_;               // of the row
    char* next_;                // of the row behind it
    char* end_;                 // of the data
    bool started_ = false;
    bool ended_ = false;
    bool hasByteOrderMark_ = false;
    uint64_t line_ = 1;
    uint64_t linesInRow_ = 0;
    std::vector<CsvField> fields_;
    std::string_view lineEnd_;
};

}  // namespace host
