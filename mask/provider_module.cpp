// Finding, checking and loading of provider modules.
#include "provider_module.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include "mask_error.h"
#include "provider_tables.h"

namespace mask {

namespace {

constexpr std::string_view kPrefix = "libkorvprv_";
constexpr std::string_view kSuffix = ".so";

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

// Users who can write the file could run code in this process.
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
