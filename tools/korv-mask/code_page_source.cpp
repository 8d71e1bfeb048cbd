// Conversion of code pages, and the names of encodings.
#include "code_page_source.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string_view>
#include <utility>

#include "text/utf8_text.h"
#include "tool_error.h"
#include "utf16_source.h"

namespace tool {

namespace {

constexpr wchar_t kNewLine = 0x85;  // NEL, the line end of EBCDIC

[[noreturn]] void failUnknown(const std::string& name) {
    throw ToolError(
        "korv-mask: encoding '" + name +
        "' is unknown; use utf-8, utf-16, utf-16le, utf-16be, ascii, latin1, iso-8859-1 "
        "to iso-8859-15, windows-1250 to windows-1258, shift_jis, euc-jp, gb18030, or "
        "the number of a code page such as cp437 or ibm1047");
}

// Lower case, without hyphens and underscores.
std::string plainName(const std::string& name) {
    std::string plain;
    for (const char c : name) {
        if (c != '-' && c != '_') plain += c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    }
    return plain;
}

uint32_t codePageOf(const std::string& name) {
    constexpr struct {
        std::string_view name;
        uint32_t codePage;
    } kNamed[] = {
        {"utf8", text::kUtf8CodePage},
        {"utf16le", 1200},
        {"utf16be", 1201},
        {"utf32", 12000},
        {"utf32le", 12000},
        {"utf32be", 12001},
        {"ascii", 20127},
        {"usascii", 20127},
        {"latin1", 28591},
        {"shiftjis", 932},
        {"eucjp", 51932},
        {"gb18030", 54936},
    };
    constexpr struct {
        std::string_view prefix;
        uint32_t base;
        uint32_t most;
    } kNumbered[] = {
        {"iso8859", 28590, 15}, {"windows", 0, 99999}, {"cp", 0, 99999},
        {"ibm", 0, 99999},      {"", 0, 99999},
    };
    const std::string plain = plainName(name);
    for (const auto& named : kNamed) {
        if (plain == named.name) return named.codePage;
    }
    for (const auto& numbered : kNumbered) {
        if (!plain.starts_with(numbered.prefix)) continue;
        const char* const end = plain.data() + plain.size();
        uint32_t number = 0;
        const auto [stop, error] =
            std::from_chars(plain.data() + numbered.prefix.size(), end, number);
        if (error == std::errc() && stop == end && number <= numbered.most) {
            return numbered.base + number;
        }
    }
    failUnknown(name);
}

class UnconvertedSource : public ByteSource {
  public:
    explicit UnconvertedSource(ByteSource& source) : source_(source) {}
    size_t read(char* buffer, size_t capacity) override { return source_.read(buffer, capacity); }

  private:
    ByteSource& source_;
};

constexpr std::string_view kLittleEndianMark = "\xFF\xFE";
constexpr std::string_view kBigEndianMark = "\xFE\xFF";

std::unique_ptr<ByteSource> openUtf16(FileSource& file, bool bigEndian) {
    if (file.peek(2) == (bigEndian ? kBigEndianMark : kLittleEndianMark)) {
        char mark[2];
        file.read(mark, sizeof mark);
    }
    return std::make_unique<Utf16Source>(file, bigEndian);
}

}  // namespace

CodePageSource::CodePageSource(ByteSource& source, uint32_t codePage, const std::string& name,
                               size_t chunkSize, size_t longestLine)
    : source_(source),
      options_{{}, codePage, 0},
      name_(name),
      longestLine_(std::max<size_t>(longestLine, 1)),
      bytes_(std::clamp<size_t>(chunkSize, 1, longestLine_)) {
    // LF in ASCII, NEL and LF in EBCDIC.
    for (const char byte : {'\x0A', '\x15', '\x25'}) {
        bytes_[0] = byte;
        if (!widen(1) || wideCount_ != 1) continue;
        if (wide_[0] != L'\n' && wide_[0] != kNewLine) continue;
        lineEnds_ += byte;
        isEbcdic_ |= wide_[0] == kNewLine;
    }
    if (lineEnds_.empty()) {
        throw ToolError("korv-mask: encoding '" + name_ +
                        "' cannot be read: it has no line feed of one byte");
    }
}

void CodePageSource::convertMore() {
    const size_t length = readLines();
    const bool valid = widen(length);
    if (!valid) widen(validLength(length));
    if (isEbcdic_) {
        std::replace(wide_.begin(), wide_.begin() + static_cast<ptrdiff_t>(wideCount_), kNewLine,
                     L'\n');
    }
    append(wide_.data(), wideCount_);
    if (!valid) return end("the input is not valid " + name_);
    if (sourceEnded_) return end();

    std::copy(bytes_.begin() + static_cast<ptrdiff_t>(length),
              bytes_.begin() + static_cast<ptrdiff_t>(byteCount_), bytes_.begin());
    byteCount_ -= length;
}

// Reads until the buffer holds the end of a line, or the end of the input. Returns the number of
// bytes up to the last one.
size_t CodePageSource::readLines() {
    for (;;) {
        if (byteCount_ == bytes_.size()) {
            if (byteCount_ == longestLine_) {
                end("a line is longer than " + std::to_string(longestLine_) + " bytes");
                return 0;
            }
            bytes_.resize(std::min(bytes_.size() * 2, longestLine_));
        }
        char* const from = bytes_.data() + byteCount_;
        const size_t count = source_.read(from, bytes_.size() - byteCount_);
        byteCount_ += count;
        sourceEnded_ = count == 0;
        if (sourceEnded_) return byteCount_;
        const auto first = std::make_reverse_iterator(from + count);
        const auto last = std::make_reverse_iterator(from);
        const auto found = std::find_if(first, last, [this](char c) { return endsLine(c); });
        if (found != last) return static_cast<size_t>(found.base() - bytes_.data());
    }
}

// Converts the first `length` bytes to wide text; returns false when they are not valid.
bool CodePageSource::widen(size_t length) {
    wideCount_ = 0;
    if (length == 0) return true;
    if (wide_.size() < length + 1) wide_.resize(length + 1);
    const auto bytes = static_cast<uint32_t>(length);
    uint32_t characters = 0;
    const int32_t status = KORVCnvCharToWVarcharSz(
        bytes_.data(), &bytes, wide_.data(), static_cast<uint32_t>(wide_.size() * sizeof(wchar_t)),
        &characters, &options_);
    if (status == CNV_UNKNOWN_CODE_PAGE) failUnknown(name_);
    if (status == CNV_NO_MEMORY) {
        throw ToolError("korv-mask: encoding '" + name_ +
                        "': no memory or no file handle for the conversion");
    }
    if (status != CNV_SUCCESS) return false;
    wideCount_ = characters;
    return true;
}

// Returns how many of the first `length` bytes, which are not valid as a whole, precede the fault.
// Up to there the bytes are valid when they end between two characters. Characters have up to 4
// bytes, so one of 4 consecutive lengths is valid before the fault, and none after it.
size_t CodePageSource::validLength(size_t length) {
    constexpr size_t kLongestCharacter = 4;
    const auto lastValid = [this](size_t from, size_t to) {
        while (to > from && !widen(to)) --to;
        return to;
    };
    size_t valid = 0;
    while (length - valid > 2 * kLongestCharacter) {
        const size_t middle = valid + (length - valid) / 2;
        const size_t from = middle - kLongestCharacter;
        const size_t found = lastValid(from, middle);
        if (found == from) {
            length = from + 1;
        } else {
            valid = found;
        }
    }
    return lastValid(valid, length - 1);
}

std::unique_ptr<ByteSource> openAsUtf8(FileSource& file, const std::string& encoding) {
    const bool isUtf16 = plainName(encoding) == "utf16";
    if (isUtf16 || encoding.empty()) {
        const std::string_view mark = file.peek(2);
        if (mark == kLittleEndianMark || mark == kBigEndianMark) {
            return openUtf16(file, mark == kBigEndianMark);
        }
        if (isUtf16) {
            throw ToolError("korv-mask: " + file.name() +
                            ": there is no byte order mark; use the encoding utf-16le or utf-16be");
        }
        return std::make_unique<UnconvertedSource>(file);
    }
    const uint32_t codePage = codePageOf(encoding);
    switch (codePage) {
        case text::kUtf8CodePage:
        case 65001:
            return std::make_unique<UnconvertedSource>(file);
        case 1200:
        case 1201:
            return openUtf16(file, codePage == 1201);
        case 12000:
        case 12001:
            throw ToolError("korv-mask: encoding '" + encoding +
                            "' cannot be read; convert the input to UTF-8 first");
        default:
            return std::make_unique<CodePageSource>(file, codePage, encoding);
    }
}

}  // namespace tool
