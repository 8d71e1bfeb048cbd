// Comparison without regard to case, with the pair of characters that it remembers.
#pragma once

#include <wctype.h>

#include <cstdint>

namespace slow {

inline wint_t (*const volatile systemLower)(wint_t) = towlower;

inline uint32_t lower(wchar_t c) {
    return systemLower(static_cast<wint_t>(c));
}

// The slow way, one object for each function and thread.
struct Comparison {
    uint32_t pair[2] = {0, 0};

    int32_t ended(wchar_t first, wchar_t second) const {
        if (first == 0 && second == 0) return 0;
        return static_cast<int32_t>(first == 0 ? 0u - pair[1] : pair[0]);
    }
    int32_t compare(const wchar_t* first, const wchar_t* second) {
        while (*first != 0 && *second != 0) {
            pair[0] = lower(*first);
            pair[1] = lower(*second);
            if (pair[0] != pair[1]) return static_cast<int32_t>(pair[0] - pair[1]);
            ++first;
            ++second;
        }
        return ended(*first, *second);
    }
    int32_t compareCounted(const wchar_t* first, const wchar_t* second, int32_t count) {
        while (*first != 0 && *second != 0 && count > 0) {
            pair[0] = lower(*first);
            pair[1] = lower(*second);
            if (pair[0] != pair[1]) return static_cast<int32_t>(pair[0] - pair[1]);
            ++first;
            ++second;
            --count;
        }
        if (count == 0) return 0;
        return ended(*first, *second);
    }
};

}  // namespace slow
