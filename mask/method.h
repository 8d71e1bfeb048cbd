// Which method of a provider a rule uses, and the key for it.
#pragma once

#include <cstdint>
#include <string>

#include "provider_module.h"
#include "rules.h"
#include "secrets/secrets.h"

namespace mask {

struct MethodChoice {
    const PrvMethod* method = nullptr;  // nullptr when the provider has none
    std::string secret;                 // its name; empty for a method without one
    std::string fingerprint;
    std::string scope;
    const uint8_t* key = nullptr;  // of kKeyBytes
    bool mustBeUnique = false;

    bool isKeyed() const { return method != nullptr && (method->flags & PRV_METHOD_KEYED) != 0; }
    bool isDisguise() const { return method != nullptr && !isKeyed(); }
};

// Takes the operands METHOD, SECRET, SCOPE and UNIQUE out of the rule. An operand that a provider
// of an earlier version declares itself stays. The key is put into `keys`. Throws MaskError.
MethodChoice chooseMethod(const Rules& rules, Rule& rule, const ProviderModule& module,
                          const secrets::Secrets& secrets, bool strict, secrets::SecretPages& keys);

// The method and the operands that the results depend on, as text.
std::string mappingOf(const Rule& rule, const PrvEntry& provider, const MethodChoice& choice);

}  // namespace mask
