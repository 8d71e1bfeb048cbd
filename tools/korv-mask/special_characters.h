// Finds the characters that have a meaning in CSV, 64 characters at a time.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace tool {

struct Dialect {
    char delimiter = ',';  // an ASCII character other than NUL, LF, CR and the quote
    bool header = true;    // the first row holds the names of the columns
};

inline bool isSpecial(char c, char delimiter) {
    return c == delimiter || c == '"' || c == '\n' || c == '\r' || c == '\0';
}

// Bit i of a mask stands for character i of the block.
inline constexpr size_t kBlockSize = 64;

// The mask of the first `count` characters of a block, all of them when there are fewer in it.
inline uint64_t firstInBlock(size_t count) {
    return count < kBlockSize ? (uint64_t{1} << count) - 1 : ~uint64_t{0};
}

// Compares character by character: for processors without SSE2, and for the tests.
class PlainBlock {
  public:
    explicit PlainBlock(const char* from) : from_(from) {}

    uint64_t equalTo(char c) const {
        return where([c](char each) { return each == c; });
    }
    uint64_t special(char delimiter) const {
        return where([delimiter](char each) { return isSpecial(each, delimiter); });
    }

  private:
    template <class Test>
    uint64_t where(Test test) const {
        uint64_t mask = 0;
        for (size_t i = 0; i < kBlockSize; ++i) mask |= uint64_t{test(from_[i])} << i;
        return mask;
    }

    const char* from_;
};

#ifdef __SSE2__

class Sse2Block {
  public:
    explicit Sse2Block(const char* from)
        : parts_{load(from), load(from + 16), load(from + 32), load(from + 48)} {}

    // Where the character is `c`.
    uint64_t equalTo(char c) const {
        return where([c](__m128i part) { return _mm_cmpeq_epi8(part, _mm_set1_epi8(c)); });
    }

    // Where the delimiter, a quote, LF, CR or NUL is.
    uint64_t special(char delimiter) const {
        return where([delimiter](__m128i part) {
            const auto is = [part](char c) { return _mm_cmpeq_epi8(part, _mm_set1_epi8(c)); };
            const __m128i lineEnd = _mm_or_si128(is('\n'), is('\r'));
            const __m128i inField = _mm_or_si128(is('"'), is('\0'));
            return _mm_or_si128(is(delimiter), _mm_or_si128(lineEnd, inField));
        });
    }

  private:
    static __m128i load(const char* from) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    }

    template <class Test>
    uint64_t where(Test test) const {
        const auto bits = [&](int part) {
            return uint64_t{static_cast<uint16_t>(_mm_movemask_epi8(test(parts_[part])))};
        };
        return bits(0) | bits(1) << 16 | bits(2) << 32 | bits(3) << 48;
    }

    __m128i parts_[4];
};

using Block = Sse2Block;

#else

using Block = PlainBlock;

#endif

// Goes through the special characters of a range. Reads up to 63 characters after its end, which
// must be readable; their contents do not matter.
class SpecialCharacters {
  public:
    SpecialCharacters(const char* begin, const char* end, char delimiter)
        : block_(begin), end_(end), delimiter_(delimiter), mask_(maskOfBlock()) {}

    // The next special character, or the end of the range.
    const char* next() {
        if (mask_ == 0 && !advance()) return end_;
        const char* const found = block_ + std::countr_zero(mask_);
        mask_ &= mask_ - 1;
        return found;
    }

  private:
    // Moves to the next block that has a special character; false at the end.
    bool advance() {
        while (mask_ == 0) {
            if (static_cast<size_t>(end_ - block_) <= kBlockSize) return false;
            block_ += kBlockSize;
            mask_ = maskOfBlock();
        }
        return true;
    }
    uint64_t maskOfBlock() const {
        if (block_ == end_) return 0;
        return Block(block_).special(delimiter_) & firstInBlock(static_cast<size_t>(end_ - block_));
    }

    const char* block_;
    const char* end_;
    char delimiter_;
    uint64_t mask_;
};

}  // namespace tool
