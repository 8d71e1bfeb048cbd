// Comparison of files by identity, and of names that stand for no file yet by where they lead.
#include "file_roles.h"

#include <sys/stat.h>
#include <unistd.h>

#include <optional>
#include <string>

#include "output_file.h"
#include "tool_error.h"

namespace tool {

namespace {

struct File {
    std::string name;  // in messages
    bool isRegular = true;
    std::optional<struct stat> status;  // of a file that exists
    std::string path;                   // where the name leads; empty for a descriptor
};

File fileOf(const std::string& path) {
    File file = {path, true, {}, {}};
    struct stat status;
    if (::stat(path.c_str(), &status) == 0) {
        file.status = status;
        file.isRegular = S_ISREG(status.st_mode);
    }
    file.path = resolved(path);
    return file;
}

File fileOf(const std::string& name, int descriptor) {
    File file = {name, false, {}, {}};
    struct stat status;
    if (::fstat(descriptor, &status) == 0) {
        file.status = status;
        file.isRegular = S_ISREG(status.st_mode);
    }
    return file;
}

// Two roles may share what is not a regular file, such as /dev/null.
bool isSame(const File& a, const File& b) {
    if (!a.isRegular || !b.isRegular) return false;
    if (a.status && b.status) {
        return a.status->st_dev == b.status->st_dev && a.status->st_ino == b.status->st_ino;
    }
    return !a.path.empty() && a.path == b.path;
}

void refuseSame(const File& read, const File& written) {
    if (!isSame(read, written)) return;
    throw ToolError("korv-mask: " + written.name + " would overwrite " + read.name +
                    ", which is read");
}

std::vector<File> filesRead(const Options& options, const std::vector<ColumnPlan>& plan) {
    std::vector<File> files = {fileOf(options.rules)};
    if (!options.secrets.empty()) files.push_back(fileOf(options.secrets));
    for (const ColumnPlan& column : plan) {
        for (const std::string& file : column.files) files.push_back(fileOf(file));
    }
    return files;
}

std::vector<File> filesWritten(const Options& options) {
    std::vector<File> files;
    for (const std::string& path : {options.summary, options.html}) {
        if (!path.empty()) files.push_back(fileOf(path));
    }
    return files;
}

File outputOf(const Options& options) {
    return options.output == "-" ? fileOf("standard output", STDOUT_FILENO)
                                 : fileOf(options.output);
}

void compare(const Options& options, const std::vector<ColumnPlan>& plan, const FileSource& source,
             const std::optional<File>& report) {
    const File input = fileOf(source.name(), source.descriptor());
    const File output = outputOf(options);
    std::vector<File> written = filesWritten(options);
    if (report) written.push_back(*report);
    for (const File& file : written) refuseSame(input, file);
    written.push_back(output);
    for (const File& read : filesRead(options, plan)) {
        for (const File& file : written) refuseSame(read, file);
    }
    for (size_t i = 0; i < written.size(); ++i) {
        for (size_t j = 0; j < i; ++j) {
            if (!isSame(written[i], written[j])) continue;
            throw ToolError("korv-mask: " + written[i].name + " and " + written[j].name +
                            " are the same file; each kind of output needs its own");
        }
    }
    if (isSame(input, output) && input.status->st_nlink > 1) {
        throw ToolError("korv-mask: " + input.name +
                        " has several names (hard links), so it cannot be masked in place: the "
                        "clear text would stay under the other names");
    }
}

}  // namespace

void checkFiles(const Options& options, const std::vector<ColumnPlan>& plan,
                const FileSource& input) {
    compare(options, plan, input,
            options.report.empty() ? std::nullopt : std::optional(fileOf(options.report)));
}

void checkReport(const Options& options, const std::vector<ColumnPlan>& plan,
                 const FileSource& input, const Report& report) {
    if (report.descriptor() < 0) return;
    try {
        compare(options, plan, input, fileOf(options.report, report.descriptor()));
    } catch (const ToolError&) {
        if (report.isNew()) ::unlink(options.report.c_str());
        throw;
    }
}

}  // namespace tool
