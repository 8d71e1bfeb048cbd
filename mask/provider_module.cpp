// Finding, checking and loading of provider modules.
#include "provider_module.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

#include "mask_error.h"

namespace mask {

namespace {

constexpr std::string_view kPrefix = "libkorvprv_";
constexpr std::string_view kSuffix = ".so";
constexpr size_t kLongestName = 31;

// A name is also part of a file name: nothing in it may lead to another folder.
bool isName(std::string_view name) {
    const auto isCapital = [](char c) { return c >= 'A' && c <= 'Z'; };
    const auto isPart = [&](char c) { return isCapital(c) || (c >= '0' && c <= '9') || c == '_'; };
    return !name.empty() && name.size() <= kLongestName && isCapital(name[0]) &&
           std::all_of(name.begin(), name.end(), isPart);
}

bool isName(const char* name) {
    return name != nullptr && isName(std::string_view(name));
}

std::string inLowerCase(std::string name) {
    for (char& c : name) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return name;
}

std::string inCapitals(std::string name) {
    for (char& c : name) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return name;
}

// COL is AFF by another name: GetProviderID gives both the same number.
std::string moduleName(const std::string& name) {
    return GetProviderID(name.c_str()) == GetProviderID("AFF") ? "AFF" : name;
}

std::string folderOfLibrary() {
    Dl_info info = {};
    if (::dladdr(reinterpret_cast<const void*>(&folderOfLibrary), &info) == 0) return ".";
    std::error_code error;
    const std::filesystem::path library = std::filesystem::canonical(info.dli_fname, error);
    return error ? "." : library.parent_path().string();
}

// In a build folder the modules lie beside this library, otherwise where they were installed.
std::string folderOfModules() {
    const std::string library = folderOfLibrary() + "/";
    std::string folder = library + "korv-providers";
#ifdef KORV_PROVIDERS_DIR
    if (::access(folder.c_str(), X_OK) != 0) {
        folder = KORV_PROVIDERS_DIR;
        if (folder.front() != '/') folder.insert(0, library);
    }
#endif
    return folder;
}

bool othersMayWrite(const struct stat& status) {
    if (S_ISDIR(status.st_mode) && (status.st_mode & S_ISVTX) != 0) return false;
    return (status.st_mode & S_IWOTH) != 0 ||
           ((status.st_mode & S_IWGRP) != 0 && status.st_gid != ::getegid() && status.st_gid != 0);
}

// Whoever may write the file could run code here.
void checkWriters(const std::string& path, const std::string& module) {
    struct stat status;
    if (::stat(path.c_str(), &status) != 0) {
        throw MaskError(KORV_MASK_BAD_PROVIDER, path + ": " + std::strerror(errno));
    }
    if (othersMayWrite(status)) {
        throw MaskError(KORV_MASK_BAD_PROVIDER,
                        path + ": other users may write it, so " + module + " is not loaded");
    }
}

std::string operandFault(const PrvOperand& operand) {
    if (!isName(operand.key)) return "an operand key is not a name in capitals";
    const std::string key = std::string("operand ") + operand.key;
    if (key == "operand TYPE" || key == "operand UNCHANGED") return key + " is the engine's own";
    if (operand.kind < OPR_VALUE_NONE || operand.kind > OPR_VALUE_NARROW) {
        return key + " has the unknown kind " + std::to_string(operand.kind);
    }
    if (operand.kind == OPR_VALUE_INTEGER && operand.minimum > operand.maximum) {
        return key + " has a minimum above its maximum";
    }
    constexpr uint16_t kNarrowOnly = PRV_OPERAND_PATH | PRV_OPERAND_COLUMN;
    if ((operand.flags & kNarrowOnly) != 0 && operand.kind != OPR_VALUE_NARROW) {
        return key + " names a file or a column and is not of the kind OPR_VALUE_NARROW";
    }
    return {};
}

// What the engine takes out of the rules for providers of version 3.
bool isReserved(std::string_view key) {
    return key == "METHOD" || key == "SCOPE" || key == "SECRET" || key == "UNIQUE";
}

std::string operandsFault(const PrvEntry& entry) {
    if (entry.operandCount > 0 && entry.operands == nullptr) return "operands is NULL";
    std::set<std::string_view> keys;
    std::set<uint16_t> codes;
    int columns = 0;
    for (uint32_t i = 0; i < entry.operandCount; ++i) {
        const PrvOperand& operand = entry.operands[i];
        if (std::string fault = operandFault(operand); !fault.empty()) return fault;
        if (entry.interfaceVersion >= 3 && isReserved(operand.key)) {
            return std::string("operand ") + operand.key + " is the engine's own";
        }
        if (!keys.insert(operand.key).second) {
            return std::string("operand ") + operand.key + " is listed twice";
        }
        if (!codes.insert(operand.code).second) {
            return "two operands have the code " + std::to_string(operand.code);
        }
        if ((operand.flags & PRV_OPERAND_COLUMN) != 0 && ++columns > 1) {
            return "more than one operand names a column";
        }
    }
    return {};
}

std::string errorsFault(const PrvEntry& entry) {
    if (entry.errorCount > 0 && entry.errors == nullptr) return "errors is NULL";
    std::set<uint32_t> codes;
    for (uint32_t i = 0; i < entry.errorCount; ++i) {
        const uint32_t code = entry.errors[i].code;
        const std::string error = "error " + std::to_string(code);
        if (code == 0) return "an error has the code 0";
        if (code >= PRV_FIRST_ENGINE_CODE && entry.interfaceVersion >= 2) {
            return error + " has a code of the engine";
        }
        if (entry.errors[i].text == nullptr) return error + " has no text";
        if (!codes.insert(code).second) return error + " is listed twice";
    }
    return {};
}

std::string samplesFault(const PrvEntry& entry) {
    if (entry.interfaceVersion < 2 || entry.sampleRuleCount == 0) return {};
    if (entry.sampleRules == nullptr) return "sampleRules is NULL";
    for (uint32_t i = 0; i < entry.sampleRuleCount; ++i) {
        if (entry.sampleRules[i] == nullptr) return "a sample rule is NULL";
    }
    return {};
}

std::string methodsFault(const PrvEntry& entry) {
    if (entry.interfaceVersion < 3 || entry.methodCount == 0) return {};
    if (entry.methods == nullptr) return "methods is NULL";
    std::set<std::string_view> names;
    for (uint32_t i = 0; i < entry.methodCount; ++i) {
        const char* const name = entry.methods[i].name;
        if (name == nullptr || inCapitals(name) == name || !isName(inCapitals(name).c_str()) ||
            inLowerCase(name) != name) {
            return "a method has no name in lower-case letters";
        }
        if (!names.insert(name).second) {
            return std::string("method ") + name + " is listed twice";
        }
    }
    return {};
}

// What is wrong with a provider's record; an empty text when nothing is.
std::string entryFault(const PrvEntry* entry, const std::string& name) {
    if (entry == nullptr) return PRV_ENTRY_SYMBOL " returns NULL";
    if (entry->interfaceVersion < 1 || entry->interfaceVersion > PRV_INTERFACE_VERSION) {
        return "it has version " + std::to_string(entry->interfaceVersion) +
               " of the provider interface, which is not supported";
    }
    if (!isName(entry->name)) return "its name is not a name in capitals";
    if (moduleName(entry->name) != name) {
        return std::string("it calls itself ") + entry->name + ", not " + name;
    }
    if (entry->open == nullptr || entry->mask == nullptr || entry->close == nullptr) {
        return "one of its functions open, mask and close is NULL";
    }
    for (const auto check : {operandsFault, errorsFault, samplesFault, methodsFault}) {
        if (std::string fault = check(*entry); !fault.empty()) return fault;
    }
    return {};
}

}  // namespace

void CloseModule::operator()(void* handle) const {
    ::dlclose(handle);
}

const char* ProviderModule::meaning(uint32_t code) const {
    for (uint32_t i = 0; i < entry->errorCount; ++i) {
        if (entry->errors[i].code == code) return entry->errors[i].text;
    }
    return "no description";
}

ProviderModules::ProviderModules(std::vector<std::string> folders) : folders_(std::move(folders)) {
    if (folders_.empty()) folders_.push_back(folderOfModules());
}

const ProviderModule& ProviderModules::load(const std::string& name, const std::string& path) {
    checkWriters(path, path);
    checkWriters(path.substr(0, path.rfind('/')), path);
    ProviderModule module = {name, path, nullptr, nullptr};
    module.handle.reset(::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (module.handle == nullptr) {
        throw MaskError(KORV_MASK_BAD_PROVIDER,
                        "provider " + name + " cannot be loaded: " + ::dlerror());
    }
    const auto entry =
        reinterpret_cast<PrvEntryFunction>(::dlsym(module.handle.get(), PRV_ENTRY_SYMBOL));
    if (entry == nullptr) {
        throw MaskError(KORV_MASK_BAD_PROVIDER,
                        path + " is not a provider: it does not export " PRV_ENTRY_SYMBOL);
    }
    module.entry = entry();
    if (const std::string fault = entryFault(module.entry, name); !fault.empty()) {
        throw MaskError(KORV_MASK_BAD_PROVIDER, path + " is refused: " + fault);
    }
    return loaded_.emplace(name, std::move(module)).first->second;
}

const ProviderModule& ProviderModules::load(const Rules& rules, const Rule& rule) {
    const std::string name = moduleName(rule.action);
    const auto known = loaded_.find(name);
    if (known != loaded_.end()) return known->second;
    if (!isName(name)) {
        rules.fail(rule, rule.actionPosition,
                   "'" + rule.action + "' is not the name of a provider");
    }
    std::string searched;
    for (const std::string& folder : folders_) {
        for (const std::string_view prefix : {kPrefix, std::string_view()}) {
            std::string path = folder;
            path.append("/").append(prefix).append(inLowerCase(name)).append(kSuffix);
            if (::access(path.c_str(), F_OK) != 0) continue;
            try {
                return load(name, path);
            } catch (const MaskError& error) {
                throw MaskError(KORV_MASK_BAD_PROVIDER, rules.file, rule.line, rule.actionPosition,
                                error.what());
            }
        }
        searched += (searched.empty() ? "" : ", ") + folder;
    }
    rules.fail(rule, rule.actionPosition,
               "there is no provider " + rule.action + ": no module " + std::string(kPrefix) +
                   inLowerCase(name) + std::string(kSuffix) + " in " + searched);
}

void ProviderModules::loadAll() {
    Faults faults;
    for (const std::string& folder : folders_) {
        std::error_code error;
        std::vector<std::string> paths;
        for (std::filesystem::directory_iterator at(folder, error), end; !error && at != end;
             at.increment(error)) {
            paths.push_back(at->path().string());
        }
        if (error) {
            faults.collect(
                [&] { throw MaskError(KORV_MASK_BAD_PROVIDER, folder + ": " + error.message()); });
        }
        std::sort(paths.begin(), paths.end());
        for (const std::string& path : paths) {
            std::string file = path.substr(folder.size() + 1);
            if (!file.ends_with(kSuffix)) continue;
            file.resize(file.size() - kSuffix.size());
            if (file.starts_with(kPrefix)) file.erase(0, kPrefix.size());
            const std::string name = inCapitals(file);
            // The first folder that has a module is the one that rules get it from.
            if (!isName(name) || loaded_.contains(name)) continue;
            faults.collect([&] { load(name, path); });
        }
    }
    faults.raise();
}

}  // namespace mask
