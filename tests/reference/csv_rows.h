// The rows of a CSV text, read character by character.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace reference {

// What a reader makes of a text.
struct CsvRows {
    // For each row: its line, its fields ('quoted] or [not quoted]) and its line end; then the
    // message where the text is malformed.
    std::string rows;
    // The rows as they are in the text.
    std::string raw;

    void addField(bool quoted, std::string_view text) {
        rows += quoted ? '\'' : '[';
        rows += text;
        rows += ']';
    }
    void addLineEnd(std::string_view lineEnd) {
        rows += lineEnd == "\r\n" ? "CRLF " : lineEnd == "\n" ? "LF " : "END ";
    }
    void addMessage(uint64_t line, uint64_t column, const std::string& message) {
        rows += std::to_string(line) + ":" + std::to_string(column) + ": " + message;
    }

    bool operator==(const CsvRows&) const = default;
};

// A row that ends, with its line end, within its first `longest` bytes is not too long. `fault` is
// the message of an input that cannot be read on after the text.
class CsvReader {
  public:
    CsvReader(std::string text, char delimiter, std::size_t longest, std::string fault = "")
        : text_(std::move(text)),
          delimiter_(delimiter),
          longest_(longest),
          fault_(std::move(fault)) {}

    CsvRows read() {
        if (text_.starts_with("\xEF\xBB\xBF")) row_ = at_ = 3;
        try {
            while (row_ < text_.size() || !fault_.empty()) readRow();
        } catch (const Malformed& malformed) {
            uint64_t line = line_, column = 1;
            for (std::size_t i = row_; i < malformed.at; ++i) {
                const auto byte = static_cast<unsigned char>(text_[i]);
                column = byte == '\n' ? 1 : column + (byte < 0x80 || byte >= 0xC0);
                line += byte == '\n';
            }
            result_.addMessage(line, column, malformed.message);
        }
        return result_;
    }

  private:
    static constexpr int end = -1;
    struct Malformed {
        std::size_t at;
        std::string message;
    };

    int peek() const {
        if (at_ == text_.size()) {
            if (!fault_.empty()) throw Malformed{at_, fault_};
            return end;
        }
        if (at_ - row_ >= longest_) {
            throw Malformed{row_, "the row is longer than " + std::to_string(longest_) +
                                      " bytes; is there a quote that is never closed?"};
        }
        return static_cast<unsigned char>(text_[at_]);
    }
    bool take(char expected) {
        if (peek() != static_cast<unsigned char>(expected)) return false;
        ++at_;
        return true;
    }

    void readRow() {
        CsvRows row;
        row.rows = std::to_string(line_);
        bool quoted;
        do {
            quoted = peek() == '"';
            row.addField(quoted, quoted ? readQuoted() : readPlain());
        } while (take(delimiter_));
        row.addLineEnd(readLineEnd(quoted));
        result_.rows += row.rows;
        result_.raw += text_.substr(row_, at_ - row_);
        for (; row_ < at_; ++row_) line_ += text_[row_] == '\n';
    }
    std::string_view readLineEnd(bool quoted) {
        if (peek() == end) return "";
        if (take('\n')) return "\n";
        if (peek() == 0) throw Malformed{at_, "a NUL byte"};
        if (take('\r')) {
            if (take('\n')) return "\r\n";
            throw Malformed{at_ - 1, "a carriage return without line feed"};
        }
        throw Malformed{at_, quoted ? "text after a closing quote"
                                    : "a quote in a field that does not begin with one"};
    }
    std::string readPlain() {
        const std::size_t begin = at_;
        while (peek() != end && peek() != delimiter_ && peek() != '"' && peek() != '\n' &&
               peek() != '\r' && peek() != 0) {
            ++at_;
        }
        return text_.substr(begin, at_ - begin);
    }
    std::string readQuoted() {
        const std::size_t begin = at_++;
        std::string field;
        while (!take('"') || peek() == '"') {
            if (peek() == end) throw Malformed{begin, "a quote that is never closed"};
            if (peek() == 0) throw Malformed{at_, "a NUL byte"};
            field += text_[at_++];
        }
        return field;
    }

    std::string text_;
    char delimiter_;
    std::size_t longest_;
    std::string fault_;
    CsvRows result_;
    std::size_t row_ = 0, at_ = 0;
    uint64_t line_ = 1;
};

}  // namespace reference
