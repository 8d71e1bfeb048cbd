// Temporary file, rename, and removal when the program is interrupted.
#include "host/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "host/host_error.h"

namespace host {

namespace {

// What a signal has to remove; there is one output in a process.
char gTemporary[4096];

void removeAndDie(int signal) {
    if (gTemporary[0] != '\0') ::unlink(gTemporary);
    ::signal(signal, SIG_DFL);
    ::raise(signal);
}

void watch(const std::string& temporary) {
    if (temporary.size() >= sizeof gTemporary) return;
    std::memcpy(gTemporary, temporary.c_str(), temporary.size() + 1);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) ::signal(signal, removeAndDie);
}

mode_t modeOfNewFiles() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

}  // namespace

OutputFile::OutputFile(const std::string& path) : path_(path) {
    if (path == "-") {
        path_ = "standard output";
        descriptor_ = STDOUT_FILENO;
        return;
    }
    struct stat status;
    const bool exists = ::stat(path.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode)) {
        descriptor_ = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
        if (descriptor_ < 0) fail();
        return;
    }
    const std::string pattern = path + ".XXXXXX";
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    descriptor_ = ::mkostemp(name.data(), O_CLOEXEC);
    if (descriptor_ < 0) fail();
    temporary_ = name.data();
    watch(temporary_);
    ::fchmod(descriptor_, exists ? status.st_mode & 07777 : modeOfNewFiles());
}

OutputFile::~OutputFile() {
    if (descriptor_ >= 0 && descriptor_ != STDOUT_FILENO) ::close(descriptor_);
    if (!temporary_.empty()) {
        ::unlink(temporary_.c_str());
        gTemporary[0] = '\0';
    }
}

void OutputFile::write(const char* bytes, size_t count) {
    while (count > 0) {
        const ssize_t written = ::write(descriptor_, bytes, count);
        if (written < 0) {
            if (errno == EINTR) continue;
            fail();
        }
        bytes += written;
        count -= static_cast<size_t>(written);
    }
}

void OutputFile::commit() {
    if (descriptor_ == STDOUT_FILENO) return;
    const int descriptor = descriptor_;
    descriptor_ = -1;
    if (::close(descriptor) != 0) fail();
    if (temporary_.empty()) return;
    if (::rename(temporary_.c_str(), path_.c_str()) != 0) fail();
    gTemporary[0] = '\0';
    temporary_.clear();
}

void OutputFile::fail() const {
    throw HostError(path_ + ": " + std::strerror(errno));
}

}  // namespace host
