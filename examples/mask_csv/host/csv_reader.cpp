// The CSV reader: a row that the buffer holds only in part is read again once more has arrived.
#include "host/csv_reader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "host/host_error.h"

namespace host {

namespace {

constexpr std::array<bool, 256> tableOf(std::string_view characters) {
    std::array<bool, 256> table{};
    for (const char c : characters) table[static_cast<unsigned char>(c)] = true;
    return table;
}

constexpr auto kEndsUnquoted = tableOf(std::string_view(",\"\r\n\0", 5));
constexpr auto kEndsQuoted = tableOf(std::string_view("\"\n\0", 3));

char* scan(char* p, const char* end, const std::array<bool, 256>& stops) {
    while (p != end && !stops[static_cast<unsigned char>(*p)]) ++p;
    return p;
}

bool beginsCharacter(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
}

}  // namespace

CsvReader::CsvReader(ByteSource& source, std::string name, size_t bufferSize, size_t longestRow)
    : source_(source),
      name_(std::move(name)),
      longestRow_(longestRow),
      buffer_(std::max<size_t>(bufferSize, 1) + 1),
      begin_(buffer_.data()),
      next_(begin_),
      end_(begin_) {}

bool CsvReader::next() {
    line_ += linesInRow_;
    linesInRow_ = 0;
    begin_ = next_;
    if (!started_) {
        started_ = true;
        while (!ended_ && end_ - begin_ < 3) fill();
        if (end_ - begin_ >= 3 && std::memcmp(begin_, "\xEF\xBB\xBF", 3) == 0) {
            hasByteOrderMark_ = true;
            begin_ += 3;
        }
    }
    for (;;) {
        if (begin_ == end_ && ended_) {
            next_ = begin_;  // the buffer may have moved since the last row
            return false;
        }
        if (parseRow()) return true;
        fill();
    }
}

// Moves the row to the front of the buffer and fills the rest of it, which first grows when the row
// takes all of it.
void CsvReader::fill() {
    const size_t held = static_cast<size_t>(end_ - begin_);
    if (held + 1 == buffer_.size() && begin_ == buffer_.data()) {
        if (held >= longestRow_) {
            fail(begin_, "the row is longer than " + std::to_string(longestRow_) +
                             " bytes; is there a quote that is never closed?");
        }
        buffer_.resize(std::min(buffer_.size() * 2, longestRow_ + 1));
        begin_ = buffer_.data();
    } else {
        std::memmove(buffer_.data(), begin_, held);
        begin_ = buffer_.data();
    }
    end_ = begin_ + held;
    char* const limit = buffer_.data() + buffer_.size() - 1;
    while (end_ != limit) {
        size_t count = 0;
        try {
            count = source_.read(end_, static_cast<size_t>(limit - end_));
        } catch (const MalformedInput& error) {
            fail(end_, error.what());
        }
        ended_ = count == 0;
        if (ended_) return;
        end_ += count;
    }
}

// Reads the row at begin_; false when more input is needed to tell where it ends.
bool CsvReader::parseRow() {
    fields_.clear();
    linesInRow_ = 0;
    char* p = begin_;
    for (;;) {
        CsvField field{p, 0, false, false};
        if (p != end_ && *p == '"') {
            if (!parseQuoted(p, field)) return false;
        } else {
            p = scan(p, end_, kEndsUnquoted);
        }
        if (p == end_ && !ended_) return false;
        field.length = static_cast<uint32_t>(p - field.raw);
        fields_.push_back(field);

        if (p == end_) {
            lineEnd_ = "";
            next_ = p;
            return true;
        }
        switch (*p) {
            case ',':
                ++p;
                break;
            case '\n':
                lineEnd_ = "\n";
                next_ = p + 1;
                ++linesInRow_;
                return true;
            case '\r':
                if (p + 1 == end_ && !ended_) return false;
                if (p + 1 == end_ || p[1] != '\n') fail(p, "a carriage return without line feed");
                lineEnd_ = "\r\n";
                next_ = p + 2;
                ++linesInRow_;
                return true;
            case '\0':
                fail(p, "a NUL byte");
            default:
                fail(p, field.quoted ? "text behind a closing quote"
                                     : "a quote in a field that does not begin with one");
        }
    }
}

bool CsvReader::parseQuoted(char*& p, CsvField& field) {
    field.quoted = true;
    ++p;
    for (;;) {
        p = scan(p, end_, kEndsQuoted);
        if (p == end_) {
            if (ended_) fail(field.raw, "a quote that is never closed");
            return false;
        }
        if (*p == '\0') fail(p, "a NUL byte");
        if (*p++ == '\n') {
            ++linesInRow_;
            continue;
        }
        if (p == end_) return ended_;
        if (*p != '"') return true;
        field.doubled = true;
        ++p;
    }
}

std::string_view CsvReader::rawRow() const {
    return {begin_, static_cast<size_t>(next_ - begin_) - lineEnd_.size()};
}

std::string_view CsvReader::text(CsvField& field) {
    if (!field.quoted) {
        field.raw[field.length] = '\0';
        return {field.raw, field.length};
    }
    char* const first = field.raw + 1;
    char* last = field.raw + field.length - 1;
    if (field.doubled) {
        char* target = first;
        for (const char* p = first; p != last; ++p) {
            *target++ = *p;
            if (*p == '"') ++p;
        }
        last = target;
    }
    *last = '\0';
    return {first, static_cast<size_t>(last - first)};
}

void CsvReader::fail(const char* at, const std::string& message) const {
    uint64_t line = line_;
    uint64_t column = 1;
    for (const char* p = begin_; p != at; ++p) {
        if (*p == '\n') {
            ++line;
            column = 1;
        } else if (beginsCharacter(*p)) {
            ++column;
        }
    }
    throw HostError(name_, line, column, message);
}

}  // namespace host
