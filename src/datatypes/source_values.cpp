// Lengths of source values, and their classification into text and numbers.
#include <algorithm>
#include <cstring>
#include <cwchar>

#include "common/length_prefix.h"
#include "datatypes/catalogue.h"

namespace korv {
namespace {

// Characters of zero-terminated text with the given unit.
std::size_t terminatedLength(const void* data, uint8_t unit) noexcept {
    return unit == sizeof(char) ? std::strlen(static_cast<const char*>(data))
                                : std::wcslen(static_cast<const wchar_t*>(data));
}

int32_t completeLength(ValueRecord& value, const DataType& type) noexcept {
    switch (type.family) {
        case Family::fixedText:
        case Family::opaqueNumber:
            return KORV_SUCCESS;
        case Family::number:
        case Family::moment:
            value.length = type.bytes;
            return KORV_SUCCESS;
        case Family::variableText:
            if (value.length <= 0) {
                // Only the low half takes the prefix: what stood in the high half stays.
                const uint32_t high = static_cast<uint32_t>(value.length) & 0xFFFF0000u;
                const auto low = static_cast<uint16_t>(lengthPrefix(value.data));
                value.length = static_cast<int32_t>((high | low) + sizeof low);
            }
            return KORV_SUCCESS;
        case Family::terminatedText:
            if (value.length <= 0) {
                const auto length = static_cast<int16_t>(terminatedLength(value.data, type.unit));
                value.length = length * type.unit + type.unit;
            }
            return KORV_SUCCESS;
        default:
            return KORV_FAILURE;
    }
}

void characterLength(const ValueRecord& value, const FieldDefI& field, int32_t& length) noexcept {
    if (value.nullIndicator == 1 || !value.data) {
        length = -1;
        return;
    }
    const DataType& type = dataType(field.dataType);
    const int32_t unit = type.unit;
    if (type.family == Family::fixedText) {
        length = value.length / unit;
    } else if (type.family == Family::variableText) {
        length = lengthPrefix(value.data) / unit;
    } else if (type.family == Family::terminatedText) {
        length = static_cast<int32_t>(terminatedLength(value.data, type.unit));
    } else if (type.family != Family::unknown) {
        length = type.textLength;
    }
}

int32_t processingClass(const DataType& type) noexcept {
    if (isText(type)) return KORV_CLASS_TEXT;
    const bool isNumber = type.family == Family::number || type.family == Family::opaqueNumber;
    return isNumber ? KORV_CLASS_NUMBER : KORV_CLASS_NONE;
}

int32_t prepare(const CtrlBlkI& context, ValueRecord& value, ValueRecord& result) noexcept {
    if (context.blkCode != 0) {
        value.copiedLength = std::min(value.capacity, value.length);
        if (value.copiedLength > 0) {
            std::memmove(value.target, value.data, static_cast<std::size_t>(value.copiedLength));
        }
    }
    value.processingClass = processingClass(dataType(context.fieldRefs.fieldDef->dataType));
    result.secondFlag = 0;
    return value.processingClass;
}

}  // namespace
}  // namespace korv

int32_t GetSrcBufLen(ValueRecord* value, int16_t code) {
    return korv::completeLength(*value, korv::dataType(code));
}

int32_t KORVGetSourceDataLen(const ValueRecord* value, const FieldDefI* field, int32_t* length) {
    korv::characterLength(*value, *field, *length);
    return KORV_SUCCESS;
}

int32_t KORV_IsZeroOrZeroLength(const CtrlBlkI* context, ValueRecord* value, ValueRecord* result) {
    return korv::prepare(*context, *value, *result);
}
