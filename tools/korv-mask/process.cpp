// Closed streams, limits, locale and time zone, and memory that is short where nothing catches it.
#include "process.h"

#include <cxxabi.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <string>
#include <typeinfo>

#include "output_file.h"
#include "tool_error.h"

namespace tool {

namespace {

std::terminate_handler gOtherwise;

// Called without a current exception if there is no memory for the static objects or for the
// exception itself.
[[noreturn]] void endWithoutMemory() {
    const std::type_info* exception = abi::__cxa_current_exception_type();
    if (exception != nullptr && *exception != typeid(std::bad_alloc)) {
        gOtherwise();
        std::abort();
    }
    static constexpr char kMessage[] = "korv-mask: out of memory\n";
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, kMessage, sizeof kMessage - 1);
    removeTemporaries();
    ::_exit(kNotRun);
}

// Before the static objects of any other file.
[[gnu::constructor(101)]] void watchStaticObjects() {
    gOtherwise = std::set_terminate(endWithoutMemory);
}

// A file opened later must not take the number of a standard stream that is closed, or messages
// would be written into it. The stream stays as useless as it was.
void occupyStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) != -1) continue;
        ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

}  // namespace

void prepareProcess() {
    occupyStandardStreams();
#ifndef __SANITIZE_ADDRESS__
    // No core dump and no debugger of the same user shows secrets and clear values. The leak check
    // of the sanitizer is such a debugger.
    ::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
#endif
    // A file that reaches its limit is an error like a full disk.
    ::signal(SIGXFSZ, SIG_IGN);
    // The library's case functions follow the locale; this one knows every letter of UTF-8 input.
    if (std::setlocale(LC_CTYPE, "C.UTF-8") == nullptr) {
        throw ToolError(std::string("korv-mask: locale C.UTF-8: ") + std::strerror(errno));
    }
    watchSignals();
}

}  // namespace tool
