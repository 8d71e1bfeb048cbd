// Provider modules: found by the name that a rule gives, checked, and loaded once for each handle.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "korv/provider.h"
#include "rules.h"

namespace mask {

struct CloseModule {
    void operator()(void* handle) const;
};

struct ProviderModule {
    std::string name;
    std::string path;
    const PrvEntry* entry;
    std::unique_ptr<void, CloseModule> handle;

    bool isVersion2() const { return entry->interfaceVersion >= 2; }
    bool isVersion3() const { return entry->interfaceVersion >= 3; }
    // The meaning of an error's first code.
    const char* meaning(uint32_t code) const;
};

class ProviderModules {
  public:
    // Without folders: the folder korv-providers beside this library, or the installed one.
    explicit ProviderModules(std::vector<std::string> folders);

    // The provider that the rule names. Throws MaskError.
    const ProviderModule& load(const Rules& rules, const Rule& rule);
    // Loads every module in the folders. Throws MaskError with all that cannot be loaded.
    void loadAll();

    const std::map<std::string, ProviderModule>& loaded() const { return loaded_; }

  private:
    const ProviderModule& load(const std::string& name, const std::string& path);

    std::vector<std::string> folders_;
    std::map<std::string, ProviderModule> loaded_;  // by name
};

}  // namespace mask
