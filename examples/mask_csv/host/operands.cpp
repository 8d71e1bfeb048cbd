// Operands: description by the provider, text of the rule, and the record made of both.
#include "host/operands.h"

#include <cstdlib>
#include <cstring>

#include "text/utf8_text.h"

namespace host {

namespace {

const PrvOperand* describe(const PrvEntry& provider, const std::string& key) {
    for (uint32_t i = 0; i < provider.operandCount; ++i) {
        if (key == provider.operands[i].key) return &provider.operands[i];
    }
    return nullptr;
}

// A decimal number of up to nine digits with an optional sign.
bool parseNumber(const std::string& text, int32_t& number) {
    const bool negative = !text.empty() && text[0] == '-';
    const size_t first = negative || (!text.empty() && text[0] == '+') ? 1 : 0;
    const size_t digits = text.size() - first;
    if (digits < 1 || digits > 9) return false;
    const auto count = static_cast<int16_t>(digits);
    if (PXNumToLong(text.data() + first, count, count, &number) != 0) return false;
    if (negative) number = -number;
    return true;
}

std::string resolvePath(const std::string& rulesFile, const std::string& path) {
    const size_t slash = rulesFile.rfind('/');
    if (path[0] == '/' || slash == std::string::npos) return path;
    return rulesFile.substr(0, slash + 1) + path;
}

std::string bounds(const PrvOperand& description) {
    return std::to_string(description.minimum) + " to " + std::to_string(description.maximum);
}

}  // namespace

OperandList::OperandList(const Rules& rules, const Rule& rule, const PrvEntry& provider) {
    for (const RuleOperand& operand : rule.operands) {
        const PrvOperand* description = describe(provider, operand.key);
        if (description == nullptr) {
            rules.fail(rule, operand.position,
                       std::string(provider.name) + " has no operand " + operand.key);
        }
        add(rules, rule, operand, *description);
    }
    for (uint32_t i = 0; i < provider.operandCount; ++i) {
        const PrvOperand& description = provider.operands[i];
        if ((description.flags & PRV_OPERAND_REQUIRED) == 0) continue;
        bool given = false;
        for (const RuleOperand& operand : rule.operands) given |= operand.key == description.key;
        if (!given) {
            rules.fail(rule, rule.providerPosition,
                       std::string(provider.name) + " needs the operand " + description.key);
        }
    }
}

void OperandList::add(const Rules& rules, const Rule& rule, const RuleOperand& operand,
                      const PrvOperand& description) {
    const std::wstring key = text::toWide(operand.key);
    const TextDesc keyText = {{key.c_str()}, KORV_CODEPAGE_NOT_GIVEN, nullptr};
    std::string narrow = operand.value;
    std::wstring wide;
    TextDesc valueText = {};

    ParamDesc param = {};
    param.oprCode = description.code;
    param.oprTextMode = KORV_TEXT_WIDE;
    param.oprTextLen = static_cast<uint32_t>((key.size() + 1) * sizeof(wchar_t));
    param.oprText = &keyText;
    param.valueKind = description.kind;
    if (operand.hasValue != (description.kind != OPR_VALUE_NONE)) {
        rules.fail(
            rule, operand.position,
            "operand " + operand.key + (operand.hasValue ? " takes no value" : " needs a value"));
    }
    switch (description.kind) {
        case OPR_VALUE_INTEGER: {
            int32_t number = 0;
            if (!parseNumber(operand.value, number) || number < description.minimum ||
                number > description.maximum) {
                rules.fail(rule, operand.position,
                           "operand " + operand.key + " is a number of " + bounds(description));
            }
            param.value.number = static_cast<uint32_t>(number);
            break;
        }
        case OPR_VALUE_WIDE:
            wide = text::toWide(operand.value);
            valueText.head.wideText = wide.c_str();
            param.valueLen = static_cast<int32_t>(wide.size() * sizeof(wchar_t));
            param.value.text = &valueText;
            break;
        case OPR_VALUE_NARROW:
            if ((description.flags & PRV_OPERAND_PATH) != 0) {
                narrow = resolvePath(rules.file, narrow);
            }
            valueText.codePage = KORV_CODEPAGE_NOT_GIVEN;
            valueText.narrowText = narrow.c_str();
            param.valueLen = static_cast<int32_t>(narrow.size());
            param.value.text = &valueText;
            break;
        default:
            break;
    }

    Record& record = records_.emplace_back();
    if (records_.size() > 1) std::prev(records_.end(), 2)->link = &record;
    if (CopyParamsStruct(&param, &record, text::kUtf8CodePage, 0) != 0) {
        rules.fail(rule, operand.position, "operand " + operand.key + " cannot be taken over");
    }
}

OperandList::Record::~Record() {
    std::free(oprText);
    std::free(wideValue);
    std::free(narrowValue);
}

}  // namespace host
