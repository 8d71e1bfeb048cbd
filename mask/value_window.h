// Values on their way to a provider and back: copies of the sources, and guarded targets.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "korv/provider.h"

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
    const Value& valueAt(uint32_t place) const { return texts_[place]; }
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
    // Narrow values come from the front on, wide ones from the back.
    uint32_t first(bool wide) const { return wide ? kMost - wide_ : 0; }
    char* allocate(size_t bytes);
    void addRelated(const Value& value);
    size_t bytesFor(const Value& value) const;
    uint32_t wideResult(const wchar_t* characters, uint32_t count, std::string_view& text,
                        std::string& violation);

    bool hasRelated_ = false;
    std::vector<char> arena_;
    size_t used_ = 0;
    uint32_t narrow_ = 0;
    uint32_t wide_ = 0;
    uint32_t last_ = 0;
    std::vector<Value> texts_;
    // What a provider makes of its records is not relied on to find its buffers again.
    std::vector<char*> sources_;
    std::vector<char*> targets_;
    std::vector<ValueRecord> values_;
    std::vector<ValueRecord> results_;
    std::vector<ValueRecord> relateds_;
    std::vector<int32_t> statuses_;
    std::string work_;
};

}  // namespace mask
