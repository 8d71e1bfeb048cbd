// Elements of a delimited list, and column names: wide text that is upper-cased unless quoted.
#include "korv/text.h"
#include "text/letter_case.h"

namespace korv {
namespace {

constexpr wchar_t kQuote = L'"';

// Cuts one element out of a list and writes it, unbounded, to an output.
class ElementReader {
  public:
    ElementReader(const wchar_t* source, uint32_t start, wchar_t* output, uint32_t& length) noexcept
        : source_(source), at_(source + start), output_(output), length_(length) {}

    int32_t read(wchar_t delimiter) noexcept {
        length_ = 0;
        while (*at_ == L' ') ++at_;
        if (!*at_) return noElement;

        const bool quoted = *at_ == kQuote;
        if (quoted) append(*at_++);
        bool inside = quoted;
        bool closed = false;
        bool escaped = false;
        for (; *at_ && (inside || *at_ != delimiter); ++at_) {
            if (*at_ == kQuote && !escaped) {
                if (!inside) return strayQuote;
                append(kQuote);
                inside = false;
                closed = true;
            } else if (*at_ == L'\\' && !escaped) {
                escaped = true;
            } else {
                escaped = false;
                if (!closed) append(*at_);
            }
        }
        if (!closed) {
            while (length_ > 0 && output_[length_ - 1] == L' ') --length_;
        }
        output_[length_] = 0;
        if (!quoted) upperCase(output_, length_);
        return *at_ ? static_cast<int32_t>(at_ + 1 - source_) : lastElement;
    }

  private:
    static constexpr int32_t lastElement = -1;
    static constexpr int32_t noElement = -2;
    static constexpr int32_t strayQuote = -3;

    void append(wchar_t character) noexcept { output_[length_++] = character; }

    const wchar_t* source_;
    const wchar_t* at_;
    wchar_t* output_;
    uint32_t& length_;
};

// Whether a name opens with a quote and has another one within its first maxLength characters.
bool isQuoted(const wchar_t* name, int32_t maxLength) noexcept {
    if (*name != kQuote) return false;
    for (int32_t i = 1; i < maxLength && name[i]; ++i) {
        if (name[i] == kQuote) return true;
    }
    return false;
}

}  // namespace
}  // namespace korv

int32_t KORV_GetNextElement(const wchar_t* source, wchar_t* output, uint32_t* length,
                            wchar_t delimiter, uint32_t /*ignored*/, uint32_t start) {
    return korv::ElementReader(source, start, output, *length).read(delimiter);
}

int32_t NormalizeColName(wchar_t* name, int32_t maxLength) {
    if (!korv::isQuoted(name, maxLength)) KORV_StrToWUpper(name);
    return KORV_SUCCESS;
}
