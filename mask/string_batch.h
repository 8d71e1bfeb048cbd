// Reading and writing of texts in the layout of Arrow's string arrays.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "korv/mask.h"
#include "text/copy_text.h"

namespace mask {

// A result that 32-bit offsets cannot address.
class TooLarge : public std::length_error {
  public:
    TooLarge() : std::length_error("too large") {}
};

class Strings {
  public:
    explicit Strings(const KorvMaskStrings& strings) : strings_(strings) {}

    // Whether the values can be read: offsets ascend, and no value is above `longest` bytes.
    // `tooLong` tells the two faults apart.
    bool isReadable(int64_t longest, bool& tooLong) const;

    uint64_t size() const { return strings_.count; }
    bool isNull(uint64_t index) const {
        if (strings_.validity == nullptr) return false;
        const uint64_t bit = strings_.first + index;
        return (strings_.validity[bit / 8] >> (bit % 8) & 1) == 0;
    }
    std::string_view operator[](uint64_t index) const {
        const int64_t begin = offset(index);
        return {strings_.bytes + begin, static_cast<size_t>(offset(index + 1) - begin)};
    }

  private:
    int64_t offset(uint64_t index) const {
        const uint64_t at = strings_.first + index;
        return strings_.offsetBits == 32 ? static_cast<const int32_t*>(strings_.offsets)[at]
                                         : static_cast<const int64_t*>(strings_.offsets)[at];
    }

    KorvMaskStrings strings_;
};

inline bool Strings::isReadable(int64_t longest, bool& tooLong) const {
    tooLong = false;
    if ((strings_.offsetBits != 32 && strings_.offsetBits != 64) || strings_.offsets == nullptr) {
        return false;
    }
    // So that no index overflows.
    constexpr uint64_t kMost = SIZE_MAX / 32;
    if (strings_.count > kMost || strings_.first > kMost) return false;
    int64_t before = offset(0);
    if (before < 0) return false;
    for (uint64_t i = 1; i <= strings_.count; ++i) {
        const int64_t next = offset(i);
        if (next < before) {
            tooLong = false;
            return false;
        }
        tooLong |= next - before > longest;
        before = next;
    }
    return !tooLong && (strings_.bytes != nullptr || before == offset(0));
}

// Collects the texts of a result.
class StringsBuilder {
  public:
    // Starts anew, for `count` values with offsets of `bits` bits.
    void start(size_t count, uint32_t bits) {
        bits_ = bits;
        count_ = 0;
        used_ = 0;
        hasNull_ = false;
        validity_.assign(count / 8 + 1, 0xFF);
        // A vector of the wider type is aligned for both.
        offsets_.resize(bits == 64 ? count + 1 : count / 2 + 1);
        putOffset();
    }
    // Throws TooLarge, std::bad_alloc.
    void append(std::string_view value) {
        if (value.size() > bytes_.size() - used_) grow(value.size());
        text::copyText(bytes_.data() + used_, value.data(), value.size());
        used_ += value.size();
        ++count_;
        putOffset();
    }
    void appendNull() {
        validity_[count_ / 8] &= static_cast<uint8_t>(~(1u << count_ % 8));
        hasNull_ = true;
        append({});
    }
    KorvMaskStrings strings() const {
        return {count_,        0,
                bits_,         offsets_.data(),
                bytes_.data(), hasNull_ ? validity_.data() : nullptr};
    }

  private:
    void grow(size_t more) { bytes_.resize(std::max(bytes_.size() * 2, used_ + more + 4096)); }
    void putOffset() {
        if (bits_ == 64) {
            offsets_[count_] = static_cast<int64_t>(used_);
            return;
        }
        if (used_ > INT32_MAX) throw TooLarge();
        const auto offset = static_cast<int32_t>(used_);
        std::memcpy(reinterpret_cast<char*>(offsets_.data()) + count_ * sizeof offset, &offset,
                    sizeof offset);
    }

    uint32_t bits_ = 32;
    size_t count_ = 0;
    size_t used_ = 0;
    bool hasNull_ = false;
    std::vector<char> bytes_;
    std::vector<int64_t> offsets_;
    std::vector<uint8_t> validity_;
};

}  // namespace mask
