// Starting, limiting and reading of helpers.
#include "helper_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "elf_file.h"
#include "helper_channel.h"

namespace kit {

namespace {

namespace fs = std::filesystem;

// On a busy machine, a second of processor time takes more than a second.
constexpr unsigned kBusy = 4;
constexpr size_t kMostReport = 16 << 20;
constexpr size_t kMostOutput = 2000;

[[noreturn]] void failSystem(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

// A file without a name that the helper writes and this process reads afterwards. Unlike a pipe it
// needs no reader while the helper runs.
class Memory {
  public:
    Memory() : descriptor_(::memfd_create("korv-provider", MFD_CLOEXEC)) {
        if (descriptor_ < 0) failSystem("memfd_create");
    }
    Memory(const Memory&) = delete;
    Memory& operator=(const Memory&) = delete;
    ~Memory() { ::close(descriptor_); }

    int descriptor() const { return descriptor_; }
    size_t size() const {
        struct stat status;
        return ::fstat(descriptor_, &status) == 0 ? static_cast<size_t>(status.st_size) : 0;
    }
    std::string read(size_t most) const {
        std::string text(std::min(size(), most), '\0');
        const ssize_t count = ::pread(descriptor_, text.data(), text.size(), 0);
        text.resize(count < 0 ? 0 : static_cast<size_t>(count));
        return text;
    }

  private:
    int descriptor_;
};

void limit(int resource, rlim_t most, rlim_t reserve = 0) {
    const rlimit both = {most, most + reserve};
    ::setrlimit(static_cast<__rlimit_resource>(resource), &both);
}

// What happens in the child between fork and exec: system calls only.
[[noreturn]] void becomeHelper(const Helper& helper, char* const* arguments, const int* from,
                               unsigned seconds) {
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int null = ::open("/dev/null", O_RDONLY);
    ::dup2(null, 0);
    // The descriptors may lie where others are to go: they are moved out of the way first.
    int moved[kChannelCount];
    for (int i = 0; i < kChannelCount; ++i) moved[i] = ::fcntl(from[i], F_DUPFD, 20);
    for (int i = 0; i < kChannelCount; ++i) ::dup2(moved[i], kFirstChannel + i);
    ::syscall(SYS_close_range, kFirstChannel + kChannelCount, ~0U, 0);
    constexpr rlim_t kGiB = rlim_t{1} << 30;
    limit(RLIMIT_AS, helper.bits == 64 ? 8 * kGiB : 3 * kGiB);
    limit(RLIMIT_FSIZE, 64 << 20);
    limit(RLIMIT_NOFILE, 256);
    limit(RLIMIT_CORE, 0);
    limit(RLIMIT_CPU, seconds, 1);  // without a reserve it is SIGKILL, not SIGXCPU, that ends it
    ::execv(helper.path.c_str(), arguments);
    ::_exit(127);
}

// Waits for the process; false at the time limit.
bool waitFor(pid_t process, unsigned seconds) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::seconds(seconds);
    const int descriptor = static_cast<int>(::syscall(SYS_pidfd_open, process, 0));
    if (descriptor < 0) failSystem("pidfd_open");
    int ready = 0;
    do {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
        pollfd wanted = {descriptor, POLLIN, 0};
        ready = ::poll(&wanted, 1, static_cast<int>(std::max<int64_t>(left.count(), 0)));
    } while (ready < 0 && errno == EINTR);
    ::close(descriptor);
    return ready > 0;
}

bool isHelper(const fs::path& path, int bits) {
    if (::access(path.c_str(), X_OK) != 0) return false;
    try {
        return readElfFile(path.string()).bits == bits;
    } catch (const std::exception&) {
        return false;
    }
}

// Folders of a folder, in order.
std::vector<fs::path> foldersIn(const fs::path& folder) {
    std::vector<fs::path> folders;
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        if (at->is_directory(error)) folders.push_back(at->path());
    }
    std::sort(folders.begin(), folders.end());
    return folders;
}

}  // namespace

HelperRun runHelper(const Helper& helper, const std::vector<std::string>& arguments,
                    unsigned seconds) {
    std::vector<char*> words = {const_cast<char*>(helper.path.c_str())};
    for (const std::string& argument : arguments) {
        words.push_back(const_cast<char*>(argument.c_str()));
    }
    words.push_back(nullptr);
    const Memory output, report, doing;
    if (::ftruncate(doing.descriptor(), kDoingSize) != 0) failSystem("ftruncate");
    // In the order of the channels: standard output, standard error, report, doing.
    const int channels[kChannelCount] = {output.descriptor(), output.descriptor(),
                                         report.descriptor(), doing.descriptor()};
    const pid_t process = ::fork();
    if (process < 0) failSystem("fork");
    if (process == 0) becomeHelper(helper, words.data(), channels, seconds);
    ::setpgid(process, process);

    HelperRun run;
    run.isTimedOut = !waitFor(process, kBusy * seconds);
    // Also the processes that the module has started and that still run.
    ::kill(-process, SIGKILL);
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFSIGNALED(status)) run.signal = WTERMSIG(status);
    run.isTimedOut |= run.signal == SIGXCPU;
    if (WIFEXITED(status)) run.status = WEXITSTATUS(status);
    run.printed = output.size();
    run.output = output.read(kMostOutput);
    run.records = recordsIn(report.read(kMostReport));
    run.isDone = !run.records.empty() && run.records.back() == Record{"done"};
    if (run.isDone) run.records.pop_back();
    run.doing = doing.read(kDoingSize);
    run.doing.resize(std::min(run.doing.find('\0'), run.doing.size()));
    return run;
}

Helper findHelper(int bits, const std::vector<std::string>& given) {
    for (const std::string& path : given) {
        if (isHelper(path, bits)) return {fs::absolute(path).string(), bits};
    }
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    if (error) return {};
    const fs::path folder = program.parent_path();
    const fs::path above = folder.parent_path();
    const std::string name = "korv-provider-run" + std::to_string(bits);
    std::vector<fs::path> candidates = {folder / name};
    for (const char* library : {"lib", "lib32", "lib64"}) {
        candidates.push_back(above / library / "korv" / name);
    }
    for (const fs::path& triplet : foldersIn(above / "lib")) {
        if (triplet.filename().string().ends_with("-linux-gnu")) {
            candidates.push_back(triplet / "korv" / name);
        }
    }
    if (fs::exists(above / "CMakeCache.txt", error)) {
        for (const fs::path& build : foldersIn(above.parent_path())) {
            candidates.push_back(build / "bin" / name);
        }
    }
    for (const fs::path& candidate : candidates) {
        if (isHelper(candidate, bits)) return {candidate.string(), bits};
    }
    return {};
}

std::string endOf(const HelperRun& run) {
    const std::string during = run.doing.empty() ? "" : " while " + run.doing;
    if (run.isTimedOut) return "it was ended at the time limit" + during;
    if (run.signal != 0) {
        const char* const name = ::sigabbrev_np(run.signal);
        return "it crashed with the signal " +
               (name == nullptr ? std::to_string(run.signal) : "SIG" + std::string(name)) + during;
    }
    if (!run.isDone) {
        return "the process was ended with the exit status " + std::to_string(run.status) + during;
    }
    if (run.printed > 0) {
        return "it printed " + std::to_string(run.printed) +
               " bytes to standard output or standard error";
    }
    return {};
}

std::string missingHelper(const std::string& module, int bits) {
    const std::string name = "korv-provider-run" + std::to_string(bits);
    return module + " is for " + std::to_string(bits) + " bits, and there is no helper " + name +
           "; install the " + std::to_string(bits) +
           "-bit package of korv-provider, or name the helper with --helper";
}

}  // namespace kit
