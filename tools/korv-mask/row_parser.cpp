// The CSV parser, which steps from one special character to the next.
#include "row_parser.h"

namespace tool {

namespace {

bool beginsCharacter(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
}

}  // namespace

RowParser::RowParser(const Chunk& chunk, const Dialect& dialect)
    : chunk_(chunk),
      delimiter_(dialect.delimiter),
      special_(chunk.begin, chunk.end, dialect.delimiter),
      end_(chunk.end),
      rowBegin_(chunk.begin),
      rowEnd_(chunk.begin),
      next_(chunk.begin) {}

bool RowParser::next() {
    count_ = 0;
    line_ = lines_;
    rowBegin_ = rowEnd_ = next_;
    if (rowBegin_ == end_) {
        if (!chunk_.fault.empty()) fail(end_, chunk_.fault);
        return false;
    }
    for (const char* begin = rowBegin_;;) {
        if (count_ == fields_.size()) fields_.resize(count_ * 2 + 16);
        CsvField& field = fields_[count_++];
        field = {begin, 0, false, false};
        const char* at = special_.next();
        if (at == begin && at != end_ && *at == '"') at = parseQuoted(field);
        field.length = static_cast<uint32_t>(at - begin);

        if (at == end_) {
            expectEndOfInput();
            return finish(at, 0);
        }
        if (*at == delimiter_) {
            begin = at + 1;
        } else if (*at == '\n') {
            return finish(at, 1);
        } else if (*at == '\r') {
            const char* const lineFeed = special_.next();
            if (at + 1 == end_) expectEndOfInput();
            if (lineFeed != at + 1 || lineFeed == end_ || *lineFeed != '\n') {
                fail(at, "a carriage return without line feed");
            }
            return finish(at, 2);
        } else {
            fail(at,
                 *at == '\0' ? "a NUL byte" : "a quote in a field that does not begin with one");
        }
    }
}

// Returns the place after the closing quote, which is a special character or the end of the chunk.
const char* RowParser::parseQuoted(CsvField& field) {
    field.quoted = true;
    for (;;) {
        const char* at = special_.next();
        if (at == end_) {
            expectEndOfInput();
            fail(field.raw, "a quote that is never closed");
        }
        if (*at == '\0') fail(at, "a NUL byte");
        if (*at == '\n') ++lines_;
        if (*at != '"') continue;

        const char* const after = at + 1;
        if (special_.next() != after) fail(after, "text after a closing quote");
        if (after == end_ || *after != '"') return after;
        field.doubled = true;
    }
}

void RowParser::skip(const char* to, uint64_t lineFeeds) {
    special_ = SpecialCharacters(to, end_, delimiter_);
    next_ = to;
    lines_ += lineFeeds;
}

bool RowParser::finish(const char* rowEnd, size_t lineEndLength) {
    rowEnd_ = rowEnd;
    next_ = rowEnd + lineEndLength;
    if (lineEndLength > 0) ++lines_;
    return true;
}

// Fails when the row is cut off by the end of the chunk.
void RowParser::expectEndOfInput() const {
    if (!chunk_.fault.empty()) fail(end_, chunk_.fault);
    // The chunk reader cuts off only a row that begins the chunk and is longer than the longest
    // row.
    if (!chunk_.last) {
        fail(rowBegin_, "the row is longer than " + std::to_string(end_ - rowBegin_) +
                            " bytes; is there a quote that is never closed?");
    }
}

void RowParser::fail(const char* at, const std::string& message) const {
    uint64_t line = line_;
    uint64_t column = 1;
    for (const char* p = rowBegin_; p != at; ++p) {
        if (*p == '\n') {
            ++line;
            column = 1;
        } else if (beginsCharacter(*p)) {
            ++column;
        }
    }
    throw MalformedRow{line, column, message};
}

}  // namespace tool
