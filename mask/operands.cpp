// Operands: description by the provider, text of the rule, and the record made of both.
#include "operands.h"

#include <iterator>
#include <new>
#include <set>

#include "rule_files.h"
#include "text/utf8_text.h"

namespace mask {

namespace {

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

std::string bounds(const PrvOperand& description) {
    return std::to_string(description.minimum) + " to " + std::to_string(description.maximum);
}

}  // namespace

const PrvOperand* describeOperand(const PrvEntry& provider, std::string_view key) {
    for (uint32_t i = 0; i < provider.operandCount; ++i) {
        if (key == provider.operands[i].key) return &provider.operands[i];
    }
    return nullptr;
}

const RuleOperand* relatedColumn(const Rule& rule, const PrvEntry& provider) {
    if (provider.interfaceVersion < 2) return nullptr;
    for (const RuleOperand& operand : rule.operands) {
        const PrvOperand* description = describeOperand(provider, operand.key);
        if (description != nullptr && (description->flags & PRV_OPERAND_COLUMN) != 0) {
            return &operand;
        }
    }
    return nullptr;
}

OperandList::OperandList(const Rules& rules, const Rule& rule, const PrvEntry& provider) {
    std::set<std::string> given;
    for (const RuleOperand& operand : rule.operands) {
        const PrvOperand* description = describeOperand(provider, operand.key);
        if (description == nullptr) {
            rules.fail(rule, operand.position,
                       std::string(provider.name) + " has no operand " + operand.key);
        }
        add(rules, rule, operand, *description);
        given.insert(operand.key);
    }
    for (uint32_t i = 0; i < provider.operandCount; ++i) {
        const PrvOperand& description = provider.operands[i];
        if ((description.flags & PRV_OPERAND_REQUIRED) == 0 || given.contains(description.key)) {
            continue;
        }
        rules.fail(rule, rule.actionPosition,
                   std::string(provider.name) + " needs the operand " + description.key);
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
    const bool standsAlone =
        !operand.hasValue && (description.flags & PRV_OPERAND_OPTIONAL_VALUE) != 0;
    if (standsAlone) param.valueKind = OPR_VALUE_NONE;
    if (!standsAlone && operand.hasValue != (description.kind != OPR_VALUE_NONE)) {
        rules.fail(
            rule, operand.position,
            "operand " + operand.key + (operand.hasValue ? " takes no value" : " needs a value"));
    }
    switch (param.valueKind) {
        case OPR_VALUE_INTEGER: {
            int32_t number = 0;
            if (!parseNumber(operand.value, number) || number < description.minimum ||
                number > description.maximum) {
                rules.fail(
                    rule, operand.position,
                    "operand " + operand.key + " must be a number from " + bounds(description));
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
                narrow = findRuleFile(rules, rule, operand);
                files_.push_back(narrow);
            }
            valueText.codePage = KORV_CODEPAGE_NOT_GIVEN;
            valueText.narrowText = narrow.c_str();
            param.valueLen = static_cast<int32_t>(narrow.size());
            param.value.text = &valueText;
            break;
        default:
            break;
    }

    korv::OperandWithTexts& record = records_.emplace_back();
    if (records_.size() > 1) (*std::prev(records_.end(), 2))->link = record.get();
    switch (CopyParamsStruct(&param, record.get(), text::kUtf8CodePage, 0)) {
        case KORV_SUCCESS:
            return;
        case KORV_NO_MEMORY_WIDE_VALUE:
        case KORV_NO_MEMORY_NARROW_VALUE:
            throw std::bad_alloc();
        default:
            rules.fail(rule, operand.position, "operand " + operand.key + " cannot be converted");
    }
}

}  // namespace mask
