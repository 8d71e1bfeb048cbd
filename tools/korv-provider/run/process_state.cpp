// Reading of the process's state.
#include "process_state.h"

#include <dirent.h>
#include <fcntl.h>
#include <locale.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <stdexcept>

namespace kit {

namespace {

// The names in a folder of /proc without those of the listing itself.
std::vector<std::string> namesIn(const char* path) {
    std::vector<std::string> names;
    DIR* const folder = ::opendir(path);
    if (folder == nullptr) throw std::runtime_error(std::string("cannot read ") + path);
    const std::string own = std::to_string(::dirfd(folder));
    while (const dirent* entry = ::readdir(folder)) {
        if (entry->d_name[0] != '.' && entry->d_name != own) names.emplace_back(entry->d_name);
    }
    ::closedir(folder);
    std::sort(names.begin(), names.end());
    return names;
}

std::string locale() {
    const auto* const thread = static_cast<const void*>(::uselocale(nullptr));
    return std::to_string(reinterpret_cast<uintptr_t>(thread)) + " " + ::setlocale(LC_ALL, nullptr);
}

std::string signals() {
    std::string text;
    for (int number = 1; number < NSIG; ++number) {
        struct sigaction action = {};
        if (::sigaction(number, nullptr, &action) != 0) continue;
        const auto handler = reinterpret_cast<uintptr_t>(action.sa_handler);
        text += std::to_string(handler) + " " + std::to_string(action.sa_flags) + " ";
    }
    sigset_t blocked;
    ::pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    for (int number = 1; number < NSIG; ++number) {
        text += ::sigismember(&blocked, number) == 1 ? '1' : '0';
    }
    return text;
}

std::string umaskAndFolder() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    char folder[4096] = "";
    if (::getcwd(folder, sizeof folder) == nullptr) folder[0] = '\0';
    return std::to_string(mask) + " " + folder;
}

std::string environment() {
    std::string text;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        text += std::string(*variable) + "\n";
    }
    return text;
}

std::string descriptors() {
    std::string text;
    for (const std::string& name : namesIn("/proc/self/fd")) {
        char target[4096];
        const ssize_t length = ::readlink(("/proc/self/fd/" + name).c_str(), target, sizeof target);
        text += name + " " + std::string(target, length < 0 ? 0 : static_cast<size_t>(length)) +
                " " + std::to_string(::fcntl(std::stoi(name), F_GETFL)) + "\n";
    }
    return text;
}

std::string threads() {
    std::string text;
    for (const std::string& name : namesIn("/proc/self/task")) {
        text += name + ": " + readFile(("/proc/self/task/" + name + "/children").c_str()) + "\n";
    }
    return text;
}

// What decides about calculations: rounding, masks of exceptions, the direction of string
// instructions, and whether the x87 stack is empty. Exceptions that have occurred do not matter.
std::string floatingPoint() {
    struct {
        uint16_t control, unused1, status, unused2, tags, unused3;
        uint32_t rest[4];
    } x87 = {};
    asm volatile("fnstenv %0\n\tfldenv %0" : "+m"(x87));
    uint32_t mxcsr = 0;
#ifdef __SSE__
    asm volatile("stmxcsr %0" : "=m"(mxcsr));
#endif
#ifdef __x86_64__
    const uintptr_t flags = __builtin_ia32_readeflags_u64();
#else
    const uintptr_t flags = __builtin_ia32_readeflags_u32();
#endif
    constexpr uint32_t kExceptions = 0x3F;
    constexpr uintptr_t kDirection = 0x400;
    return std::to_string(x87.control) + " " + std::to_string(x87.tags) + " " +
           std::to_string(mxcsr & ~kExceptions) + " " + std::to_string(flags & kDirection);
}

std::string limits() {
    std::string text = std::to_string(::getpriority(PRIO_PROCESS, 0));
    for (int resource = 0; resource < static_cast<int>(RLIM_NLIMITS); ++resource) {
        rlimit values = {};
        ::getrlimit(static_cast<__rlimit_resource>(resource), &values);
        text += " " + std::to_string(values.rlim_cur) + "/" + std::to_string(values.rlim_max);
    }
    for (const auto which : {ITIMER_REAL, ITIMER_VIRTUAL, ITIMER_PROF}) {
        itimerval timer = {};
        ::getitimer(which, &timer);
        const bool runs = timer.it_value.tv_sec != 0 || timer.it_value.tv_usec != 0;
        text += runs ? " timer" : " -";
    }
    return text;
}

struct Aspect {
    const char* name;
    std::string (*read)();
};

constexpr Aspect kAspects[] = {
    {"locale", locale},
    {"signal handlers or signal mask", signals},
    {"umask or the current folder", umaskAndFolder},
    {"environment", environment},
    {"descriptors", descriptors},
    {"threads and processes", threads},
    {"floating-point state", floatingPoint},
    {"resource limits, priority or timers", limits},
};

}  // namespace

std::string readFile(const char* path) {
    std::string text;
    const int file = ::open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) return text;
    char block[4096];
    for (ssize_t count; (count = ::read(file, block, sizeof block)) > 0;) {
        text.append(block, static_cast<size_t>(count));
    }
    ::close(file);
    return text;
}

std::string aspectNow(std::string_view name) {
    for (const Aspect& aspect : kAspects) {
        if (name == aspect.name) return aspect.read();
    }
    throw std::runtime_error("there is no aspect " + std::string(name));
}

ProcessState::ProcessState() {
    for (const Aspect& aspect : kAspects) aspects_.emplace_back(aspect.name, aspect.read());
}

std::vector<std::string> ProcessState::changes(const std::vector<std::string_view>& names) const {
    std::vector<std::string> changed;
    for (const auto& [name, before] : aspects_) {
        const bool isWanted =
            names.empty() || std::find(names.begin(), names.end(), name) != names.end();
        if (isWanted && aspectNow(name) != before) changed.push_back(name);
    }
    return changed;
}

}  // namespace kit
