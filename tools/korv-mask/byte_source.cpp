// Reading of files and of standard input.
#include "byte_source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "tool_error.h"

namespace tool {

FileSource::FileSource(const std::string& path)
    : name_(path == "-" ? "standard input" : path),
      descriptor_(path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (descriptor_ < 0) throw ToolError("korv-mask: " + name_ + ": " + std::strerror(errno));
    struct stat status;
    if (::fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode)) {
        size_ = static_cast<uint64_t>(status.st_size);
    }
}

FileSource::~FileSource() {
    if (descriptor_ != STDIN_FILENO) ::close(descriptor_);
}

size_t FileSource::readDescriptor(char* buffer, size_t capacity) {
    for (;;) {
        const ssize_t count = ::read(descriptor_, buffer, capacity);
        if (count >= 0) {
            bytesRead_ += static_cast<uint64_t>(count);
            return static_cast<size_t>(count);
        }
        if (errno != EINTR) throw ToolError("korv-mask: " + name_ + ": " + std::strerror(errno));
    }
}

std::string_view FileSource::peek(size_t count) {
    while (peekedCount_ < std::min(count, sizeof peeked_)) {
        const size_t more =
            readDescriptor(peeked_ + peekedCount_, std::min(count, sizeof peeked_) - peekedCount_);
        if (more == 0) break;
        peekedCount_ += more;
    }
    return {peeked_, peekedCount_};
}

size_t FileSource::read(char* buffer, size_t capacity) {
    if (peekedCount_ == 0) return readDescriptor(buffer, capacity);
    const size_t count = std::min(capacity, peekedCount_);
    std::memcpy(buffer, peeked_, count);
    peekedCount_ -= count;
    std::memmove(peeked_, peeked_ + count, peekedCount_);
    return count;
}

}  // namespace tool
