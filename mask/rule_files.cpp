// The files that rules name: anywhere, or in given folders only.
#include "rule_files.h"

#include <stdlib.h>

#include <cerrno>
#include <memory>
#include <new>

namespace mask {

namespace {

struct Free {
    void operator()(char* memory) const { ::free(memory); }
};

// The path without links and dots; empty when there is no such file.
std::string realPath(const std::string& path) {
    errno = 0;
    const std::unique_ptr<char, Free> real(::realpath(path.c_str(), nullptr));
    if (!real && errno == ENOMEM) throw std::bad_alloc();
    return real ? real.get() : "";
}

}  // namespace

std::string findRuleFile(const Rules& rules, const Rule& rule, const RuleOperand& operand) {
    const std::string& name = operand.value;
    const bool isAbsolute = name.starts_with('/');
    if (!rules.confinesFiles) return isAbsolute ? name : rules.folder + name;
    for (const std::string& folder : rules.fileFolders) {
        std::string root = realPath(folder);
        if (root.empty()) continue;
        if (!root.ends_with('/')) root += '/';
        std::string path = realPath(isAbsolute ? name : root + name);
        if (path.starts_with(root)) return path;
    }
    // The message is the same for a file that does not exist and for one in another folder, so
    // that rules cannot be used to find out which files exist in other folders.
    rules.fail(
        rule, operand.position,
        "operand " + operand.key + " names a file that is not in the folders for such files");
}

}  // namespace mask
