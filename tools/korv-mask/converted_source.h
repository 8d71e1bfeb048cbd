// An input in another encoding, converted to UTF-8 through wide text.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "byte_source.h"

namespace tool {

class ConvertedSource : public ByteSource {
  public:
    size_t read(char* buffer, size_t capacity) final;

  protected:
    // Calls append() or end() at least once, or neither when there is no text to append yet.
    virtual void convertMore() = 0;

    // Appends to the text that read() returns. The parser refuses a NUL byte wherever it is, so the
    // input ends after the first zero character.
    void append(const wchar_t* wide, size_t characters);

    // The input ends after what has been appended: with an error unless the message is empty.
    void end(std::string message = "");

  private:
    std::vector<char> utf8_;
    size_t begin_ = 0;
    size_t end_ = 0;
    bool ended_ = false;
    std::string fault_;
};

}  // namespace tool
