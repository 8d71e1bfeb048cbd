// Parses the rows of a chunk by RFC 4180, without copying or changing the fields.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "chunk_reader.h"
#include "special_characters.h"

namespace tool {

// One field as it stands in the input, quotes included.
struct CsvField {
    const char* raw;
    uint32_t length;
    bool quoted;
    bool doubled;  // has doubled quotes inside
};

// Thrown where the input is malformed.
struct MalformedRow {
    uint64_t line;    // within the chunk, from 0
    uint64_t column;  // in characters, from 1
    std::string message;
};

class RowParser {
  public:
    // The chunk must outlive the parser.
    RowParser(const Chunk& chunk, const Dialect& dialect);

    // Parses the next row; returns false at the end of the chunk. Throws MalformedRow. Lines end
    // with LF or CRLF; the last one may end with the input.
    bool next();

    // Goes on at `to`, the beginning of a row, with this many line feeds between.
    void skip(const char* to, uint64_t lineFeeds);
    // Where the next row begins.
    const char* position() const { return next_; }

    // The fields of the row, until the next call of next().
    std::span<const CsvField> fields() const { return {fields_.data(), count_}; }
    // "\n", "\r\n", or "" at the end of the input.
    std::string_view lineEnd() const { return {rowEnd_, static_cast<size_t>(next_ - rowEnd_)}; }
    const char* rowBegin() const { return rowBegin_; }
    // The end of the row without its line end.
    const char* rowEnd() const { return rowEnd_; }
    // The line on which the row begins, within the chunk, from 0.
    uint64_t line() const { return line_; }
    // The number of line feeds up to the end of the row, with its line end.
    uint64_t lines() const { return lines_; }
    // Whether the row is an empty line. fields() then has one empty field.
    bool isBlank() const { return rowBegin_ == rowEnd_; }

    // Throws MalformedRow for a place in the row.
    [[noreturn]] void fail(const char* at, const std::string& message) const;

  private:
    const char* parseQuoted(CsvField& field);
    void expectEndOfInput() const;
    bool finish(const char* rowEnd, size_t lineEndLength);

    const Chunk& chunk_;
    char delimiter_;
    SpecialCharacters special_;
    const char* end_;  // of the chunk
    const char* rowBegin_;
    const char* rowEnd_;
    const char* next_;  // the row after this one
    uint64_t line_ = 0;
    uint64_t lines_ = 0;
    std::vector<CsvField> fields_;  // the first count_ are those of the row
    size_t count_ = 0;
};

}  // namespace tool
