// Copies of the framework's parameter, field and provider descriptions into the library's records.
#include <algorithm>
#include <cwchar>

#include "common/heap.h"
#include "korv/ctrlblk.h"
#include "korv/datacnv.h"

namespace korv {
namespace {

// Code page and conversion flag of narrow texts that do not say their own.
struct Defaults {
    uint32_t codePage;
    uint8_t flag;
};

CnvOptions optionsFor(const TextDesc& text, const Defaults& defaults) noexcept {
    CnvOptions options{};
    const bool own = text.codePage != KORV_CODEPAGE_NOT_GIVEN;
    options.codePage = own ? static_cast<uint32_t>(text.codePage) : defaults.codePage;
    options.flag = own ? text.head.flag : defaults.flag;
    return options;
}

// Bytes of a narrow text of `length` bytes in wide form, terminator included.
std::size_t wideRoom(int32_t length) noexcept {
    return (static_cast<std::size_t>(length) + 1) * sizeof(wchar_t);
}

// Widens `length` bytes of narrow text into a buffer of wideRoom bytes; `bytes` receives the size
// of the result with its terminator.
template <class Length>
int32_t widen(const char* narrow, int32_t length, wchar_t* wide, Length& bytes,
              const CnvOptions& options) noexcept {
    const auto sourceLen = static_cast<uint32_t>(length);
    uint32_t written = 0;
    const int32_t status = KORVCnvCharToWVarcharSz(
        narrow, &sourceLen, wide, static_cast<uint32_t>(wideRoom(length)), &written, &options);
    if (status == 0) bytes = static_cast<Length>(written * 4 + 4);
    return status;
}

int32_t copyWideValue(const ParamDesc& source, OprDefI& target) noexcept {
    if (source.valueLen < 0) return KORV_BAD_VALUE_LENGTH;
    if (source.valueLen == 0 || !source.value.text->head.wideText) {
        target.wideValueLen = 0;
        target.wideValue = nullptr;
        return KORV_SUCCESS;
    }
    const auto length = static_cast<uint32_t>(source.valueLen);
    target.wideValueLen = length + 4;
    target.wideValue = static_cast<wchar_t*>(
        heap::copy(source.value.text->head.wideText, length, target.wideValueLen));
    return target.wideValue ? KORV_SUCCESS : KORV_NO_MEMORY_WIDE_VALUE;
}

int32_t copyNarrowValue(const ParamDesc& source, OprDefI& target,
                        const Defaults& defaults) noexcept {
    if (source.valueLen < 0) return KORV_BAD_VALUE_LENGTH;
    if (source.valueLen == 0 || !source.value.text->narrowText) {
        target.wideValueLen = 0;
        target.wideValue = nullptr;
        target.narrowValueLen = 0;
        target.narrowValue = nullptr;
        return KORV_SUCCESS;
    }
    const TextDesc& text = *source.value.text;
    const auto length = static_cast<uint32_t>(source.valueLen);
    target.narrowValueLen = length + 1;
    target.narrowValue = static_cast<char*>(heap::copy(text.narrowText, length, length + 1));
    if (!target.narrowValue) return KORV_NO_MEMORY_NARROW_VALUE;
    target.valueCodePage = text.codePage;
    target.valueFlag = text.head.flag;
    target.wideValue = static_cast<wchar_t*>(heap::zeroed(wideRoom(source.valueLen)));
    if (!target.wideValue) return KORV_NO_MEMORY_WIDE_VALUE;
    return widen(target.narrowValue, source.valueLen, target.wideValue, target.wideValueLen,
                 optionsFor(text, defaults));
}

int32_t copyParameter(const ParamDesc& source, OprDefI& target, const Defaults& defaults) noexcept {
    target.oprCode = source.oprCode;
    target.valueKind = source.valueKind;
    if (source.oprTextMode == KORV_TEXT_WIDE) {
        target.oprTextLen = source.oprTextLen;
        target.oprText = static_cast<wchar_t*>(
            heap::copy(source.oprText->head.wideText, source.oprTextLen, source.oprTextLen));
        if (!target.oprText) return KORV_NO_MEMORY_WIDE_VALUE;
    }
    switch (source.valueKind) {
        case OPR_VALUE_NONE:
            return KORV_SUCCESS;
        case OPR_VALUE_INTEGER:
            target.intValue = source.value.number;
            return KORV_SUCCESS;
        case OPR_VALUE_WIDE:
            return copyWideValue(source, target);
        case OPR_VALUE_NARROW:
            return copyNarrowValue(source, target, defaults);
        default:
            target.otherValue = source.value.number;
            return KORV_SUCCESS;
    }
}

int32_t copyNarrowText(const FieldDesc& source, FieldDefI& target,
                       const Defaults& defaults) noexcept {
    if (!source.text || !source.text->narrowText) return KORV_SUCCESS;
    if (source.textLen <= 0) return KORV_BAD_TEXT_LENGTH;
    const auto length = static_cast<std::size_t>(source.textLen);
    target.narrowTextLen = static_cast<int32_t>(length + 1);
    target.narrowText = static_cast<char*>(heap::copy(source.text->narrowText, length, length + 1));
    if (!target.narrowText) return KORV_NO_MEMORY_NARROW_TEXT;
    target.wideText = static_cast<wchar_t*>(heap::zeroed(wideRoom(source.textLen)));
    if (!target.wideText) return KORV_NO_MEMORY_WIDE_TEXT;
    return widen(target.narrowText, source.textLen, target.wideText, target.wideTextLen,
                 optionsFor(*source.text, defaults));
}

// The length is taken as it comes. A negative one copies nothing; below -4 no block is that large.
int32_t copyWideText(const FieldDesc& source, FieldDefI& target) noexcept {
    if (!source.text || !source.text->head.wideText) return KORV_SUCCESS;
    const uint32_t room = static_cast<uint32_t>(source.textLen) + 4;
    target.wideTextLen = static_cast<int32_t>(room);
    const auto copied = static_cast<std::size_t>(std::max<int32_t>(source.textLen, 0));
    target.wideText = static_cast<wchar_t*>(heap::copy(source.text->head.wideText, copied, room));
    return target.wideText ? KORV_SUCCESS : KORV_NO_MEMORY_WIDE_TEXT;
}

int32_t copyField(const FieldDesc& source, FieldDefI& target, const Defaults& defaults) noexcept {
    target.dataType = source.dataType;
    target.length = source.length;
    target.fldValue1 = source.fldValue1;
    target.fldValue2 = source.fldValue2;
    target.fldValue3 = source.fldValue3;
    target.fldFlag = source.fldFlag;
    return source.textMode == KORV_TEXT_NARROW ? copyNarrowText(source, target, defaults)
                                               : copyWideText(source, target);
}

int32_t narrowProviderText(const wchar_t* text, uint32_t length, void* target, uint32_t capacity,
                           const CnvOptions& options) noexcept {
    uint32_t written = 0;
    return KORVCnvWVarcharSzToVarcharSz(text, &length, static_cast<char*>(target), capacity,
                                        &written, &options);
}

int32_t copyProvider(PrvRecord& target, const PrvDesc& source, const CnvOptions& options,
                     uint8_t textMode) noexcept {
    target.prvCode1 = source.prvCode1;
    target.prvCode2 = source.prvCode2;
    target.prvAttr1 = source.prvAttr1;
    target.prvAttr2 = static_cast<uint16_t>(source.prvAttr2);
    if (textMode != KORV_TEXT_NARROW) {
        std::wcsncpy(static_cast<wchar_t*>(target.texts[0]), source.text1, target.text1Cap / 4);
        std::wcsncpy(static_cast<wchar_t*>(target.texts[1]), source.text2, target.text2Cap / 4);
        return KORV_SUCCESS;
    }
    const int32_t status = narrowProviderText(source.text1, source.text1Len, target.texts[0],
                                              target.text1Cap, options);
    if (status != 0) return status;
    return narrowProviderText(source.text2, source.text2Len, target.texts[1], target.text2Cap,
                              options);
}

}  // namespace
}  // namespace korv

int32_t CopyParamsStruct(const ParamDesc* source, OprDefI* target, uint32_t defaultCodePage,
                         uint8_t defaultFlag) {
    return korv::copyParameter(*source, *target, {defaultCodePage, defaultFlag});
}

int32_t CopyFieldStruct(const FieldDesc* source, FieldDefI* target, uint32_t defaultCodePage,
                        uint8_t defaultFlag) {
    return korv::copyField(*source, *target, {defaultCodePage, defaultFlag});
}

int32_t CopyPrvStruct(PrvRecord* target, const PrvDesc* source, uint32_t codePage, uint8_t flag,
                      uint8_t textMode) {
    CnvOptions options{};
    options.codePage = codePage;
    options.flag = flag;
    return korv::copyProvider(*target, *source, options, textMode);
}
