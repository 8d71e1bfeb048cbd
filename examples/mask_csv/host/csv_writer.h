// Writes CSV through one buffer: raw stretches of the input as they are, and new fields.
#pragma once

#include <cstring>
#include <string_view>
#include <vector>

#include "host/output_file.h"

namespace host {

class CsvWriter {
  public:
    static constexpr size_t kBufferSize = 128 * 1024;

    explicit CsvWriter(OutputFile& file, size_t bufferSize = kBufferSize)
        : file_(file), buffer_(bufferSize) {}

    void append(const char* bytes, size_t count) {
        if (count > buffer_.size() - used_) {
            flush();
            if (count > buffer_.size()) return file_.write(bytes, count);
        }
        std::memcpy(buffer_.data() + used_, bytes, count);
        used_ += count;
    }
    void append(std::string_view bytes) { append(bytes.data(), bytes.size()); }

    // A field with this text; it is quoted when it must be, or when `quote` asks for it.
    void appendField(std::string_view text, bool quote);

    void flush();

  private:
    OutputFile& file_;
    std::vector<char> buffer_;
    size_t used_ = 0;
};

}  // namespace host
