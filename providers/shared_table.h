// Tables made of text files. The instances of a provider in one process share the table of a file.
#pragma once

#include <sys/stat.h>

#include <compare>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace provider {

// What tells a file from another, and from an earlier state of its own.
struct FileIdentity {
    // Throws Error when there is no such file, or it is a device, a pipe or too large.
    explicit FileIdentity(const std::wstring& filePath);
    auto operator<=>(const FileIdentity&) const = default;

    std::wstring path;
    dev_t device;
    ino_t inode;
    off_t size;
    time_t seconds;
    long nanoseconds;
};

// The table that `Table(path)` makes of a file. It is made once and lives as long as any instance
// uses it. A file that has changed is read again.
template <class Table>
std::shared_ptr<const Table> sharedTable(const std::wstring& path) {
    static std::mutex mutex;
    static std::map<FileIdentity, std::weak_ptr<const Table>> tables;
    const std::lock_guard lock(mutex);
    std::erase_if(tables, [](const auto& entry) { return entry.second.expired(); });
    std::weak_ptr<const Table>& known = tables[FileIdentity(path)];
    std::shared_ptr<const Table> table = known.lock();
    if (table == nullptr) known = table = std::make_shared<const Table>(path);
    return table;
}

}  // namespace provider
