// The memory of a window, and the checks of what a provider has left in it.
#include "value_window.h"

#include <algorithm>
#include <cstring>

#include "korv/datacnv.h"

namespace mask {

namespace {

bool isScalar(uint32_t scalar) {
    return scalar != 0 && scalar < 0x110000 && (scalar < 0xD800 || scalar > 0xDFFF);
}

}  // namespace

ValueWindow::ValueWindow()
    : slots_(kMost), values_(kMost), results_(kMost), relateds_(kMost), statuses_(kMost) {}

void ValueWindow::clear(bool hasRelated) {
    hasRelated_ = hasRelated;
    used_ = 0;
    narrow_ = 0;
    wide_ = 0;
}

int32_t ValueWindow::widen(const Value& value, char* source) const {
    const auto length = static_cast<uint32_t>(value.text.size());
    uint32_t characters = 0;
    return KORVCnvCharToWVarcharSz(value.text.data(), &length, reinterpret_cast<wchar_t*>(source),
                                   static_cast<uint32_t>(sourceBytes(value)), &characters,
                                   &text::kUtf8Options);
}

void ValueWindow::addRelated(const Value& value) {
    ValueRecord& record = relateds_[last_] = {};
    record.nullIndicator = value.relatedIsNull ? 1 : 0;
    record.length = static_cast<int32_t>(value.related.size());
    char* const copy = allocate(value.related.size() + 1);
    std::copy(value.related.begin(), value.related.end(), copy);
    copy[value.related.size()] = '\0';
    record.data = value.relatedIsNull ? nullptr : copy;
}

bool ValueWindow::sourceIsIntact(uint32_t place) {
    const Value& value = slots_[place].value;
    const char* const source = slots_[place].source;
    if (!value.wide) {
        return std::memcmp(source, value.text.data(), value.text.size()) == 0 &&
               source[value.text.size()] == '\0';
    }
    const std::wstring expected = text::toWide(value.text);
    return std::memcmp(source, expected.c_str(), (expected.size() + 1) * sizeof(wchar_t)) == 0;
}

// The road of results that are not plain ASCII text.
uint32_t ValueWindow::checkedResult(uint32_t place, std::string_view& text,
                                    std::string& violation) {
    const ValueRecord& result = results_[place];
    const auto capacity = static_cast<int32_t>(slots_[place].capacity);
    const char* const target = slots_[place].target;
    if (result.length == kNotSet) {
        violation = "returned no result";
        return KORV_MASK_CODE_NO_RESULT;
    }
    if (result.data != nullptr && result.data != target) {
        violation = "returned its result in another buffer than the target";
        return KORV_MASK_CODE_NO_RESULT;
    }
    if (result.length < 0 || result.length > capacity) {
        violation = "returned a length of " + std::to_string(result.length) +
                    " for a capacity of " + std::to_string(capacity);
        return KORV_MASK_CODE_BAD_LENGTH;
    }
    const auto bytes = static_cast<uint32_t>(result.length);
    if (slots_[place].value.wide) {
        if (bytes % sizeof(wchar_t) != 0) {
            violation = "returned a length of " + std::to_string(bytes) +
                        " bytes, which is not a whole number of wide characters";
            return KORV_MASK_CODE_BAD_LENGTH;
        }
        return wideResult(reinterpret_cast<const wchar_t*>(target), bytes / sizeof(wchar_t), text,
                          violation);
    }
    text = {target, bytes};
    if (std::memchr(target, '\0', bytes) != nullptr) {
        violation = "returned text that holds a zero byte";
        return KORV_MASK_CODE_BAD_TEXT;
    }
    if (text::validUtf8Length(target, bytes) != bytes) {
        violation = "returned text that is not valid UTF-8";
        return KORV_MASK_CODE_BAD_TEXT;
    }
    return 0;
}

uint32_t ValueWindow::wideResult(const wchar_t* characters, uint32_t count, std::string_view& text,
                                 std::string& violation) {
    if (!std::all_of(characters, characters + count, isScalar)) {
        violation = "returned wide text that holds a zero, a surrogate or a number above U+10FFFF";
        return KORV_MASK_CODE_BAD_TEXT;
    }
    if (count == 0) return 0;
    const size_t needed = size_t{count} * 4 + 1;
    if (work_.size() < needed) work_.resize(needed);
    uint32_t length = 0;
    const int32_t status =
        KORVCnvWVarcharSzToVarcharSz(characters, &count, work_.data(),
                                     static_cast<uint32_t>(needed), &length, &text::kUtf8Options);
    if (status != CNV_SUCCESS) {
        violation = "returned text that cannot be converted, status " + std::to_string(status);
        return KORV_MASK_CODE_REQUEST;
    }
    text = {work_.data(), length};
    return 0;
}

}  // namespace mask
