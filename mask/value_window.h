// Values on their way to a provider and back: copies of the sources, and guarded targets.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "korv/mask.h"
#include "korv/provider.h"
#include "text/copy_text.h"
#include "text/utf8_text.h"

namespace mask {

// A value of a column as the provider gets it.
struct Value {
    std::string_view text;     // UTF-8
    std::string_view related;  // of the other column
    bool wide = false;         // handed over as wide text
    bool isNull = false;       // handed over as NULL
    bool wasNull = false;      // NULL in the column, not an empty string
    bool relatedIsNull = false;
};

// What most values need is inline: it is done for every value of every row.
class ValueWindow {
  public:
    static constexpr uint32_t kMost = 64;

    ValueWindow();

    // Empties the window, for values with or without related ones.
    void clear(bool hasRelated);
    void clear() { clear(hasRelated_); }
    // What add() returns when the window has to be emptied first.
    static constexpr int32_t kFull = -1;
    // Adds a value. Returns 0; or kFull, or the companion library's status: then nothing is added.
    // An empty window takes any value.
    int32_t add(const Value& value);

    // What maskBatch works on. The values of one form lie side by side.
    uint32_t count(bool wide) const { return wide ? wide_ : narrow_; }
    ValueRecord* values(bool wide) { return &values_[first(wide)]; }
    ValueRecord* results(bool wide) { return &results_[first(wide)]; }
    ValueRecord* relateds(bool wide) { return &relateds_[first(wide)]; }
    int32_t* statuses(bool wide) { return &statuses_[first(wide)]; }

    // The place of the value that was added last; the members below take it.
    uint32_t last() const { return last_; }
    const Value& valueAt(uint32_t place) const { return slots_[place].value; }
    ValueRecord* valueRecord(uint32_t place) { return &values_[place]; }
    ValueRecord* resultRecord(uint32_t place) { return &results_[place]; }
    const ValueRecord* relatedRecord(uint32_t place) const { return &relateds_[place]; }
    int32_t status(uint32_t place) const { return statuses_[place]; }

    // Makes the records as a provider finds them.
    void reset(uint32_t place);
    // Whether the guard bytes after the target are as they were.
    bool isIntact(uint32_t place) const;
    // Whether the source is as it was handed over.
    bool sourceIsIntact(uint32_t place);
    // Checks the result and gives it as UTF-8 text, which lives until the next call or in the
    // target. `isNull` says that the result is NULL. Returns 0, or a KorvMaskCode and what the
    // provider has done, to be put after its name.
    uint32_t result(uint32_t place, std::string_view& text, bool& isNull, std::string& violation);

  private:
    // What a provider makes of its records is not relied on to find its buffers again.
    struct Slot {
        Value value;
        char* source;
        char* target;
        size_t capacity;  // bytes of the target before the guard
    };

    static constexpr size_t kArena = 384 * 1024;
    // Room for results that are longer than their source, in characters.
    static constexpr size_t kSpare = 1024;
    static constexpr size_t kGuard = 64;
    static constexpr uint64_t kGuardWord = 0xA5A5A5A5A5A5A5A5u;
    static constexpr int32_t kNotSet = INT32_MIN;
    static constexpr size_t kAlignment = 16;

    static constexpr size_t aligned(size_t bytes) {
        return (bytes + kAlignment - 1) / kAlignment * kAlignment;
    }
    static constexpr size_t unitOf(bool wide) { return wide ? sizeof(wchar_t) : sizeof(char); }
    static size_t sourceBytes(const Value& value) {
        return (value.text.size() + 1) * unitOf(value.wide);
    }
    static size_t capacityFor(const Value& value) {
        return (value.text.size() + kSpare) * unitOf(value.wide);
    }

    // Narrow values come from the front on, wide ones from the back.
    uint32_t first(bool wide) const { return wide ? kMost - wide_ : 0; }
    size_t bytesFor(const Value& value) const {
        return aligned(sourceBytes(value)) + (hasRelated_ ? aligned(value.related.size() + 1) : 0) +
               aligned(capacityFor(value) + kGuard);
    }
    char* allocate(size_t bytes) {
        char* const block = arena_.data() + used_;
        used_ += aligned(bytes);
        return block;
    }
    int32_t widen(const Value& value, char* source) const;
    void addRelated(const Value& value);
    uint32_t checkedResult(uint32_t place, std::string_view& text, std::string& violation);
    uint32_t wideResult(const wchar_t* characters, uint32_t count, std::string_view& text,
                        std::string& violation);

    bool hasRelated_ = false;
    std::vector<char> arena_;
    size_t used_ = 0;
    uint32_t narrow_ = 0;
    uint32_t wide_ = 0;
    uint32_t last_ = 0;
    std::vector<Slot> slots_;
    std::vector<ValueRecord> values_;
    std::vector<ValueRecord> results_;
    std::vector<ValueRecord> relateds_;
    std::vector<int32_t> statuses_;
    std::string work_;
};

inline int32_t ValueWindow::add(const Value& value) {
    const size_t needed = bytesFor(value);
    if (narrow_ + wide_ == 0) {
        if (needed > arena_.size()) arena_.resize(needed > kArena ? needed : kArena);
    } else if (narrow_ + wide_ == kMost || needed > arena_.size() - used_) {
        return kFull;
    }
    char* const source = arena_.data() + used_;
    if (value.wide) {
        const int32_t status = widen(value, source);
        if (status != 0) return status;
    } else {
        text::copyText(source, value.text.data(), value.text.size());
        source[value.text.size()] = '\0';
    }
    used_ += aligned(sourceBytes(value));
    last_ = value.wide ? kMost - ++wide_ : narrow_++;
    if (hasRelated_) addRelated(value);
    const size_t capacity = capacityFor(value);
    slots_[last_] = {value, source, allocate(capacity + kGuard), capacity};
    reset(last_);
    return 0;
}

inline void ValueWindow::reset(uint32_t place) {
    const Slot& slot = slots_[place];
    ValueRecord& record = values_[place];
    record = {};
    record.nullIndicator = slot.value.isNull ? 1 : 0;
    record.data = slot.value.isNull ? nullptr : slot.source;
    record.target = slot.target;
    record.capacity = static_cast<int32_t>(slot.capacity);
    results_[place] = {};
    results_[place].length = kNotSet;
    statuses_[place] = 0;
    std::memset(slot.target + slot.capacity, static_cast<int>(kGuardWord & 0xFF), kGuard);
}

inline bool ValueWindow::isIntact(uint32_t place) const {
    const char* const guard = slots_[place].target + slots_[place].capacity;
    uint64_t differences = 0;
#pragma GCC unroll 8
    for (size_t i = 0; i < kGuard; i += sizeof(uint64_t)) {
        uint64_t word;
        std::memcpy(&word, guard + i, sizeof word);
        differences |= word ^ kGuardWord;
    }
    return differences == 0;
}

inline uint32_t ValueWindow::result(uint32_t place, std::string_view& text, bool& isNull,
                                    std::string& violation) {
    const Slot& slot = slots_[place];
    const ValueRecord& record = results_[place];
    isNull = record.nullIndicator == 1;
    text = {};
    if (isNull) return 0;
    const bool isPlain = !slot.value.wide && record.length >= 0 &&
                         static_cast<size_t>(record.length) <= slot.capacity &&
                         (record.data == nullptr || record.data == slot.target) &&
                         text::isPlainAscii(slot.target, static_cast<size_t>(record.length));
    if (!isPlain) return checkedResult(place, text, violation);
    text = {slot.target, static_cast<size_t>(record.length)};
    return 0;
}

}  // namespace mask
