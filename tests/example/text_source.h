// A byte source over a string that hands out a chosen number of bytes at a time.
#pragma once

#include <algorithm>
#include <cstring>
#include <string>

#include "host/byte_source.h"

class TextSource : public host::ByteSource {
  public:
    explicit TextSource(std::string text, size_t atOnce = SIZE_MAX)
        : text_(std::move(text)), atOnce_(atOnce) {}

    size_t read(char* buffer, size_t capacity) override {
        const size_t count = std::min({capacity, atOnce_, text_.size() - at_});
        std::memcpy(buffer, text_.data() + at_, count);
        at_ += count;
        return count;
    }

  private:
    std::string text_;
    size_t atOnce_;
    size_t at_ = 0;
};
