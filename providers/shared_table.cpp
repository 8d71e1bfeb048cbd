// The identity of files that tables are made of.
#include "providers/shared_table.h"

#include <cerrno>

#include "providers/text_lines.h"

namespace provider {

namespace {

constexpr off_t kLargestFile = 1 << 30;

struct stat statusOf(const std::wstring& path) {
    struct stat status;
    if (stat(toUtf8(path).c_str(), &status) != 0) throw fileError(path, errno);
    if (S_ISDIR(status.st_mode)) throw fileError(path, EISDIR);
    // What can be read only once cannot be read by several threads.
    if (!S_ISREG(status.st_mode)) {
        throw Error(kBadFile,
                    {{KORV_TOKID_PATH, path}, {KORV_TOKID_ERRMSG, L"Not a regular file"}});
    }
    if (status.st_size > kLargestFile) throw fileError(path, EFBIG);
    return status;
}

}  // namespace

FileIdentity::FileIdentity(const std::wstring& filePath) : path(filePath) {
    const struct stat status = statusOf(path);
    device = status.st_dev;
    inode = status.st_ino;
    size = status.st_size;
    seconds = status.st_mtim.tv_sec;
    nanoseconds = status.st_mtim.tv_nsec;
}

}  // namespace provider
