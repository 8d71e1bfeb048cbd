// Takes the bytes of an input apart into choices, numbers and texts. Where they end, zeros follow.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace fuzz {

class Input {
  public:
    Input(const uint8_t* data, std::size_t size) : at_(data), end_(data + size) {}

    bool empty() const { return at_ == end_; }
    std::size_t left() const { return static_cast<std::size_t>(end_ - at_); }

    uint8_t byte() { return empty() ? 0 : *at_++; }

    // 0 to count - 1. The characters 0, 1, 2 ... choose these, so that inputs can be written by
    // hand.
    unsigned choice(unsigned count) { return static_cast<uint8_t>(byte() - '0') % count; }

    // Little-endian.
    template <class Number>
    Number number() {
        uint64_t bits = 0;
        for (std::size_t i = 0; i < sizeof(Number); ++i) bits |= uint64_t{byte()} << 8 * i;
        return static_cast<Number>(bits);
    }

    // A byte; of wide characters FE and FF are followed by a number of 16 and of 32 bits.
    template <class Char>
    Char character() {
        const uint8_t first = byte();
        if constexpr (sizeof(Char) == sizeof(uint32_t)) {
            if (first == 0xFE) return static_cast<Char>(number<uint16_t>());
            if (first == 0xFF) return static_cast<Char>(number<uint32_t>());
        }
        return static_cast<Char>(first);
    }

    // The characters up to a zero, which is taken, too.
    template <class Char>
    std::basic_string<Char> text() {
        std::basic_string<Char> text;
        while (const Char next = character<Char>()) text += next;
        return text;
    }

    // Up to `most` units, as they stand.
    template <class Unit>
    std::vector<Unit> units(std::size_t most = SIZE_MAX) {
        std::vector<Unit> units;
        while (units.size() < most && left() >= sizeof(Unit)) units.push_back(number<Unit>());
        return units;
    }

  private:
    const uint8_t* at_;
    const uint8_t* end_;
};

}  // namespace fuzz
