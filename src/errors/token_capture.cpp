// Token capture: a typed value becomes wide text in a slot of the newest error record.
#include <algorithm>
#include <cstring>
#include <cwchar>
#include <iterator>

#include "common/heap.h"
#include "common/length_prefix.h"
#include "datatypes/catalogue.h"
#include "errors/error_chain.h"
#include "korv/datacnv.h"

namespace korv {
namespace {

constexpr uint32_t kIntegerBytes = 48;
constexpr uint32_t kSmallIntegerBytes = 28;
constexpr uint32_t kMomentBytes = 200;
constexpr wchar_t kNullText[] = L"<NULL>";

// A conversion of the companion library.
template <class Source>
using Conversion = int32_t (*)(const Source*, const uint32_t*, wchar_t*, uint32_t, uint32_t*,
                               const CnvOptions*);

// A token's text in the making.
struct Text {
    wchar_t*& place;  // where the slot holds it
    uint32_t length;  // characters that are accounted for it
};

// Zero-filled, so that a conversion that fails leaves an empty text, and large enough to end one.
bool makeRoom(Text& text, std::size_t bytes) noexcept {
    text.place = static_cast<wchar_t*>(heap::zeroed(std::max<std::size_t>(bytes, 4)));
    return text.place != nullptr;
}

// Copies `length` characters and their terminator.
int32_t copyText(const wchar_t* source, std::size_t length, Text& text) noexcept {
    text.length = static_cast<uint32_t>(length);
    const std::size_t bytes = (length + 1) * sizeof(wchar_t);
    text.place = static_cast<wchar_t*>(heap::copy(source, bytes, bytes));
    return text.place ? KORV_SUCCESS : KORV_FAILURE;
}

// Converts into a buffer of `bytes`; text.length is the length that is accounted should the
// conversion not say how much it wrote.
template <class Source>
int32_t convert(Conversion<Source> conversion, const void* value, uint32_t sourceLen,
                uint32_t bytes, Text& text) noexcept {
    if (!makeRoom(text, bytes)) return KORV_FAILURE;
    conversion(static_cast<const Source*>(value), &sourceLen, text.place, bytes, &text.length,
               nullptr);
    return KORV_SUCCESS;
}

// `length` is the byte length of fixed text.
int32_t convertText(const void* value, const DataType& type, uint32_t length, Text& text) noexcept {
    const bool wide = type.unit == sizeof(wchar_t);
    if (type.family == Family::fixedText) {
        text.length = length;
        return wide ? convert(KORVCnvWCharToWVarcharSz, value, length, length + 4, text)
                    : convert(KORVCnvCharToWVarcharSz, value, length, length * 4 + 4, text);
    }
    if (type.family == Family::variableText) {
        text.length = static_cast<uint32_t>(lengthPrefix(value) / type.unit);
        return convert(wide ? KORVCnvWVarcharToWVarcharSz : KORVCnvVarcharToWVarcharSz, value, 0,
                       text.length * 4 + 4, text);
    }
    if (wide) {
        const auto* source = static_cast<const wchar_t*>(value);
        return copyText(source, std::wcslen(source), text);
    }
    text.length = static_cast<uint32_t>(std::strlen(static_cast<const char*>(value)));
    return convert(KORVCnvVarcharSzToWVarcharSz, value, 0, text.length * 4 + 4, text);
}

// Zero is written without a conversion, and no character is accounted for it.
template <class Integer>
int32_t convertInteger(Conversion<Integer> conversion, const void* value, uint32_t bytes,
                       Text& text) noexcept {
    Integer number;
    std::memcpy(&number, value, sizeof number);
    if (number != 0) return convert(conversion, value, 0, bytes, text);
    if (!makeRoom(text, bytes)) return KORV_FAILURE;
    text.place[0] = L'0';
    return KORV_SUCCESS;
}

int32_t convertValue(const void* value, const DataType& type, uint32_t length,
                     Text& text) noexcept {
    if (isText(type)) return convertText(value, type, length, text);
    if (type.family == Family::moment) {
        if (!makeRoom(text, kMomentBytes)) return KORV_FAILURE;
        KORVGetStringFromTS(value, text.place, kMomentBytes, &text.length);
        return KORV_SUCCESS;
    }
    switch (type.code) {
        case INTEGER:
            return convertInteger(KORVCnvIntToWVarcharSz1, value, kIntegerBytes, text);
        case U_INTEGER:
            return convertInteger(KORVCnvUIntToWVarcharSz, value, kIntegerBytes, text);
        case SMALLINT:
            return convertInteger(KORVCnvSmallIntToWVarcharSz, value, kSmallIntegerBytes, text);
        case USMALLINT:
            return convertInteger(KORVCnvSmallUIntToWVarcharSz, value, kSmallIntegerBytes, text);
        default:
            return KORV_TOKEN_BAD_TYPE;
    }
}

int32_t capture(ErrorAnchor& anchor, const void* value, const DataType& type, uint32_t tokenId,
                uint32_t length) noexcept {
    ErrorRecord& record = *anchor.tail;
    int16_t index = 0;
    while (index < record.tokenSlotCount && record.tokenSlots[index].tokenId != KORV_TOKID_UNUSED) {
        ++index;
    }
    // Not "<=": one token after the last slot is accepted, and every record has room for it.
    if (record.tokenSlotCount < index) return KORV_TOKEN_NO_SLOT;

    TokenSlot& slot = record.tokenSlots[index];
    slot.tokenId = tokenId;
    slot.text = nullptr;
    Text text{slot.text, 0};
    int32_t status;
    if (value) {
        status = convertValue(value, type, length, text);
    } else {
        status = isText(type) ? copyText(kNullText, std::size(kNullText) - 1, text) : KORV_FAILURE;
    }
    if (status == KORV_SUCCESS) account(anchor, text.length * 4 + 4);
    return status;
}

}  // namespace
}  // namespace korv

int32_t TokenCaptureEAB(ErrorAnchor* anchor, const void* value, int16_t dataType, uint32_t tokenId,
                        uint32_t length) {
    if (!anchor) return KORV_FAILURE;
    if (tokenId >= KORV_TOKID_COUNT) return KORV_TOKEN_BAD_ID;
    return korv::capture(*anchor, value, korv::dataType(dataType), tokenId, length);
}

int32_t TokenCapture(const CtrlBlkI* block, const void* value, int16_t dataType, uint32_t tokenId,
                     uint32_t length) {
    if (tokenId >= KORV_TOKID_COUNT) return KORV_TOKEN_BAD_ID;
    return TokenCaptureEAB(block->errorAnchor, value, dataType, tokenId, length);
}
