// The CSV reader of the example with any buffer and any source, against a reader of the whole text.
#include "host/csv_reader.h"

#include "host/host_error.h"
#include "support/expect.h"
#include "support/input.h"
#include "text_source.h"

namespace {

// What a reader makes of a text: its rows in one string, and at the end the message, if any.
struct Outcome {
    std::string rows;
    std::string raw;  // of the rows that were read
};

std::string mark(bool quoted, std::string_view field) {
    return (quoted ? "'" : "[") + std::string(field) + "]";
}

// Goes through the text character by character. What a row needs to be told from the next one must
// lie within its first `longest` bytes.
class WholeReader {
  public:
    WholeReader(const std::string& text, std::size_t longest) : text_(text), longest_(longest) {}

    Outcome read() {
        Outcome outcome;
        if (text_.starts_with("\xEF\xBB\xBF")) row_ = at_ = 3;
        try {
            while (row_ < text_.size()) {
                const std::string row = std::to_string(line_) + readRow();
                outcome.rows += row;
                outcome.raw += text_.substr(row_, at_ - row_);
                for (; row_ < at_; ++row_) line_ += text_[row_] == '\n';
            }
        } catch (const std::string& message) {
            outcome.rows += message;
        }
        return outcome;
    }

  private:
    static constexpr int end = -1;

    int peek() const {
        if (at_ - row_ >= longest_) {
            fail(row_, "the row is longer than " + std::to_string(longest_) +
                           " bytes; is there a quote that is never closed?");
        }
        return at_ < text_.size() ? static_cast<unsigned char>(text_[at_]) : end;
    }
    bool take(char expected) {
        if (peek() != static_cast<unsigned char>(expected)) return false;
        ++at_;
        return true;
    }

    std::string readRow() {
        std::string row;
        bool quoted;
        do {
            quoted = peek() == '"';
            row += mark(quoted, quoted ? readQuoted() : readPlain());
        } while (take(','));
        if (peek() == end) return row + "END ";
        if (take('\n')) return row + "LF ";
        if (peek() == 0) fail(at_, "a NUL byte");
        if (take('\r')) {
            if (take('\n')) return row + "CRLF ";
            fail(at_ - 1, "a carriage return without line feed");
        }
        fail(at_, quoted ? "text behind a closing quote"
                         : "a quote in a field that does not begin with one");
    }
    std::string readPlain() {
        const std::size_t begin = at_;
        while (peek() != end &&
               std::string_view(",\"\r\n\0", 5).find(text_[at_]) == std::string_view::npos) {
            ++at_;
        }
        return text_.substr(begin, at_ - begin);
    }
    std::string readQuoted() {
        const std::size_t begin = at_++;
        std::string field;
        while (!take('"') || peek() == '"') {
            if (peek() == end) fail(begin, "a quote that is never closed");
            if (peek() == 0) fail(at_, "a NUL byte");
            field += text_[at_++];
        }
        return field;
    }

    [[noreturn]] void fail(std::size_t at, const std::string& message) const {
        uint64_t line = line_, column = 1;
        for (std::size_t i = row_; i < at; ++i) {
            const auto byte = static_cast<unsigned char>(text_[i]);
            column = byte == '\n' ? 1 : column + (byte < 0x80 || byte >= 0xC0);
            line += byte == '\n';
        }
        throw "in.csv:" + std::to_string(line) + ":" + std::to_string(column) + ": " + message;
    }

    const std::string& text_;
    std::size_t longest_;
    std::size_t row_ = 0, at_ = 0;
    uint64_t line_ = 1;
};

Outcome readInParts(const std::string& text, std::size_t atOnce, std::size_t bufferSize,
                    std::size_t longest) {
    TextSource source(text, atOnce);
    host::CsvReader reader(source, "in.csv", bufferSize, longest);
    Outcome outcome;
    try {
        while (reader.next()) {
            outcome.raw += reader.rawRow();
            outcome.raw += reader.lineEnd();
            outcome.rows += std::to_string(reader.line());
            for (host::CsvField& field : reader.fields()) {
                const std::string_view value = host::CsvReader::text(field);
                FUZZ_EXPECT(value.data()[value.size()] == '\0');
                outcome.rows += mark(field.quoted, value);
            }
            outcome.rows += reader.lineEnd() == "\r\n" ? "CRLF "
                            : reader.lineEnd() == "\n" ? "LF "
                                                       : "END ";
        }
        FUZZ_EXPECT(reader.hasByteOrderMark() == text.starts_with("\xEF\xBB\xBF"));
        FUZZ_EXPECT(!reader.next());
    } catch (const host::HostError& error) {
        outcome.rows += error.what();
    }
    return outcome;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::size_t atOnce = input.byte() + 1u, bufferSize = input.byte() + 1u;
    // A reader looks for a byte order mark of three bytes first.
    const std::size_t longest = std::max<std::size_t>({bufferSize, input.number<uint16_t>(), 3});
    std::string text;
    while (!input.empty()) text += static_cast<char>(input.byte());
    const Outcome expected = WholeReader(text, longest).read();
    const Outcome outcome = readInParts(text, atOnce, bufferSize, longest);
    FUZZ_EXPECT(outcome.rows == expected.rows);
    FUZZ_EXPECT(outcome.raw == expected.raw);
    return 0;
}
