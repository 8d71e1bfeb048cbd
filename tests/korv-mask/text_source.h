// A byte source over a string that hands out a chosen number of bytes at a time.
#pragma once

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "byte_source.h"

class TextSource : public tool::ByteSource {
  public:
    // At the end of the text, a `fault` is thrown as MalformedInput.
    explicit TextSource(std::string text, size_t atOnce = SIZE_MAX, std::string fault = "")
        : text_(std::move(text)), atOnce_(atOnce), fault_(std::move(fault)) {}

    size_t read(char* buffer, size_t capacity) override {
        const size_t count = std::min({capacity, atOnce_, text_.size() - at_});
        if (count == 0 && !fault_.empty()) throw tool::MalformedInput(fault_);
        std::memcpy(buffer, text_.data() + at_, count);
        at_ += count;
        return count;
    }

  private:
    std::string text_;
    size_t atOnce_;
    std::string fault_;
    size_t at_ = 0;
};
