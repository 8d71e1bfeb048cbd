// Values, operands and errors on the provider's side of a request.
#include "providers/provider_support.h"

#include <algorithm>
#include <utility>

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

std::span<const uint8_t> Operands::key() const {
    if (call_.key == nullptr || call_.keyLength != kKeyBytes) {
        throw Error(kMissingOperand, {{KORV_TOKID_PARMKEY, L"SECRET"}});
    }
    return {call_.key, call_.keyLength};
}

void Operands::require(uint16_t code, const wchar_t* key) const {
    if (!has(code)) throw Error(kMissingOperand, {{KORV_TOKID_PARMKEY, key}});
}

void Operands::refuse(uint16_t code, const wchar_t* key) const {
    if (has(code)) throw Error(kUnfitOperand, {{KORV_TOKID_PARMKEY, key}});
}

std::wstring Operands::wide(uint16_t code) const {
    const OprDefX* operand = find(code);
    return operand == nullptr || operand->wideValue == nullptr ? L"" : operand->wideValue;
}

bool isWord(const std::wstring& text, const wchar_t* word) {
    return !text.empty() && StringWCaseCompare(text.c_str(), word) == 0;
}

std::wstring widen(const std::string& utf8) {
    const bool ascii = text::isPlainAscii(utf8.data(), utf8.size());
    return ascii ? std::wstring(utf8.begin(), utf8.end()) : text::toWide(utf8);
}

Replacement::Replacement(std::wstring text) : narrow(text::toUtf8(text)), wide(std::move(text)) {}

Replacement::Replacement(std::string text) : narrow(std::move(text)), wide(widen(narrow)) {}

uint32_t mix(uint32_t key, uint32_t position) {
    uint64_t x = (static_cast<uint64_t>(key) << 32 | position) + 0x9E3779B97F4A7C15u;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9u;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBu;
    return static_cast<uint32_t>((x ^ (x >> 31)) >> 1) & 0x7FFFFFFF;
}

void failUnfitting(size_t length, int32_t capacity, size_t unit) {
    const auto count = static_cast<int32_t>(std::min<size_t>(length, INT32_MAX));
    if (count > kLongestValue) {
        throw Error(kValueTooLong,
                    {{KORV_TOKID_SRCLEN, count}, {KORV_TOKID_EXPSRCLEN, kLongestValue}});
    }
    const auto bytes = static_cast<int32_t>((length + 1) * unit);
    throw Error(kValueTooLong,
                {{KORV_TOKID_BUF_EXPECTED_LEN, bytes}, {KORV_TOKID_BUFFER_SIZE, capacity}});
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
