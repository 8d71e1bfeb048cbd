// Values, operands and errors on the provider's side of a request.
#include "providers/provider_support.h"

#include <utility>

#include "text/utf8_text.h"

namespace provider {

const OprDefX* Operands::find(uint16_t code) const {
    const OprDefX* operand = service_.oprDefs;
    while (operand != nullptr && operand->oprCode != code) operand = operand->link;
    return operand;
}

int32_t Operands::number(uint16_t code, int32_t otherwise) const {
    const OprDefX* operand = find(code);
    return operand == nullptr ? otherwise : static_cast<int32_t>(operand->intValue);
}

std::wstring Operands::wide(uint16_t code) const {
    const OprDefX* operand = find(code);
    return operand == nullptr || operand->wideValue == nullptr ? L"" : operand->wideValue;
}

std::string Operands::narrow(uint16_t code) const {
    const OprDefX* operand = find(code);
    return operand == nullptr || operand->narrowValue == nullptr ? "" : operand->narrowValue;
}

Replacement::Replacement(std::wstring text) : narrow(text::toUtf8(text)), wide(std::move(text)) {}

uint32_t mix(uint32_t key, uint32_t position) {
    uint64_t x = (static_cast<uint64_t>(key) << 32 | position) + 0x9E3779B97F4A7C15u;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9u;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBu;
    return static_cast<uint32_t>((x ^ (x >> 31)) >> 1) & 0x7FFFFFFF;
}

bool takeValue(const PrvCall& call, int32_t& characters) {
    ValueRecord& value = *call.value;
    const FieldDefX& field = *call.block->fieldRefs.fieldDef;
    KORVGetSourceDataLen(&value, call.context->fieldRefs.fieldDef, &characters);
    if (characters <= 0) {
        call.result->nullIndicator = 1;
        return false;
    }
    if (characters > kLongestValue) {
        throw Error(kValueTooLong,
                    {{KORV_TOKID_SRCLEN, characters}, {KORV_TOKID_EXPSRCLEN, kLongestValue}});
    }
    if (GetSrcBufLen(&value, field.dataType) != 0) {
        throw Error(kNotText, {{KORV_TOKID_DATATYPE, field.dataType}});
    }
    if (value.length > value.capacity) {
        throw Error(kValueTooLong, {{KORV_TOKID_BUF_EXPECTED_LEN, value.length},
                                    {KORV_TOKID_BUFFER_SIZE, value.capacity}});
    }
    if (KORV_IsZeroOrZeroLength(call.context, &value, call.result) != KORV_CLASS_TEXT ||
        (field.dataType != VARCHAR_SZ && field.dataType != WVARCHAR_SZ)) {
        throw Error(kNotText, {{KORV_TOKID_DATATYPE, field.dataType}});
    }
    return true;
}

int32_t capture(const PrvCall& call, const Error& error) {
    const auto slots = static_cast<int16_t>(error.tokens.size() + 1);
    if (ErrorCapture(call.context, error.code, call.service->svcCode1, slots) != 0) {
        return KORV_FAILURE;
    }
    const FieldDefX* field = call.block->fieldRefs.fieldDef;
    TokenCapture(call.context, field->wideText, WVARCHAR_SZ, KORV_TOKID_COLNAME, 0);
    for (const Token& token : error.tokens) {
        if (const auto* number = std::get_if<int32_t>(&token.value)) {
            TokenCapture(call.context, number, INTEGER, token.id, 0);
        } else {
            const auto& text = std::get<std::wstring>(token.value);
            TokenCapture(call.context, text.c_str(), WVARCHAR_SZ, token.id, 0);
        }
    }
    return static_cast<int32_t>(error.code);
}

}  // namespace provider
