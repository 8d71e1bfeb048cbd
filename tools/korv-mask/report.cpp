// Writing of the report.
#include "report.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <new>

#include "tool_error.h"

namespace tool {

Report::Report(const std::string& path) : path_(path), file_(stderr) {
    if (path.empty()) return;
    int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    isNew_ = descriptor >= 0;
    // A file that is there, or a link that leads nowhere yet.
    if (!isNew_) descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    if (descriptor < 0) fail();
    file_ = ::fdopen(descriptor, "w");
    if (file_ == nullptr) {
        ::close(descriptor);
        throw std::bad_alloc();
    }
}

Report::~Report() {
    if (file_ != stderr) std::fclose(file_);
}

int Report::descriptor() const {
    return file_ == stderr ? -1 : ::fileno(file_);
}

void Report::start() {
    // What is not a regular file, such as /dev/null, need not be emptied.
    if (file_ != stderr && ::ftruncate(::fileno(file_), 0) != 0 && errno != EINVAL) fail();
}

void Report::addError(const std::string& line) {
    if (++lines_ <= kMostLines) print(line);
}

void Report::finish(const std::string& conclusion) {
    if (lines_ > kMostLines) {
        print(std::to_string(lines_ - kMostLines) + " more errors are left out");
    }
    if (!conclusion.empty()) print(conclusion);
    if (std::fflush(file_) != 0) fail();
}

void Report::print(const std::string& line) {
    if (file_ == stderr && beforeLine_) beforeLine_();
    if (std::fprintf(file_, "%s\n", line.c_str()) < 0) fail();
}

void Report::fail() const {
    throw ToolError("korv-mask: " + (path_.empty() ? "standard error" : path_) + ": " +
                    std::strerror(errno));
}

}  // namespace tool
