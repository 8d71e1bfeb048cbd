// One line of the rules, which is taken apart element by element.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "mask_error.h"
#include "text/utf8_text.h"

namespace mask {

inline constexpr const wchar_t* kBlanks = L" \t";

inline std::wstring withoutBlanks(const std::wstring& text) {
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == std::wstring::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

class RuleLine {
  public:
    struct Element {
        std::wstring text;  // without quotes and escapes; never empty
        bool quoted;
        bool delimited;     // a delimiter follows, not the end of the line
        uint32_t position;  // of its first character, from 1
    };

    // Throws MaskError for a line that is not text.
    RuleLine(const std::string& file, uint32_t number, std::string_view line)
        : file_(file), number_(number) {
        const size_t valid = text::validUtf8Length(line.data(), line.size());
        const size_t zero = line.find('\0');
        const size_t length = std::min(valid, zero);
        text_ = text::toWide(line.substr(0, length));
        if (zero < valid)
            fail(endPosition(), "the rules hold a NUL character; save them as UTF-8 text");
        if (valid < line.size())
            fail(endPosition(), "this is not UTF-8; save the rules as UTF-8 text");
    }

    // Whether there is more than blanks or a comment.
    bool hasRule() const {
        const size_t first = text_.find_first_not_of(kBlanks);
        return first != std::wstring::npos && text_[first] != L'#';
    }

    // Takes the next element; false when only blanks are left. `what` names it in messages.
    //
    // An element that begins with a double quote ends at the next one and may hold delimiters.
    // Any other element ends at the delimiter and loses its trailing blanks. In both a backslash
    // is dropped and makes a double quote or a backslash after it an ordinary character.
    // KORV_GetNextElement reads the same form, but puts elements without quotes in capitals.
    bool next(wchar_t delimiter, const std::string& what, Element& element) {
        at_ = std::min(text_.find_first_not_of(kBlanks, at_), text_.size());
        if (at_ == text_.size()) return false;
        element = {{}, text_[at_] == L'"', false, static_cast<uint32_t>(at_ + 1)};
        if (element.quoted) ++at_;
        bool closed = false;
        bool escaped = false;
        for (; at_ < text_.size(); ++at_) {
            const wchar_t c = text_[at_];
            if (c == delimiter && (closed || !element.quoted)) break;
            if (closed) {
                if (c == L' ' || c == L'\t') continue;
                fail(element.position, "text follows the closing double quote of " + what);
            }
            if (c == L'"' && !escaped) {
                if (!element.quoted) {
                    fail(element.position,
                         "a double quote inside " + what +
                             "; put all of it between double quotes, or write \\\"");
                }
                closed = true;
            } else if (c == L'\\' && !escaped) {
                escaped = true;
            } else {
                escaped = false;
                element.text += c;
            }
        }
        if (element.quoted && !closed) {
            fail(element.position, "the closing double quote of " + what + " is missing");
        }
        if (!element.quoted) element.text.erase(element.text.find_last_not_of(kBlanks) + 1);
        if (element.text.empty()) fail(element.position, what + " is empty");
        element.delimited = at_ < text_.size();
        if (element.delimited) ++at_;
        return true;
    }

    [[noreturn]] void fail(uint32_t position, const std::string& message) const {
        throw MaskError(KORV_MASK_BAD_RULES, file_, number_, position, message);
    }

    uint32_t number() const { return number_; }
    // Where an element was expected and the line has ended.
    uint32_t endPosition() const { return static_cast<uint32_t>(text_.size() + 1); }

  private:
    const std::string& file_;
    uint32_t number_;
    std::wstring text_;
    size_t at_ = 0;
};

}  // namespace mask
