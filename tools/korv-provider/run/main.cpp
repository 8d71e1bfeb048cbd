// korv-provider-run: loads a provider module and runs one test, or tells what the module says of
// itself. It is started by korv-provider, with the channels of helper_channel.h.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <map>
#include <new>
#include <stdexcept>
#include <string>

#include "catalogue.h"
#include "checks.h"
#include "mask/mask_error.h"
#include "mask/provider_tables.h"

namespace kit {

namespace {

Settings parseArguments(int argc, char** argv) {
    if (argc < 2) throw std::runtime_error("the module is missing");
    Settings settings;
    settings.module = argv[1];
    std::string seed, seconds;
    const std::map<std::string, std::string*> options = {
        {"--task", &settings.task},
        {"--test", &settings.test},
        {"--rule", &settings.rule},
        {"--files", &settings.files},
        {"--values", &settings.values},
        {"--replay", &settings.replay},
        {"--seed", &seed},
        {"--seconds", &seconds},
    };
    for (int i = 2; i + 1 < argc; i += 2) {
        const auto option = options.find(argv[i]);
        if (option == options.end()) throw std::runtime_error("unknown option");
        *option->second = argv[i + 1];
    }
    if (!seed.empty()) settings.seed = std::strtoull(seed.c_str(), nullptr, 10);
    if (!seconds.empty()) settings.seconds = static_cast<unsigned>(std::atoi(seconds.c_str()));
    return settings;
}

const TestInfo& findTest(const std::string& number) {
    for (const TestInfo& test : allTests()) {
        if (std::to_string(test.level) + "." + std::to_string(test.number) == number) return test;
    }
    throw std::runtime_error("there is no test " + number);
}

Test functionOf(const TestInfo& info) {
    using Group = std::vector<NamedTest> (*)();
    constexpr Group kGroups[] = {loadingTests,     tableTests, openTests,         maskTests,
                                 determinismTests, errorTests, surroundingsTests, promiseTests,
                                 vectorTests,      fuzzTests};
    for (const NamedTest& test : kGroups[info.level - 1]()) {
        if (std::strcmp(test.name, info.name) == 0) return test.run;
    }
    throw std::runtime_error("test " + info.title() + " has no function");
}

// The module as the engine would have it; its tables must be sound.
struct Module {
    explicit Module(const std::string& path) {
        module.handle = loadModule(path);
        const PrvEntryFunction function = findEntry(module.handle.get());
        if (function == nullptr) throw std::runtime_error("it does not export " PRV_ENTRY_SYMBOL);
        module.entry = function();
        module.path = path;
        const PrvEntry* const entry = module.entry;
        if (entry != nullptr && entry->name != nullptr) module.name = mask::moduleName(entry->name);
        const std::string fault = mask::entryFault(entry, module.name);
        if (!fault.empty()) throw std::runtime_error(fault);
    }

    mask::ProviderModule module;
};

std::string kindName(int32_t kind) {
    constexpr const char* kNames[] = {"flag", "integer", "wide text", "narrow text"};
    return kNames[kind];
}

std::string flagsText(uint16_t flags) {
    constexpr std::pair<uint16_t, const char*> kNames[] = {
        {PRV_OPERAND_REQUIRED, "required"},
        {PRV_OPERAND_PATH, "path"},
        {PRV_OPERAND_COLUMN, "column"},
        {PRV_OPERAND_CHECK, "check"},
        {PRV_OPERAND_OPTIONAL_VALUE, "optional value"}};
    std::string text;
    for (const auto& [flag, name] : kNames) {
        if ((flags & flag) != 0) text += (text.empty() ? "" : ", ") + std::string(name);
    }
    return text;
}

std::string promisesText(uint32_t promises) {
    constexpr std::pair<uint32_t, const char*> kNames[] = {{PRV_PROMISE_ONE_TO_ONE, "one-to-one"},
                                                           {PRV_PROMISE_LENGTH_KEPT, "length kept"},
                                                           {PRV_PROMISE_FORMAT_KEPT, "format kept"},
                                                           {PRV_PROMISE_REVERSIBLE, "reversible"}};
    std::string text;
    for (const auto& [promise, name] : kNames) {
        if ((promises & promise) != 0) text += (text.empty() ? "" : ", ") + std::string(name);
    }
    return text.empty() ? "none" : text;
}

void sendPromises(const mask::ProviderModule& module, Settings settings, const char* rule) {
    settings.rule = rule;
    doing("opening the rule ", rule);
    try {
        const std::string reason = reasonNotToRun(settings);
        const std::string text = reason.empty() ? promisesText(Session(module, settings).promises())
                                                : "unknown: " + reason;
        send({"rule", rule, text});
    } catch (const mask::MaskError& error) {
        send({"rule", rule, std::string("unknown: ") + error.what()});
    }
}

// The tables as records of inspect.cpp.
void inspect(const Settings& settings) {
    const Module loaded(settings.module);
    const PrvEntry& entry = *loaded.module.entry;
    send({"provider", entry.name, std::to_string(GetProviderID(loaded.module.name.c_str())),
          std::to_string(entry.interfaceVersion)});
    for (uint32_t i = 0; i < entry.operandCount; ++i) {
        const PrvOperand& operand = entry.operands[i];
        const bool isNumber = operand.kind == OPR_VALUE_INTEGER;
        send({"operand", operand.key, std::to_string(operand.code), kindName(operand.kind),
              isNumber ? std::to_string(operand.minimum) : "",
              isNumber ? std::to_string(operand.maximum) : "", flagsText(operand.flags)});
    }
    for (uint32_t i = 0; i < entry.errorCount; ++i) {
        send({"error", std::to_string(entry.errors[i].code), entry.errors[i].text});
    }
    if (loaded.module.isVersion3()) {
        for (uint32_t i = 0; i < entry.methodCount; ++i) {
            const bool isKeyed = (entry.methods[i].flags & PRV_METHOD_KEYED) != 0;
            send({"method", entry.methods[i].name, isKeyed ? "with a secret" : "without a secret"});
        }
    }
    if (!loaded.module.isVersion2()) return;
    send({"functions", entry.maskBatch == nullptr ? "" : "maskBatch",
          entry.unmask == nullptr ? "" : "unmask"});
    for (uint32_t i = 0; i < entry.sampleRuleCount; ++i) {
        sendPromises(loaded.module, settings, entry.sampleRules[i]);
    }
}

// A task or test for a rule.
void runForRule(const Settings& settings, const TestInfo* test) {
    try {
        const Module loaded(settings.module);
        const std::string reason = reasonNotToRun(settings);
        if (!reason.empty()) return notRun(reason);
        const Context context = {settings, &loaded.module};
        test == nullptr ? sendResults(context) : functionOf (*test)(context);
    } catch (const mask::MaskError& error) {
        const bool isTested = test != nullptr && std::strcmp(test->name, "rule-opens") == 0;
        isTested ? finding(error.what())
                 : send({"refused", std::string("the rule is refused: ") + error.what()});
    }
}

void run(const Settings& settings) {
    const EngineLocale locale;
    if (settings.task == "inspect") return inspect(settings);
    if (settings.task == "results") return runForRule(settings, nullptr);
    const TestInfo& test = findTest(settings.test);
    if (test.scope == Scope::rule) return runForRule(settings, &test);
    functionOf(test)({settings, nullptr});
}

}  // namespace

}  // namespace kit

int main(int argc, char** argv) {
    if (!kit::openChannels()) {
        std::fputs("korv-provider-run is started by korv-provider, which runs the tests.\n",
                   stderr);
        return 2;
    }
    try {
        kit::run(kit::parseArguments(argc, argv));
    } catch (const std::bad_alloc&) {
        kit::finding("out of memory");
    } catch (const std::exception& error) {
        kit::finding(error.what());
    }
    kit::send({"done"});
    return 0;
}
