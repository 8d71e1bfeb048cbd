// Finds a provider's module by the name that a rule gives, and loads it once.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "host/rules.h"
#include "provider.h"

namespace host {

struct CloseModule {
    void operator()(void* handle) const;
};

struct Provider {
    int32_t number;  // by GetProviderID
    std::string name;
    std::string module;  // file name
    const PrvEntry* entry;
    std::unique_ptr<void, CloseModule> handle;
};

class ProviderLoader {
  public:
    // An empty `folder` means lib/korv-providers next to the folder of the running program, or the
    // folder of the installed modules.
    explicit ProviderLoader(const std::string& folder);
    ProviderLoader(const ProviderLoader&) = delete;
    ProviderLoader& operator=(const ProviderLoader&) = delete;

    // The provider that the rule names; throws HostError with the name's position.
    const Provider& load(const Rules& rules, const Rule& rule);

  private:
    std::string folder_;
    std::map<int32_t, Provider> loaded_;
};

}  // namespace host
