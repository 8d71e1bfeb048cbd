// The memory of a window, and the checks of what a provider has left in it.
#include "value_window.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include "korv/datacnv.h"
#include "korv/mask.h"
#include "text/utf8_text.h"

namespace mask {

namespace {

constexpr size_t kArena = 384 * 1024;
// Room for results that are longer than their source, in characters.
constexpr size_t kSpare = 1024;
constexpr size_t kGuard = 64;
constexpr unsigned char kGuardByte = 0xA5;
constexpr uint64_t kGuardWord = 0x0101010101010101u * kGuardByte;
constexpr int32_t kNotSet = INT32_MIN;
constexpr size_t kAlignment = 16;

constexpr size_t aligned(size_t bytes) {
    return (bytes + kAlignment - 1) / kAlignment * kAlignment;
}

constexpr size_t unitOf(bool wide) {
    return wide ? sizeof(wchar_t) : sizeof(char);
}

size_t capacityFor(const Value& value) {
    return (value.text.size() + kSpare) * unitOf(value.wide);
}

bool isScalar(wchar_t c) {
    const auto scalar = static_cast<uint32_t>(c);
    return scalar != 0 && scalar < 0x110000 && (scalar < 0xD800 || scalar > 0xDFFF);
}

}  // namespace

ValueWindow::ValueWindow()
    : texts_(kMost),
      sources_(kMost),
      targets_(kMost),
      values_(kMost),
      results_(kMost),
      relateds_(kMost),
      statuses_(kMost) {}

void ValueWindow::clear(bool hasRelated) {
    hasRelated_ = hasRelated;
    used_ = 0;
    narrow_ = 0;
    wide_ = 0;
}

size_t ValueWindow::bytesFor(const Value& value) const {
    return aligned((value.text.size() + 1) * unitOf(value.wide)) +
           (hasRelated_ ? aligned(value.related.size() + 1) : 0) +
           aligned(capacityFor(value) + kGuard);
}

char* ValueWindow::allocate(size_t bytes) {
    char* const block = arena_.data() + used_;
    used_ += aligned(bytes);
    return block;
}

int32_t ValueWindow::add(const Value& value) {
    const size_t needed = bytesFor(value);
    if (narrow_ + wide_ == 0) {
        if (needed > arena_.size()) arena_.resize(std::max(needed, kArena));
    } else if (narrow_ + wide_ == kMost || needed > arena_.size() - used_) {
        return kFull;
    }
    const size_t before = used_;
    char* const source = allocate((value.text.size() + 1) * unitOf(value.wide));
    if (!value.wide) {
        std::copy(value.text.begin(), value.text.end(), source);
        source[value.text.size()] = '\0';
    } else {
        const auto length = static_cast<uint32_t>(value.text.size());
        uint32_t characters = 0;
        const int32_t status = KORVCnvCharToWVarcharSz(
            value.text.data(), &length, reinterpret_cast<wchar_t*>(source),
            static_cast<uint32_t>((value.text.size() + 1) * sizeof(wchar_t)), &characters,
            &text::kUtf8Options);
        if (status != CNV_SUCCESS) {
            used_ = before;
            return status;
        }
    }
    last_ = value.wide ? kMost - ++wide_ : narrow_++;
    texts_[last_] = value;
    sources_[last_] = source;

    if (hasRelated_) addRelated(value);
    targets_[last_] = allocate(capacityFor(value) + kGuard);
    reset(last_);
    return CNV_SUCCESS;
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

void ValueWindow::reset(uint32_t place) {
    const Value& value = texts_[place];
    ValueRecord& record = values_[place];
    record = {};
    record.nullIndicator = value.isNull ? 1 : 0;
    record.data = value.isNull ? nullptr : sources_[place];
    record.target = targets_[place];
    record.capacity = static_cast<int32_t>(capacityFor(value));
    results_[place] = {};
    results_[place].length = kNotSet;
    statuses_[place] = 0;
    std::memset(targets_[place] + record.capacity, kGuardByte, kGuard);
}

bool ValueWindow::isIntact(uint32_t place) const {
    const char* const guard = targets_[place] + capacityFor(texts_[place]);
    uint64_t differences = 0;
#pragma GCC unroll 8
    for (size_t i = 0; i < kGuard; i += sizeof(uint64_t)) {
        uint64_t word;
        std::memcpy(&word, guard + i, sizeof word);
        differences |= word ^ kGuardWord;
    }
    return differences == 0;
}

bool ValueWindow::sourceIsIntact(uint32_t place) {
    const Value& value = texts_[place];
    if (!value.wide) {
        return std::memcmp(sources_[place], value.text.data(), value.text.size()) == 0 &&
               sources_[place][value.text.size()] == '\0';
    }
    const std::wstring expected = text::toWide(value.text);
    return std::memcmp(sources_[place], expected.c_str(),
                       (expected.size() + 1) * sizeof(wchar_t)) == 0;
}

uint32_t ValueWindow::result(uint32_t place, std::string_view& text, bool& isNull,
                             std::string& violation) {
    const Value& value = texts_[place];
    const ValueRecord& result = results_[place];
    const auto capacity = static_cast<int32_t>(capacityFor(value));
    const char* const target = targets_[place];
    text = {};
    isNull = result.nullIndicator == 1;
    if (isNull) return 0;
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
    if (value.wide) {
        if (bytes % sizeof(wchar_t) != 0) {
            violation = "returned a length of " + std::to_string(bytes) +
                        " bytes, which is not a whole number of wide characters";
            return KORV_MASK_CODE_BAD_LENGTH;
        }
        return wideResult(reinterpret_cast<const wchar_t*>(target), bytes / sizeof(wchar_t), text,
                          violation);
    }
    text = {target, bytes};
    if (text::isPlainAscii(target, bytes)) return 0;
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
