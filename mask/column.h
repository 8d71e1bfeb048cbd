// A column of an open handle: its action, the road of its values, and what has become of them.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "korv/mask.h"
#include "records.h"
#include "request.h"
#include "rules.h"
#include "string_batch.h"
#include "value_window.h"

namespace mask {

// A provider has written past its target.
class Overrun : public std::exception {};
// A value has failed whose rule says on-error=abort.
class Aborted : public std::exception {};

// A column that a rule also reads.
struct RelatedColumn {
    uint32_t index = KORV_MASK_NO_COLUMN;  // or the number of columns, when it is not among them
    std::string name;
};

class Column {
  public:
    // A column without a provider. `rule` is nullptr when it is kept because it is not listed.
    Column(uint32_t index, std::string name, const Rule* rule);
    // With `unmask` its provider goes backwards.
    Column(uint32_t index, std::string name, const Rule& rule, std::unique_ptr<Request> request,
           MethodChoice choice, std::string mapping, RelatedColumn related, bool unmask);

    const KorvMaskColumn& description() const { return description_; }
    const KorvMaskStatistics& statistics() const { return total_.published(); }
    std::string overrunMessage() const;

    // Throws Overrun, Aborted, TooLarge, std::bad_alloc. `related` has as many values as `source`.
    const KorvMaskResult& mask(uint64_t firstRow, const KorvMaskStrings& source,
                               const KorvMaskStrings* related, bool verify, ValueWindow& window,
                               Records& records);

  private:
    class Counts {
      public:
        void clear();
        void fail(uint32_t code);
        void add(const Counts& batch);
        const KorvMaskStatistics& published() const { return counts_; }
        KorvMaskStatistics* operator->() { return &counts_; }

      private:
        void countFailures(uint32_t code, uint64_t count);
        KorvMaskStatistics counts_ = {};
        std::vector<KorvMaskFailures> failures_;  // by code, ascending
    };

    // A value of the batch that waits for its turn to be written.
    struct Waiting {
        enum Kind { kNull, kEmpty, kBadSource, kNoRequest, kValue } kind;
        uint32_t place;  // in the window, of kValue
        int32_t status;  // of kNoRequest
    };

    void keepAll(const Strings& source);
    void replaceAll(const Strings& source);
    void maskAll(const Strings& source, const KorvMaskStrings* related);
    void enqueue(const Waiting& waiting);
    void enqueue(const Value& value);
    void flush();
    void callBatch(bool wide);
    int32_t callMask(uint32_t place);
    void finish(const Waiting& waiting);
    void finishValue(uint32_t place);
    bool repeats(uint32_t place, std::string_view first, bool firstIsNull);
    // These count the value's outcome; `values` is counted by their callers.
    void accept(std::string_view value, std::string_view result);
    void acceptMaskedNull();
    void acceptNull(bool wasNull);
    void fail(uint32_t code, const std::string& message);
    void failProvider(uint32_t code, const char* message);
    void failCaptured(const Value& value);
    void replaceFailed();

    const Rule* rule_;
    std::unique_ptr<Request> request_;
    MethodChoice choice_;
    std::string mapping_;
    int32_t (*maskValue_)(void* state, const PrvCall* call) = nullptr;
    std::string name_;
    std::string actionName_;
    std::string relatedName_;
    std::vector<const char*> files_;
    KorvMaskColumn description_ = {};

    // The batch at hand.
    Records* records_ = nullptr;
    bool verify_ = false;
    Place place_;
    ValueWindow* window_ = nullptr;
    std::vector<Waiting> waiting_;
    bool hasBatches_ = false;  // the provider has maskBatch
    bool batchDone_[2] = {};   // what maskBatch has answered for narrow and wide values
    std::string firstResult_;
    std::string violation_;
    StringsBuilder builder_;
    std::vector<uint8_t> states_;
    Counts batch_;
    Counts total_;
    KorvMaskResult result_ = {};
};

}  // namespace mask
