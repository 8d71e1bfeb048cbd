// Level 1, the tests of the file alone.
#include "file_tests.h"

#include <sys/stat.h>

#include <filesystem>
#include <stdexcept>
#include <string_view>

namespace kit {

namespace {

constexpr const char* kEntry = "KorvProviderEntry";

using Findings = std::vector<std::string>;

Findings elfModule(const ElfFile& file, const std::string&) {
    if (!file.isX86) return {"it is not for x86"};
    if (!file.isShared) return {"it is a program or an object file, not a shared object"};
    return {};
}

Findings entryOnly(const ElfFile& file, const std::string&) {
    Findings findings;
    bool hasEntry = false;
    for (const std::string& name : file.exports) {
        if (name == kEntry) {
            hasEntry = true;
        } else {
            findings.push_back("it exports " + name +
                               "; compile with -fvisibility=hidden or link with a version script");
        }
    }
    if (!hasEntry) findings.insert(findings.begin(), std::string("it does not export ") + kEntry);
    return findings;
}

Findings noExecutableStack(const ElfFile& file, const std::string&) {
    if (!file.hasExecutableStack) return {};
    return {"it makes the stacks of the process executable; link with -Wl,-z,noexecstack"};
}

Findings noTextRelocations(const ElfFile& file, const std::string&) {
    if (!file.hasTextRelocations) return {};
    return {"its code has to be changed when it is loaded; compile with -fPIC"};
}

bool othersMayWrite(const std::string& folder) {
    struct stat status;
    return ::stat(folder.c_str(), &status) == 0 && (status.st_mode & S_IWOTH) != 0;
}

// CMake ends the RPATH of a module in a build folder with colons, to make room for that of the
// installed one.
bool isInBuildFolder(const std::string& path) {
    std::error_code error;
    std::filesystem::path folder = std::filesystem::absolute(path, error);
    while (folder.has_relative_path()) {
        folder = folder.parent_path();
        if (std::filesystem::exists(folder / "CMakeCache.txt", error)) return true;
    }
    return false;
}

Findings safeSearchPath(const ElfFile& file, const std::string& path) {
    Findings findings;
    std::string_view rest = file.searchPath;
    if (isInBuildFolder(path)) {
        while (rest.ends_with(':')) rest.remove_suffix(1);
    }
    while (!file.searchPath.empty()) {
        const size_t end = rest.find(':');
        const std::string folder(rest.substr(0, end));
        const std::string where = "its RPATH names '" + folder + "'";
        if (folder.empty()) {
            findings.push_back("its RPATH has an empty entry, which is the current folder");
        } else if (!folder.starts_with('/') && !folder.starts_with("$ORIGIN") &&
                   !folder.starts_with("${ORIGIN}")) {
            findings.push_back(where + ", which depends on the current folder");
        } else if (othersMayWrite(folder)) {
            findings.push_back(where + ", which other users may write");
        }
        if (end == std::string_view::npos) break;
        rest.remove_prefix(end + 1);
    }
    return findings;
}

struct FileTest {
    std::string_view name;
    Findings (*run)(const ElfFile& file, const std::string& path);
};

constexpr FileTest kTests[] = {
    {"elf-module", elfModule},
    {"entry-only", entryOnly},
    {"no-executable-stack", noExecutableStack},
    {"no-text-relocations", noTextRelocations},
    {"safe-search-path", safeSearchPath},
};

}  // namespace

std::vector<std::string> runFileTest(const TestInfo& test, const std::string& path,
                                     const ElfFile* file, const std::string& fault) {
    for (const FileTest& known : kTests) {
        if (known.name != test.name) continue;
        if (file != nullptr) return known.run(*file, path);
        return known.run == elfModule ? Findings{fault} : Findings{};
    }
    throw std::logic_error("there is no test of the file " + test.title());
}

}  // namespace kit
