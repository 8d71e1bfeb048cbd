// Level 2: the provider's record and its tables.
#include <stdexcept>
#include <string_view>

#include "checks.h"
#include "mask/mask_error.h"
#include "mask/method.h"
#include "mask/provider_tables.h"
#include "mask/secrets/keys.h"

namespace kit {

namespace {

// The module with the record that its entry function gives, which may be NULL.
struct Loaded {
    explicit Loaded(const Context& context) : handle(loadModule(context.settings.module)) {
        doing("calling KorvProviderEntry");
        const PrvEntryFunction function = findEntry(handle.get());
        if (function == nullptr) throw std::runtime_error("it does not export " PRV_ENTRY_SYMBOL);
        entry = function();
        doing("reading the provider's record");
    }

    std::unique_ptr<void, mask::CloseModule> handle;
    const PrvEntry* entry;
};

void entryRecord(const Context& context) {
    try {
        if (Loaded(context).entry == nullptr) finding(PRV_ENTRY_SYMBOL " returns NULL");
    } catch (const std::runtime_error& error) {
        finding(error.what());
    }
}

// A test by one of the engine's checks.
template <std::string (*check)(const PrvEntry&)>
void tables(const Context& context) {
    const Loaded module(context);
    if (module.entry == nullptr) return notRun(PRV_ENTRY_SYMBOL " returns NULL");
    if (const std::string fault = check(*module.entry); !fault.empty()) finding(fault);
}

void providerName(const Context& context) {
    const Loaded module(context);
    if (module.entry == nullptr) return notRun(PRV_ENTRY_SYMBOL " returns NULL");
    if (const std::string fault = mask::nameFault(*module.entry); !fault.empty()) {
        return finding(fault);
    }
    std::string file = context.settings.module;
    file.erase(0, file.rfind('/') + 1);
    const std::string name = mask::inLowerCase(mask::moduleName(module.entry->name));
    if (file != "libkorvprv_" + name + ".so" && file != name + ".so") {
        finding("the provider calls itself " + std::string(module.entry->name) +
                ", and rules look for it in libkorvprv_" + name + ".so or " + name + ".so, not " +
                file);
    }
}

// A text that is shown as a sentence's part.
void errorTexts(const Context& context) {
    const Loaded module(context);
    if (module.entry == nullptr) return notRun(PRV_ENTRY_SYMBOL " returns NULL");
    if (const std::string fault = mask::errorsFault(*module.entry); !fault.empty()) {
        return finding(fault);
    }
    for (uint32_t i = 0; i < module.entry->errorCount; ++i) {
        const PrvErrorText& error = module.entry->errors[i];
        const std::string_view text = error.text;
        const std::string name = "error " + std::to_string(error.code);
        if (text.empty()) finding(name + " has an empty text");
        if (!isText(text)) finding(name + " has a text that is not UTF-8");
        if (text.ends_with('.')) finding(name + " has a text with a full stop");
    }
}

void checkSample(const mask::ProviderModule& module, const char* text) {
    mask::Rules rules = mask::parseOneRule(text, "rule");
    mask::Rule& rule = rules.rules.front();
    if (mask::moduleName(rule.action) != module.name) {
        finding(std::string("the sample rule '") + text + "' is for another provider");
        return;
    }
    secrets::Secrets secrets;
    const uint8_t secret[16] = {1};
    for (const mask::RuleOperand& operand : rule.operands) {
        if (operand.key != "SECRET") continue;
        if (!secrets::hasCryptography()) return;
        secrets.add(operand.value, secret);
    }
    secrets::SecretPages keys;
    chooseMethod(rules, rule, module, secrets, false, keys);
    const mask::OperandList operands(rules, rule, *module.entry);
}

void sampleRules(const Context& context) {
    const Loaded module(context);
    if (module.entry == nullptr) return notRun(PRV_ENTRY_SYMBOL " returns NULL");
    const PrvEntry& entry = *module.entry;
    if (const std::string fault = mask::samplesFault(entry); !fault.empty()) return finding(fault);
    if (!mask::entryFault(&entry, entry.name == nullptr ? "" : mask::moduleName(entry.name))
             .empty()) {
        return notRun("the tables are at fault");
    }
    if (entry.interfaceVersion < 2 || entry.sampleRuleCount == 0) {
        return note("there are no sample rules; give --rule");
    }
    const mask::ProviderModule provider = {mask::moduleName(entry.name), context.settings.module,
                                           &entry, nullptr};
    for (uint32_t i = 0; i < entry.sampleRuleCount; ++i) {
        const char* const text = entry.sampleRules[i];
        doing("reading the sample rule ", text);
        try {
            checkSample(provider, text);
        } catch (const mask::MaskError& error) {
            finding(std::string("the sample rule '") + text + "' is refused: " + error.what());
        }
    }
}

void sameEntry(const Context& context) {
    const Loaded module(context);
    if (module.entry == nullptr) return notRun(PRV_ENTRY_SYMBOL " returns NULL");
    const std::string first = tablesAsText(*module.entry);
    const PrvEntryFunction function = findEntry(module.handle.get());
    for (int i = 0; i < 100; ++i) {
        const PrvEntry* const again = function();
        if (again != module.entry) {
            return finding("a later call of " PRV_ENTRY_SYMBOL " returns another record");
        }
        if (tablesAsText(*again) != first) {
            return finding("after a later call of " PRV_ENTRY_SYMBOL " the tables are others");
        }
    }
}

void constantTables(const Context& context) {
    const PrvEntry& entry = *context.module->entry;
    const std::string before = tablesAsText(entry);
    {
        Trial trial(context);
        for (const TestValue& value : trial.corpus) trial.mask(value);
    }
    if (tablesAsText(entry) != before) {
        finding("the tables have changed after a rule was opened and values were masked");
    }
}

}  // namespace

std::vector<NamedTest> tableTests() {
    return {{"entry-record", entryRecord},
            {"interface-version", tables<mask::versionFault>},
            {"provider-name", providerName},
            {"functions", tables<mask::functionsFault>},
            {"operand-keys", tables<mask::operandKeysFault>},
            {"operand-kinds", tables<mask::operandKindsFault>},
            {"operand-bounds", tables<mask::operandBoundsFault>},
            {"error-texts", errorTexts},
            {"method-names", tables<mask::methodsFault>},
            {"sample-rules", sampleRules},
            {"same-entry", sameEntry},
            {"constant-tables", constantTables}};
}

}  // namespace kit
