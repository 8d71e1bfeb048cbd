// Where the bytes of the input come from: a file or standard input, or a conversion of either.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tool {

// The input is not valid in its encoding. The position is where the bytes end that were read
// before.
class MalformedInput : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

class ByteSource {
  public:
    virtual ~ByteSource() = default;

    // Reads up to `capacity` bytes, and returns their number; 0 means the end of the input.
    virtual size_t read(char* buffer, size_t capacity) = 0;
};

class FileSource : public ByteSource {
  public:
    // "-" is standard input. Throws ToolError.
    explicit FileSource(const std::string& path);
    ~FileSource() override;
    FileSource(const FileSource&) = delete;
    FileSource& operator=(const FileSource&) = delete;

    size_t read(char* buffer, size_t capacity) override;

    // The first bytes, at most `count` of up to 4; read() returns them again.
    std::string_view peek(size_t count);

    const std::string& name() const { return name_; }
    uint64_t bytesRead() const { return bytesRead_; }
    // The size of a regular file, otherwise 0.
    uint64_t size() const { return size_; }
    // For fstat(), which tells whether another name leads to the same file.
    int descriptor() const { return descriptor_; }

  private:
    size_t readDescriptor(char* buffer, size_t capacity);

    std::string name_;
    int descriptor_;
    uint64_t size_ = 0;
    uint64_t bytesRead_ = 0;
    char peeked_[4] = {};
    size_t peekedCount_ = 0;
};

}  // namespace tool
