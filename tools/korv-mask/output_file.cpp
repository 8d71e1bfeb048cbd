// Temporary file, rename, and removal when the program is interrupted.
#include "output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "tool_error.h"

namespace tool {

namespace {

// What a signal has to remove: output, summary and page.
constexpr size_t kMostTemporaries = 3;
char gTemporaries[kMostTemporaries][4096];

// Every signal that ends a program and can be caught.
constexpr int kWatched[] = {SIGHUP,  SIGINT,  SIGQUIT,   SIGPIPE, SIGTERM, SIGALRM, SIGUSR1,
                            SIGUSR2, SIGXCPU, SIGVTALRM, SIGPROF, SIGIO,   SIGPWR,  SIGSYS,
                            SIGTRAP, SIGABRT, SIGSEGV,   SIGBUS,  SIGFPE,  SIGILL};

void removeAndDie(int signal) {
    removeTemporaries();
    ::signal(signal, SIG_DFL);
    ::raise(signal);
}

// Signals wait while there is a file that the handler does not know yet.
class SignalsWait {
  public:
    SignalsWait() {
        sigset_t watched;
        sigemptyset(&watched);
        for (const int signal : kWatched) sigaddset(&watched, signal);
        ::pthread_sigmask(SIG_BLOCK, &watched, &before_);
    }
    ~SignalsWait() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsWait(const SignalsWait&) = delete;
    SignalsWait& operator=(const SignalsWait&) = delete;

  private:
    sigset_t before_;
};

void remember(const std::string& temporary) {
    for (auto& slot : gTemporaries) {
        if (slot[0] != '\0' || temporary.size() >= sizeof slot) continue;
        std::memcpy(slot, temporary.c_str(), temporary.size() + 1);
        return;
    }
}

void forget(const std::string& temporary) {
    for (auto& slot : gTemporaries) {
        if (temporary == slot) slot[0] = '\0';
    }
}

mode_t modeOfNewFiles() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

}  // namespace

void removeTemporaries() noexcept {
    for (const auto& temporary : gTemporaries) {
        if (temporary[0] != '\0') ::unlink(temporary);
    }
}

void watchSignals() {
    struct sigaction action = {};
    action.sa_handler = removeAndDie;
    action.sa_flags = SA_ONSTACK;
    for (const int signal : kWatched) {
        struct sigaction before = {};
        // What the caller has the program ignore, as nohup does, stays ignored.
        if (::sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_IGN) continue;
        ::sigaction(signal, &action, nullptr);
    }
}

SignalStack::SignalStack() {
    stack_t stack = {};
    stack.ss_sp = memory_.data();
    stack.ss_size = memory_.size();
    ::sigaltstack(&stack, &before_);
}

SignalStack::~SignalStack() {
    ::sigaltstack(&before_, nullptr);
}

std::string resolved(const std::string& path) {
    namespace fs = std::filesystem;
    constexpr int kMostLinks = 40;
    fs::path file = path;
    std::error_code error;
    for (int links = 0; fs::is_symlink(file, error); ++links) {
        if (links == kMostLinks) {
            throw ToolError("korv-mask: " + path + ": " + std::strerror(ELOOP));
        }
        const fs::path target = fs::read_symlink(file, error);
        if (error) break;
        file = target.is_absolute() ? target : file.parent_path() / target;
    }
    const fs::path folder =
        fs::canonical(file.has_parent_path() ? file.parent_path() : fs::path("."), error);
    if (error) throw ToolError("korv-mask: " + path + ": " + error.message());
    return (folder / file.filename()).string();
}

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
    target_ = resolved(path);
    createTemporary(exists ? &status : nullptr);
}

void OutputFile::createTemporary(const struct stat* replaced) {
    constexpr std::string_view kSuffix = ".tmp";
    std::string name = target_ + ".XXXXXX";
    name += kSuffix;
    const SignalsWait wait;
    descriptor_ = ::mkostemps(name.data(), static_cast<int>(kSuffix.size()), O_CLOEXEC);
    if (descriptor_ < 0) fail();
    temporary_ = std::move(name);
    remember(temporary_);
    if (replaced == nullptr) {
        ::fchmod(descriptor_, modeOfNewFiles());
        return;
    }
    // Owner and group stay where that is permitted, each for itself. A group that could not be kept
    // gets no rights.
    mode_t mode = replaced->st_mode & 0777;
    [[maybe_unused]] const int owner =
        ::fchown(descriptor_, replaced->st_uid, static_cast<gid_t>(-1));
    if (::fchown(descriptor_, static_cast<uid_t>(-1), replaced->st_gid) != 0) mode &= 0707;
    ::fchmod(descriptor_, mode);
}

OutputFile::~OutputFile() {
    if (descriptor_ >= 0 && descriptor_ != STDOUT_FILENO) ::close(descriptor_);
    if (!temporary_.empty()) {
        ::unlink(temporary_.c_str());
        forget(temporary_);
    }
}

void OutputFile::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
        if (written < 0) {
            if (errno == EINTR) continue;
            fail();
        }
        bytes.remove_prefix(static_cast<size_t>(written));
    }
}

void OutputFile::commit() {
    if (descriptor_ == STDOUT_FILENO) return;
    // Even if the machine goes down, the name stands for all of the old contents or all of the new.
    if (!temporary_.empty() && ::fsync(descriptor_) != 0) fail();
    if (::close(std::exchange(descriptor_, -1)) != 0) fail();
    if (temporary_.empty()) return;
    if (::rename(temporary_.c_str(), target_.c_str()) != 0) fail();
    forget(temporary_);
    temporary_.clear();
}

void OutputFile::fail() const {
    throw ToolError("korv-mask: " + path_ + ": " + std::strerror(errno));
}

}  // namespace tool
