// The checks of a provider's record, one function for each part of it.
#include "provider_tables.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <span>

namespace mask {

namespace {

constexpr size_t kLongestName = 31;

bool isName(const char* name) {
    return name != nullptr && mask::isName(std::string_view(name));
}

std::span<const PrvOperand> operandsOf(const PrvEntry& entry) {
    if (entry.operands == nullptr) return {};
    return {entry.operands, entry.operandCount};
}

std::string titleOf(const PrvOperand& operand) {
    return std::string("operand ") + (operand.key == nullptr ? "without a key" : operand.key);
}

// What the engine takes out of the rules for providers of version 3.
bool isReserved(std::string_view key) {
    return key == "METHOD" || key == "SCOPE" || key == "SECRET" || key == "UNIQUE";
}

}  // namespace

bool isName(std::string_view name) {
    const auto isCapital = [](char c) { return c >= 'A' && c <= 'Z'; };
    const auto isPart = [&](char c) { return isCapital(c) || (c >= '0' && c <= '9') || c == '_'; };
    return !name.empty() && name.size() <= kLongestName && isCapital(name[0]) &&
           std::all_of(name.begin(), name.end(), isPart);
}

std::string inLowerCase(std::string name) {
    for (char& c : name) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return name;
}

std::string inCapitals(std::string name) {
    for (char& c : name) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return name;
}

std::string moduleName(const std::string& name) {
    return GetProviderID(name.c_str()) == GetProviderID("AFF") ? "AFF" : name;
}

std::string versionFault(const PrvEntry& entry) {
    if (entry.interfaceVersion >= 1 && entry.interfaceVersion <= PRV_INTERFACE_VERSION) return {};
    return "it has version " + std::to_string(entry.interfaceVersion) +
           " of the provider interface, which is not supported";
}

std::string nameFault(const PrvEntry& entry) {
    return isName(entry.name) ? "" : "its name is not a name in capitals";
}

std::string functionsFault(const PrvEntry& entry) {
    const bool areThere = entry.open != nullptr && entry.mask != nullptr && entry.close != nullptr;
    return areThere ? "" : "one of its functions open, mask and close is NULL";
}

std::string operandKeysFault(const PrvEntry& entry) {
    if (entry.operandCount > 0 && entry.operands == nullptr) return "operands is NULL";
    std::set<std::string_view> keys;
    std::set<uint16_t> codes;
    for (const PrvOperand& operand : operandsOf(entry)) {
        if (!isName(operand.key)) return "an operand key is not a name in capitals";
        const std::string_view key = operand.key;
        if (key == "TYPE" || key == "UNCHANGED" ||
            (entry.interfaceVersion >= 3 && isReserved(key))) {
            return titleOf(operand) + " is the engine's own";
        }
        if (!keys.insert(key).second) return titleOf(operand) + " is listed twice";
        if (!codes.insert(operand.code).second) {
            return "two operands have the code " + std::to_string(operand.code);
        }
    }
    return {};
}

std::string operandKindsFault(const PrvEntry& entry) {
    constexpr uint16_t kNarrowOnly = PRV_OPERAND_PATH | PRV_OPERAND_COLUMN;
    int columns = 0;
    for (const PrvOperand& operand : operandsOf(entry)) {
        if (operand.kind < OPR_VALUE_NONE || operand.kind > OPR_VALUE_NARROW) {
            return titleOf(operand) + " has the unknown kind " + std::to_string(operand.kind);
        }
        if ((operand.flags & kNarrowOnly) != 0 && operand.kind != OPR_VALUE_NARROW) {
            return titleOf(operand) +
                   " names a file or a column and is not of the kind OPR_VALUE_NARROW";
        }
        if ((operand.flags & PRV_OPERAND_COLUMN) != 0 && ++columns > 1) {
            return "more than one operand names a column";
        }
    }
    return {};
}

std::string operandBoundsFault(const PrvEntry& entry) {
    for (const PrvOperand& operand : operandsOf(entry)) {
        if (operand.kind == OPR_VALUE_INTEGER && operand.minimum > operand.maximum) {
            return titleOf(operand) + " has a minimum above its maximum";
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

std::string entryFault(const PrvEntry* entry, const std::string& name) {
    if (entry == nullptr) return PRV_ENTRY_SYMBOL " returns NULL";
    for (const auto check : {versionFault, nameFault}) {
        if (std::string fault = check(*entry); !fault.empty()) return fault;
    }
    if (moduleName(entry->name) != name) {
        return std::string("it calls itself ") + entry->name + ", not " + name;
    }
    for (const auto check : {functionsFault, operandKeysFault, operandKindsFault,
                             operandBoundsFault, errorsFault, samplesFault, methodsFault}) {
        if (std::string fault = check(*entry); !fault.empty()) return fault;
    }
    return {};
}

}  // namespace mask
