// Temporary file, rename, and removal when the program is interrupted.
#include "host/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <utility>

#include "host/host_error.h"

namespace host {

namespace {

// What a signal has to remove; there is one output in a process.
char gTemporary[4096];

constexpr int kWatched[] = {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM};

void removeAndDie(int signal) {
    if (gTemporary[0] != '\0') ::unlink(gTemporary);
    ::signal(signal, SIG_DFL);
    ::raise(signal);
}

void watch(const std::string& temporary) {
    if (temporary.size() >= sizeof gTemporary) return;
    std::memcpy(gTemporary, temporary.c_str(), temporary.size() + 1);
    for (const int signal : kWatched) {
        // What the caller has the program ignore, as nohup does, stays ignored.
        if (::signal(signal, removeAndDie) == SIG_IGN) ::signal(signal, SIG_IGN);
    }
}

// Signals wait while there is a file that the handler does not know yet.
class SignalsWait {
  public:
    SignalsWait() {
        sigset_t watched;
        sigemptyset(&watched);
        for (const int signal : kWatched) sigaddset(&watched, signal);
        sigprocmask(SIG_BLOCK, &watched, &before_);
    }
    ~SignalsWait() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
    SignalsWait(const SignalsWait&) = delete;
    SignalsWait& operator=(const SignalsWait&) = delete;

  private:
    sigset_t before_;
};

mode_t modeOfNewFiles() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

// The file itself, where `path` is a link to it.
std::string withoutLinks(const std::string& path) {
    std::error_code error;
    const std::filesystem::path file = std::filesystem::canonical(path, error);
    if (error) throw HostError(path + ": " + error.message());
    return file.string();
}

}  // namespace

OutputFile::OutputFile(const std::string& path) : path_(path), target_(path) {
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
    if (exists) target_ = withoutLinks(path);
    createTemporary(exists ? status.st_mode & 07777 : modeOfNewFiles());
}

void OutputFile::createTemporary(unsigned mode) {
    constexpr std::string_view kSuffix = ".tmp";
    std::string name = target_ + ".XXXXXX";
    name += kSuffix;
    const SignalsWait wait;
    descriptor_ = ::mkostemps(name.data(), static_cast<int>(kSuffix.size()), O_CLOEXEC);
    if (descriptor_ < 0) fail();
    temporary_ = std::move(name);
    watch(temporary_);
    ::fchmod(descriptor_, mode);
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
    // Even if the machine goes down, the name stands for all of the old contents or all of the new.
    if (!temporary_.empty() && ::fsync(descriptor_) != 0) fail();
    if (::close(std::exchange(descriptor_, -1)) != 0) fail();
    if (temporary_.empty()) return;
    if (::rename(temporary_.c_str(), target_.c_str()) != 0) fail();
    gTemporary[0] = '\0';
    temporary_.clear();
}

void OutputFile::fail() const {
    throw HostError(path_ + ": " + std::strerror(errno));
}

}  // namespace host
