// Loading of provider modules.
#include "host/provider_loader.h"

#include <dlfcn.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>
#include <utility>

#include "host/host_error.h"
#include "korv/korv.h"
#include "text/utf8_text.h"

namespace host {

namespace {

// The modules by provider number, as GetProviderID gives it: COL is AFF by another name.
const wchar_t* const kModules[KORV_PROVIDER_UNKNOWN] = {
    nullptr, L"ccn", L"nid",   L"eml",    L"aff",    L"hash",
    L"age",  L"lkp", L"dswap", L"ddswap", L"cdswap",
};

std::string folderOfProgram() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? "." : program.parent_path().string();
}

// In a build folder the modules lie next to the program's folder, otherwise where they were
// installed.
std::string folderOfModules() {
    const std::string program = folderOfProgram() + "/";
    std::string folder = program + "../lib/korv-providers";
#ifdef MASK_CSV_PROVIDERS
    if (::access(folder.c_str(), X_OK) != 0) {
        folder = MASK_CSV_PROVIDERS;
        if (folder.front() != '/') folder.insert(0, program);
    }
#endif
    return folder;
}

// What the framework knows of a provider, as the library hands it to others: a provider record with
// its name and the file name of its module in narrow text.
Provider describe(const std::string& name, int32_t number) {
    const std::wstring wideName = text::toWide(name);
    const std::wstring module = std::wstring(L"libkorvprv_") + kModules[number] + L".so";
    PrvDesc description = {};
    description.prvCode1 = static_cast<uint8_t>(number);
    description.text1 = wideName.c_str();
    description.text1Len = static_cast<uint32_t>(wideName.size());
    description.text2 = module.c_str();
    description.text2Len = static_cast<uint32_t>(module.size());

    char nameBuffer[32];
    char moduleBuffer[64];
    void* texts[] = {nameBuffer, moduleBuffer};
    PrvRecord record = {};
    record.text1Cap = sizeof nameBuffer;
    record.text2Cap = sizeof moduleBuffer;
    record.texts = texts;
    if (CopyPrvStruct(&record, &description, text::kUtf8CodePage, 0, KORV_TEXT_NARROW) != 0) {
        throw HostError("provider " + name + " cannot be described");
    }
    return {record.prvCode1, nameBuffer, moduleBuffer, nullptr, nullptr};
}

}  // namespace

void CloseModule::operator()(void* handle) const {
    ::dlclose(handle);
}

ProviderLoader::ProviderLoader(const std::string& folder)
    : folder_(folder.empty() ? folderOfModules() : folder) {}

const Provider& ProviderLoader::load(const Rules& rules, const Rule& rule) {
    const int32_t number = GetProviderID(rule.provider.c_str());
    if (number == KORV_PROVIDER_UNKNOWN) {
        rules.fail(rule, rule.providerPosition, "there is no provider " + rule.provider);
    }
    const auto known = loaded_.find(number);
    if (known != loaded_.end()) return known->second;

    Provider provider = describe(rule.provider, number);
    const std::string path = folder_ + "/" + provider.module;
    if (::access(path.c_str(), F_OK) != 0) {
        rules.fail(rule, rule.providerPosition,
                   "provider " + rule.provider + " has no module: there is no file " + path +
                       " (--providers names the folder)");
    }
    provider.handle.reset(::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (provider.handle == nullptr) {
        rules.fail(rule, rule.providerPosition,
                   "provider " + rule.provider + " cannot be loaded: " + ::dlerror());
    }
    const auto entry =
        reinterpret_cast<PrvEntryFunction>(::dlsym(provider.handle.get(), PRV_ENTRY_SYMBOL));
    provider.entry = entry == nullptr ? nullptr : entry();
    if (provider.entry == nullptr || provider.entry->interfaceVersion != PRV_INTERFACE_VERSION) {
        rules.fail(rule, rule.providerPosition, path + " is no provider of this host's version");
    }
    return loaded_.emplace(number, std::move(provider)).first->second;
}

}  // namespace host
