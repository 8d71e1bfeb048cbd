// Case conversion, comparison, and parsing of wide text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace reference {

// Char is char or wchar_t.
template <class Char>
Char* upper(Char* text);
uint32_t lower(wchar_t c);

// Comparison without regard to case, with the pair of characters that it remembers: one object for
// each function and thread.
struct Comparison {
    uint32_t pair[2] = {0, 0};

    int32_t compare(const wchar_t* first, const wchar_t* second);
    int32_t compareCounted(const wchar_t* first, const wchar_t* second, int32_t count);

  private:
    int32_t ended(wchar_t first, wchar_t second) const;
};

// The element of a list from `start` on. Returns what KORV_GetNextElement returns.
int32_t nextElement(const wchar_t* source, wchar_t* output, uint32_t* length, wchar_t delimiter,
                    uint32_t ignored, uint32_t start);

struct Element {
    int32_t result;
    std::wstring text;  // what the output holds, the terminator not counted
    bool terminated;
    std::size_t written;  // characters of the output that may have been written
};
Element elementOf(const std::wstring& list, wchar_t delimiter, std::size_t start);

// The source without the characters of a set, which ends up in `work`; the system's tokeniser says
// how the source is cut.
int32_t trim(wchar_t* source, uint32_t* length, const wchar_t* delimiters, wchar_t* work,
             uint8_t mode);

}  // namespace reference
