// Decimal digits of a number, as wide text.
#pragma once

#include <cstdint>

namespace korv::datacnv {

// Holds the text of one number without a terminator: a 32-bit one has at most 10 digits and a sign.
class Decimal {
  public:
    template <class Int>
    // Of its text only what has been written is read.
    // cppcheck-suppress uninitMemberVar
    explicit Decimal(Int value, int leastDigits = 1) noexcept {
        const bool negative = static_cast<int64_t>(value) < 0;
        uint32_t magnitude = negative ? 0u - static_cast<uint32_t>(value) : value;
        for (int digits = 0; digits < leastDigits || magnitude != 0; ++digits) {
            *--begin_ = static_cast<wchar_t>(L'0' + magnitude % 10);
            magnitude /= 10;
        }
        if (negative) *--begin_ = L'-';
    }
    Decimal(const Decimal&) = delete;
    Decimal& operator=(const Decimal&) = delete;

    const wchar_t* text() const noexcept { return begin_; }
    uint32_t length() const noexcept { return static_cast<uint32_t>(text_ + kRoom - begin_); }

  private:
    static constexpr int kRoom = 11;
    wchar_t text_[kRoom];
    wchar_t* begin_ = text_ + kRoom;
};

}  // namespace korv::datacnv
