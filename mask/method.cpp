// Methods, secrets and scopes of rules.
#include "method.h"

#include <algorithm>
#include <optional>
#include <span>
#include <vector>

#include "operands.h"
#include "secrets/keys.h"
#include "secrets/secret_text.h"

namespace mask {

namespace {

constexpr size_t kLongestScope = 500;

std::span<const PrvMethod> methodsOf(const ProviderModule& module) {
    if (!module.isVersion3()) return {};
    return {module.entry->methods, module.entry->methodCount};
}

bool isKeyed(const PrvMethod& method) {
    return (method.flags & PRV_METHOD_KEYED) != 0;
}

class Chooser {
  public:
    Chooser(const Rules& rules, Rule& rule, const ProviderModule& module)
        : rules_(rules), rule_(rule), module_(module), methods_(methodsOf(module)) {}

    MethodChoice choose(const secrets::Secrets& secrets, bool strict, secrets::SecretPages& keys) {
        MethodChoice choice;
        const auto unique = take("UNIQUE");
        if (unique && unique->hasValue) fail(*unique, "operand UNIQUE takes no value");
        choice.mustBeUnique = unique.has_value();
        const auto method = take("METHOD");
        const auto secret = take("SECRET");
        const auto scope = take("SCOPE");
        if (methods_.empty()) {
            for (const auto& operand : {method, secret, scope}) {
                if (operand) fail(*operand, name() + " has no operand " + operand->key);
            }
            return choice;
        }
        choice.method = pick(method, secret);
        if (strict && choice.isDisguise()) {
            fail(rule_.actionPosition, disguised(choice) + ", which --strict refuses");
        }
        if (!choice.isKeyed()) {
            for (const auto& operand : {secret, scope}) {
                if (!operand) continue;
                fail(*operand, "method " + std::string(choice.method->name) +
                                   " has no secret; leave out " + operand->key);
            }
            return choice;
        }
        if (!secret) {
            fail(rule_.actionPosition,
                 "method " + std::string(choice.method->name) + " needs secret=NAME");
        }
        if (scope && !scope->hasValue) fail(*scope, "operand SCOPE needs a value");
        if (scope && scope->value.size() > kLongestScope) {
            fail(*scope, "operand SCOPE has more than " + std::to_string(kLongestScope) + " bytes");
        }
        if (scope) choice.scope = scope->value;
        choice.secret = nameIn(*secret);
        deriveKey(*secret, secrets.find(choice.secret), choice, keys);
        return choice;
    }

  private:
    std::string name() const { return module_.entry->name; }
    static std::string disguised(const MethodChoice& choice) {
        return "method " + std::string(choice.method->name) + " is a disguise";
    }

    [[noreturn]] void fail(uint32_t position, const std::string& message) const {
        rules_.fail(rule_, position, message);
    }
    [[noreturn]] void fail(const RuleOperand& operand, const std::string& message) const {
        fail(operand.position, message);
    }

    std::optional<RuleOperand> take(const char* key) {
        if (methods_.empty() && describeOperand(*module_.entry, key) != nullptr)
            return std::nullopt;
        return takeOperand(rule_, key);
    }

    // The methods' names, or those with or without a secret: "transpose", "shuffle or reverse".
    template <class Test>
    std::string names(Test test) const {
        std::vector<std::string> names;
        for (const PrvMethod& method : methods_) {
            if (test(method)) names.emplace_back(method.name);
        }
        std::string text;
        for (size_t i = 0; i < names.size(); ++i) {
            if (i > 0) text += i + 1 < names.size() ? ", " : " or ";
            text += names[i];
        }
        return text;
    }

    const PrvMethod* pick(const std::optional<RuleOperand>& method,
                          const std::optional<RuleOperand>& secret) const {
        if (method) {
            const std::wstring wanted = normalName(method->value);
            for (const PrvMethod& known : methods_) {
                if (method->hasValue && normalName(known.name) == wanted) return &known;
            }
            fail(*method, "operand METHOD of " + name() + " must be " +
                              names([](const PrvMethod&) { return true; }));
        }
        const auto found = std::find_if(methods_.begin(), methods_.end(), isKeyed);
        if (secret && found != methods_.end()) return &*found;
        const std::string disguises = names([](const PrvMethod& known) { return !isKeyed(known); });
        std::string advice;
        if (found != methods_.end()) advice = "add secret=NAME to protect the values";
        if (!disguises.empty()) {
            advice += (advice.empty() ? "add method=" : ", or method=") + disguises +
                      " for data that was masked so before";
        }
        fail(rule_.actionPosition, name() + " needs a secret or a method: " + advice);
    }

    std::string nameIn(const RuleOperand& operand) const {
        if (!operand.hasValue || !secrets::isSecretName(operand.value)) {
            fail(operand, "operand " + operand.key +
                              " is a name of lower-case letters, digits and underscores, a letter "
                              "first; the secret itself belongs into a file");
        }
        return operand.value;
    }

    void deriveKey(const RuleOperand& operand, std::span<const uint8_t> secret,
                   MethodChoice& choice, secrets::SecretPages& keys) const {
        if (!secrets::hasCryptography()) {
            fail(operand, "secrets need libcrypto, and this build is without it");
        }
        if (secret.empty()) {
            fail(operand, "there is no secret " + choice.secret + " among those that are given");
        }
        uint8_t* const key = keys.allocate(secrets::kKeyBytes);
        secrets::deriveKey(secret, choice.scope, name(), choice.method->name, key);
        choice.key = key;
        choice.fingerprint = secrets::fingerprint(secret);
    }

    const Rules& rules_;
    Rule& rule_;
    const ProviderModule& module_;
    std::span<const PrvMethod> methods_;
};

}  // namespace

MethodChoice chooseMethod(const Rules& rules, Rule& rule, const ProviderModule& module,
                          const secrets::Secrets& secrets, bool strict,
                          secrets::SecretPages& keys) {
    return Chooser(rules, rule, module).choose(secrets, strict, keys);
}

std::string mappingOf(const Rule& rule, const PrvEntry& provider, const MethodChoice& choice) {
    std::vector<std::string> operands;
    for (const RuleOperand& operand : rule.operands) {
        const PrvOperand* const description = describeOperand(provider, operand.key);
        const bool isCheck = description != nullptr && provider.interfaceVersion >= 3 &&
                             (description->flags & PRV_OPERAND_CHECK) != 0;
        if (!isCheck) operands.push_back(", " + operand.key + "=" + operand.value);
    }
    std::sort(operands.begin(), operands.end());
    std::string mapping = choice.method == nullptr ? "" : choice.method->name;
    for (const std::string& operand : operands) mapping += operand;
    return mapping;
}

}  // namespace mask
