// Masking of a batch: values go to the provider window by window and come back in order.
#include "column.h"

#include <algorithm>
#include <utility>

#include "mask_error.h"
#include "text/utf8_text.h"

namespace mask {

namespace {

constexpr size_t kMostWaiting = 256;
constexpr uint32_t kPromises = PRV_PROMISE_ONE_TO_ONE | PRV_PROMISE_LENGTH_KEPT |
                               PRV_PROMISE_FORMAT_KEPT | PRV_PROMISE_REVERSIBLE;

bool beginsFormula(std::string_view text) {
    return !text.empty() && (text[0] == '=' || text[0] == '+' || text[0] == '-' || text[0] == '@');
}

bool isText(std::string_view text) {
    if (text::isPlainAscii(text.data(), text.size())) return true;
    return text.find('\0') == std::string_view::npos &&
           text::validUtf8Length(text.data(), text.size()) == text.size();
}

int32_t actionOf(const Rule* rule) {
    if (rule == nullptr || rule->action == "KEEP") return KORV_MASK_KEEP;
    if (rule->action == "DROP") return KORV_MASK_DROP;
    return rule->action == "NULL" ? KORV_MASK_NULL : KORV_MASK_CONST;
}

}  // namespace

void Column::Counts::clear() {
    counts_ = {};
    failures_.clear();
}

void Column::Counts::countFailures(uint32_t code, uint64_t count) {
    auto at = std::lower_bound(failures_.begin(), failures_.end(), code,
                               [](const KorvMaskFailures& f, uint32_t c) { return f.code < c; });
    if (at == failures_.end() || at->code != code) at = failures_.insert(at, {code, 0});
    at->count += count;
    counts_.failures = failures_.data();
    counts_.failureCount = static_cast<uint32_t>(failures_.size());
}

void Column::Counts::fail(uint32_t code) {
    ++counts_.failed;
    countFailures(code, 1);
}

void Column::Counts::add(const Counts& batch) {
    counts_.values += batch.counts_.values;
    counts_.nulls += batch.counts_.nulls;
    counts_.masked += batch.counts_.masked;
    counts_.unchanged += batch.counts_.unchanged;
    counts_.formulas += batch.counts_.formulas;
    counts_.failed += batch.counts_.failed;
    for (const KorvMaskFailures& f : batch.failures_) countFailures(f.code, f.count);
}

Column::Column(uint32_t index, std::string name, const Rule* rule)
    : rule_(rule), name_(std::move(name)), actionName_(rule == nullptr ? "KEEP" : rule->action) {
    description_.name = name_.c_str();
    description_.actionName = actionName_.c_str();
    description_.action = actionOf(rule_);
    description_.rulesLine = rule_ == nullptr ? 0 : rule_->line;
    description_.rulePattern = rule_ == nullptr ? nullptr : rule_->column.c_str();
    description_.related = KORV_MASK_NO_COLUMN;
    description_.onError = nameOf(rule_ == nullptr ? OnError::empty : rule_->onError);
    description_.scope = choice_.scope.c_str();
    description_.mapping = mapping_.c_str();
    place_.column = index;
    place_.rulesLine = description_.rulesLine;
}

Column::Column(uint32_t index, std::string name, const Rule& rule, std::unique_ptr<Request> request,
               MethodChoice choice, std::string mapping, RelatedColumn related, bool unmask)
    : Column(index, std::move(name), &rule) {
    request_ = std::move(request);
    choice_ = std::move(choice);
    mapping_ = std::move(mapping);
    const ProviderModule& module = request_->module();
    description_.action = KORV_MASK_PROVIDER;
    description_.related = related.index;
    relatedName_ = std::move(related.name);
    if (related.index != KORV_MASK_NO_COLUMN) description_.relatedName = relatedName_.c_str();
    description_.module = module.path.c_str();
    for (const std::string& file : request_->files()) files_.push_back(file.c_str());
    description_.files = files_.data();
    description_.fileCount = static_cast<uint32_t>(files_.size());
    if (module.isVersion2() && module.entry->promises != nullptr) {
        description_.promises = module.entry->promises(request_->state()) & kPromises;
    }
    if (choice_.method != nullptr) description_.method = choice_.method->name;
    description_.isDisguise = choice_.isDisguise() ? 1 : 0;
    if (choice_.isKeyed()) {
        description_.secret = choice_.secret.c_str();
        description_.fingerprint = choice_.fingerprint.c_str();
    }
    description_.scope = choice_.scope.c_str();
    description_.mapping = mapping_.c_str();
    maskValue_ = unmask && module.isVersion2() ? module.entry->unmask : module.entry->mask;
    hasBatches_ = !unmask && module.isVersion2() && module.entry->maskBatch != nullptr;
}

std::string Column::overrunMessage() const {
    return "provider " + request_->module().name + " wrote past the end of its target, in column " +
           name_ + "; its module is " + request_->module().path;
}

const KorvMaskResult& Column::mask(uint64_t firstRow, const KorvMaskStrings& source,
                                   const KorvMaskStrings* related, bool verify, ValueWindow& window,
                                   Records& records) {
    window_ = &window;
    records_ = &records;
    verify_ = verify;
    place_.row = firstRow;
    batch_.clear();
    states_.clear();
    states_.reserve(static_cast<size_t>(source.count));
    if (description_.action == KORV_MASK_KEEP) {
        keepAll(Strings(source));
        result_.strings = source;
    } else {
        builder_.start(static_cast<size_t>(source.count), source.offsetBits);
        if (description_.action == KORV_MASK_PROVIDER) {
            maskAll(Strings(source), related);
        } else {
            replaceAll(Strings(source));
        }
        result_.strings = builder_.strings();
    }
    total_.add(batch_);
    result_.states = states_.data();
    result_.statistics = batch_.published();
    return result_;
}

void Column::keepAll(const Strings& source) {
    for (uint64_t i = 0; i < source.size(); ++i) {
        const bool isNull = source.isNull(i) || source[i].empty();
        ++(isNull ? batch_->nulls : batch_->values);
        states_.push_back(isNull ? KORV_MASK_VALUE_NULL : KORV_MASK_VALUE_MASKED);
    }
    batch_->masked = batch_->unchanged = batch_->values;
}

// NULL and CONST. What is NULL or empty is no value and stays so.
void Column::replaceAll(const Strings& source) {
    for (uint64_t i = 0; i < source.size(); ++i) {
        const std::string_view text = source[i];
        if (source.isNull(i) || text.empty()) {
            acceptNull(source.isNull(i));
        } else if (description_.action == KORV_MASK_NULL) {
            ++batch_->values;
            acceptMaskedNull();
        } else {
            ++batch_->values;
            accept(text, rule_->constant);
        }
    }
}

void Column::maskAll(const Strings& source, const KorvMaskStrings* relatedStrings) {
    const Strings related(relatedStrings == nullptr ? KorvMaskStrings{} : *relatedStrings);
    const bool handsNullOver = !request_->module().isVersion2();
    window_->clear(relatedStrings != nullptr);
    waiting_.clear();
    if (request_->hasErrors()) request_->takeErrors({});  // a batch may have ended early
    for (uint64_t i = 0; i < source.size(); ++i) {
        Value value;
        const bool isNull = source.isNull(i);
        if (!isNull) value.text = source[i];
        if (value.text.empty()) {
            if (!handsNullOver) {
                enqueue({isNull ? Waiting::kNull : Waiting::kEmpty, 0, 0});
                continue;
            }
            value.isNull = true;
            value.wasNull = isNull;
        } else if (!text::isPlainAscii(value.text.data(), value.text.size())) {
            if (!isText(value.text)) {
                enqueue({Waiting::kBadSource, 0, 0});
                continue;
            }
            value.wide = true;
        }
        value.wide |= rule_->wide;
        if (relatedStrings != nullptr) {
            value.relatedIsNull = related.isNull(i);
            if (!value.relatedIsNull) value.related = related[i];
            if (!isText(value.related)) {
                enqueue({Waiting::kBadSource, 0, 0});
                continue;
            }
        }
        enqueue(value);
    }
    flush();
}

void Column::enqueue(const Waiting& waiting) {
    if (waiting_.size() == kMostWaiting) flush();
    waiting_.push_back(waiting);
}

inline void Column::enqueue(const Value& value) {
    int32_t status = window_->add(value);
    if (status == ValueWindow::kFull) {
        flush();
        status = window_->add(value);
    }
    if (status != 0) return enqueue({Waiting::kNoRequest, 0, status});
    waiting_.push_back({Waiting::kValue, window_->last(), 0});
}

void Column::flush() {
    for (const bool wide : {false, true}) callBatch(wide);
    for (const Waiting& waiting : waiting_) {
        finish(waiting);
        ++place_.row;
    }
    waiting_.clear();
    window_->clear();
}

void Column::callBatch(bool wide) {
    const ProviderModule& module = request_->module();
    const uint32_t count = window_->count(wide);
    batchDone_[wide] = count > 0 && hasBatches_;
    if (!batchDone_[wide]) return;
    PrvCall call = request_->call(wide);
    call.value = window_->values(wide);
    call.result = window_->results(wide);
    call.related = description_.related == KORV_MASK_NO_COLUMN ? nullptr : window_->relateds(wide);
    try {
        batchDone_[wide] =
            module.entry->maskBatch(request_->state(), &call, count, window_->statuses(wide)) == 0;
    } catch (...) {
        batchDone_[wide] = false;
    }
    // Errors are for mask to capture: it is called for what failed.
    if (request_->hasErrors()) {
        request_->takeErrors({});
        batchDone_[wide] = false;
    }
}

inline int32_t Column::callMask(uint32_t place) {
    const bool wide = window_->valueAt(place).wide;
    PrvCall call = request_->call(wide);
    call.value = window_->valueRecord(place);
    call.result = window_->resultRecord(place);
    if (description_.related != KORV_MASK_NO_COLUMN) call.related = window_->relatedRecord(place);
    try {
        return maskValue_(request_->state(), &call);
    } catch (...) {
        return KORV_FAILURE;
    }
}

inline void Column::finish(const Waiting& waiting) {
    switch (waiting.kind) {
        case Waiting::kNull:
        case Waiting::kEmpty:
            acceptNull(waiting.kind == Waiting::kNull);
            break;
        case Waiting::kBadSource:
            ++batch_->values;
            fail(KORV_MASK_CODE_BAD_SOURCE,
                 "the value, or the related one, is not UTF-8 text or holds a zero byte");
            break;
        case Waiting::kNoRequest:
            ++batch_->values;
            fail(KORV_MASK_CODE_REQUEST, "the value cannot be converted for " +
                                             request_->module().name + ", status " +
                                             std::to_string(waiting.status));
            break;
        case Waiting::kValue:
            finishValue(waiting.place);
            break;
    }
}

inline void Column::finishValue(uint32_t place) {
    const Value& value = window_->valueAt(place);
    if (hasBatches_ && !window_->isIntact(place)) throw Overrun();
    if (!batchDone_[value.wide] || window_->status(place) != 0) {
        if (hasBatches_) window_->reset(place);  // maskBatch may have used the records
        const int32_t status = callMask(place);
        if (!window_->isIntact(place)) throw Overrun();
        if (status != 0 || request_->hasErrors()) {
            ++batch_->values;
            return failCaptured(value);
        }
    }
    std::string_view text;
    bool isNull = false;
    const uint32_t code = window_->result(place, text, isNull, violation_);
    if (value.isNull && code == 0 && text.empty()) return acceptNull(value.wasNull);
    ++batch_->values;
    if (code != 0) return failProvider(code, violation_.c_str());
    if (verify_) {
        if (!window_->sourceIsIntact(place)) {
            return failProvider(KORV_MASK_CODE_SOURCE_WRITTEN, "changed its source buffer");
        }
        if (!repeats(place, text, isNull)) {
            return failProvider(KORV_MASK_CODE_NOT_REPEATED,
                                "gave another result for the same value");
        }
        text = firstResult_;
    }
    if (text == value.text && rule_->unchangedFails) {
        return failProvider(KORV_MASK_CODE_UNCHANGED, "returned the value unchanged");
    }
    if (isNull) return acceptMaskedNull();
    accept(value.text, text);
}

// Whether a second call gives the same. The first result is kept: the call overwrites it.
bool Column::repeats(uint32_t place, std::string_view first, bool firstIsNull) {
    firstResult_ = first;
    window_->reset(place);
    const int32_t status = callMask(place);
    if (!window_->isIntact(place)) throw Overrun();
    if (request_->hasErrors()) request_->takeErrors({});
    std::string_view second;
    bool secondIsNull = false;
    return status == 0 && window_->result(place, second, secondIsNull, violation_) == 0 &&
           secondIsNull == firstIsNull && second == firstResult_;
}

inline void Column::accept(std::string_view value, std::string_view result) {
    ++batch_->masked;
    if (result == value) ++batch_->unchanged;
    if (beginsFormula(result) && !beginsFormula(value)) ++batch_->formulas;
    builder_.append(result);
    states_.push_back(KORV_MASK_VALUE_MASKED);
}

void Column::acceptMaskedNull() {
    ++batch_->masked;
    builder_.appendNull();
    states_.push_back(KORV_MASK_VALUE_MASKED);
}

void Column::acceptNull(bool wasNull) {
    ++batch_->nulls;
    if (wasNull) {
        builder_.appendNull();
    } else {
        builder_.append({});
    }
    states_.push_back(KORV_MASK_VALUE_NULL);
}

void Column::fail(uint32_t code, const std::string& message) {
    batch_.fail(code);
    records_->add(place_, code, true, request_->module().name, message);
    replaceFailed();
}

void Column::failProvider(uint32_t code, const char* message) {
    fail(code, "provider " + request_->module().name + " " + message);
}

void Column::failCaptured(const Value& value) {
    std::vector<CapturedError> errors = request_->takeErrors({value.text, value.related});
    const std::string& provider = request_->module().name;
    if (errors.empty()) {
        return failProvider(KORV_MASK_CODE_NO_RECORD, "failed without saying why");
    }
    batch_.fail(errors.front().code);
    bool isFirst = true;
    for (CapturedError& error : errors) {
        records_->add(place_, error.code, std::exchange(isFirst, false), provider,
                      std::move(error.message), std::move(error.tokens));
    }
    replaceFailed();
}

// A value that failed never passes in clear.
void Column::replaceFailed() {
    states_.push_back(rule_->onError == OnError::dropRow ? KORV_MASK_VALUE_DROP_ROW
                                                         : KORV_MASK_VALUE_FAILED);
    switch (rule_->onError) {
        case OnError::abort:
            throw Aborted();
        case OnError::null:
            return builder_.appendNull();
        case OnError::constant:
            return builder_.append(rule_->constant);
        default:
            return builder_.append({});
    }
}

}  // namespace mask
