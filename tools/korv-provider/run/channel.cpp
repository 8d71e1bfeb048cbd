// Writing to the channels.
#include "channel.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "helper_channel.h"

namespace kit {

namespace {

char* page;
int report = -1;

}  // namespace

bool openChannels() {
    void* const memory =
        ::mmap(nullptr, kDoingSize, PROT_READ | PROT_WRITE, MAP_SHARED, kDoingChannel, 0);
    if (memory == MAP_FAILED) return false;
    page = static_cast<char*>(memory);
    ::close(kDoingChannel);
    // Where a module that counts descriptors does not expect it.
    report = ::fcntl(kReportChannel, F_DUPFD_CLOEXEC, 100);
    ::close(kReportChannel);
    return report >= 0;
}

void send(const Record& record) {
    const std::string line = toLine(record) + "\n";
    size_t done = 0;
    while (done < line.size()) {
        const ssize_t count = ::write(report, line.data() + done, line.size() - done);
        if (count < 0 && errno != EINTR) return;
        if (count > 0) done += static_cast<size_t>(count);
    }
}

void doing(const char* what, const char* detail) {
    // By hand: snprintf would cost more than masking a value.
    size_t at = 0;
    for (const char* text : {what, detail}) {
        while (*text != '\0' && at + 1 < kDoingSize) page[at++] = *text++;
    }
    page[at] = '\0';
}

}  // namespace kit
