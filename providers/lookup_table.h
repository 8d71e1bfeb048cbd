// The lines `value = replacement` of a lookup file, found by value without regard to case.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "providers/value_text.h"

namespace provider {

class LookupTable {
  public:
    enum ErrorCode : uint32_t { kBadLine = 2, kTwice };

    // Reads a lookup file. Throws Error.
    explicit LookupTable(const std::wstring& path);

    // The replacement of a value in lower case, or nullptr.
    template <class Char>
    const Replacement* find(std::basic_string_view<Char> lowered) const {
        const auto entry = replacements_.find(lowered);
        return entry == replacements_.end() ? nullptr : &entry->second;
    }

  private:
    // Narrow (ASCII) and wide texts of the same characters have the same hash and are equal.
    struct Hash {
        using is_transparent = void;
        size_t operator()(std::string_view text) const { return hash(text); }
        size_t operator()(std::wstring_view text) const { return hash(text); }

        // FNV-1a with a character in the place of a byte; its high bits are mixed into the low
        // ones.
        template <class Char>
        static size_t hash(std::basic_string_view<Char> text) {
            uint32_t state = 0x811C9DC5u;
            for (const Char c : text) state = (state ^ static_cast<uint32_t>(c)) * 0x01000193u;
            return state ^ state >> 16;
        }
    };
    struct Equal {
        using is_transparent = void;
        bool operator()(std::wstring_view a, std::wstring_view b) const { return a == b; }
        bool operator()(std::string_view a, std::wstring_view b) const {
            return std::equal(a.begin(), a.end(), b.begin(), b.end());
        }
        bool operator()(std::wstring_view a, std::string_view b) const { return (*this)(b, a); }
    };

    void add(const std::wstring& path, const std::string& line, int32_t number);

    std::unordered_map<std::wstring, Replacement, Hash, Equal> replacements_;
};

}  // namespace provider
