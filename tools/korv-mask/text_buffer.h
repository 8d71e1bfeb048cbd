// A text that is written into room made beforehand. Unlike a string it checks no bounds.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

#include "text/copy_text.h"

namespace tool {

class TextBuffer {
  public:
    // Starts anew, with room for `capacity` characters.
    void start(size_t capacity) {
        if (capacity > capacity_ || memory_ == nullptr) {
            capacity_ = 0;
            memory_ = std::make_unique_for_overwrite<char[]>(capacity);
            capacity_ = capacity;
        }
        size_ = 0;
    }
    void append(const char* from, size_t length) {
        text::copyText(memory_.get() + size_, from, length);
        size_ += length;
    }
    void append(std::string_view text) { append(text.data(), text.size()); }
    void push_back(char c) { memory_[size_++] = c; }
    void resize(size_t smaller) { size_ = smaller; }

    const char* data() const { return memory_.get(); }
    size_t size() const { return size_; }
    std::string_view view() const { return {memory_.get(), size_}; }

  private:
    std::unique_ptr<char[]> memory_;
    size_t capacity_ = 0;
    size_t size_ = 0;
};

}  // namespace tool
