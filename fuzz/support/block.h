// Blocks of the heap that hold exactly their elements: the address sanitizer sees each access past
// the end, and what is written before the start is found here.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>

#include "support/expect.h"

namespace fuzz {

template <class T>
class Block {
  public:
    // Marked elements. `shift` further ones in front of them change the alignment.
    explicit Block(std::size_t count, std::size_t shift = 0)
        : count_(count),
          shift_(shift),
          block_(static_cast<char*>(std::malloc(std::max<std::size_t>(1, bytes(shift + count))))) {
        FUZZ_EXPECT(block_);
        std::memset(block_, mark, bytes(shift + count));
    }
    explicit Block(std::span<const T> values, std::size_t shift = 0) : Block(values.size(), shift) {
        if (!values.empty()) std::memcpy(data(), values.data(), values.size_bytes());
    }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    ~Block() {
        const bool intact =
            std::all_of(block_, block_ + bytes(shift_), [](char byte) { return byte == mark; });
        FUZZ_EXPECT(intact);
        std::free(block_);
    }

    T* data() { return reinterpret_cast<T*>(block_ + bytes(shift_)); }
    T& operator[](std::size_t i) { return data()[i]; }
    std::size_t size() const { return count_; }

    bool holds(std::span<const T> values) {
        return values.size() == count_ && std::equal(values.begin(), values.end(), data());
    }

    // What each byte is before anything is written.
    static constexpr char mark = 0x5C;

  private:
    static std::size_t bytes(std::size_t count) { return count * sizeof(T); }

    std::size_t count_;
    std::size_t shift_;
    char* block_;
};

// A text with its terminator.
template <class Char>
std::span<const Char> terminated(const std::basic_string<Char>& text) {
    return {text.c_str(), text.size() + 1};
}

}  // namespace fuzz
