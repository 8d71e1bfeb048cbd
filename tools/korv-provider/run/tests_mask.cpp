// Level 4: masking of single values and of batches.
#include <algorithm>
#include <cstring>

#include "checks.h"
#include "mask/text/utf8_text.h"
#include "mask/value_window.h"
#include "watched_heap.h"

namespace kit {

namespace {

void maskAndCheck(Trial& trial, const TestValue& value, const How& how = {}) {
    const std::string fault = outcomeFault(trial.session, trial.mask(value, how));
    if (!fault.empty()) trial.findings.add("mask " + fault + ", " + with(value, how));
}

// NULL and empty values. An empty one may also be given as text without characters.
void emptyLike(const Context& context, bool isNull) {
    Trial trial(context);
    const TestValue value = {isNull ? "NULL" : "an empty value", ""};
    for (const Form form : {Form::narrow, Form::wide}) {
        How how;
        how.form = form;
        how.isNull = isNull;
        how.isFenced = true;
        const Outcome& outcome = trial.mask(value, how);
        const std::string fault = outcomeFault(trial.session, outcome);
        if (!fault.empty()) {
            trial.findings.add("mask " + fault + ", " + with(value, how));
        } else if (outcome.isMasked() && !outcome.isNull && !outcome.text.empty()) {
            trial.findings.add("mask makes a value of it, " + with(value, how));
        }
    }
}

void nullValue(const Context& context) {
    emptyLike(context, true);
}

void emptyValue(const Context& context) {
    emptyLike(context, false);
}

void oneCharacter(const Context& context) {
    Trial trial(context);
    for (uint32_t c = 1; c < 0x250; ++c) {
        const std::wstring text(1, static_cast<wchar_t>(c));
        const TestValue value = {"the character U+" + std::to_string(c), text::toUtf8(text)};
        How how;
        how.isFenced = true;
        maskAndCheck(trial, value, how);
        how.form = Form::wide;
        maskAndCheck(trial, value, how);
    }
}

// The value made longer by its own characters, to a length.
std::string stretched(const std::string& text, size_t length) {
    std::string longer;
    while (longer.size() < length) longer += text;
    longer.resize(length);
    return longer;
}

void longestValue(const Context& context) {
    constexpr size_t kMost = 100000;
    Trial trial(context);
    std::vector<TestValue> bases = {{"digits", "1234567890"}, {"letters", "abcdefghij"}};
    for (const TestValue& value : trial.accepted()) {
        if (isAscii(value.text) && bases.size() < 8) bases.push_back(value);
    }
    for (const TestValue& base : bases) {
        const auto check = [&](size_t length) {
            const TestValue value = {
                base.kind + ", made " + std::to_string(length) + " characters long",
                stretched(base.text, length)};
            for (const Form form : {Form::narrow, Form::wide}) {
                How how;
                how.form = form;
                how.isFenced = true;
                maskAndCheck(trial, value, how);
            }
            return trial.session.mask(value.text).isMasked();
        };
        // Lengths at which something often changes, then the longest one that is taken.
        for (const size_t length :
             {255u, 256u, 1023u, 1024u, 4096u, 32767u, 32768u, 65535u, 65536u, 100000u}) {
            check(length);
        }
        size_t taken = 0, refused = kMost;
        for (size_t length = 1; length <= kMost; length = length * 2) {
            if (check(length)) taken = length;
        }
        while (taken > 0 && refused - taken > 1) {
            const size_t middle = taken + (refused - taken) / 2;
            (check(middle) ? taken : refused) = middle;
        }
        check(taken + 1);
    }
}

void asciiValues(const Context& context) {
    Trial trial(context);
    for (const TestValue& value : trial.corpus) {
        if (isAscii(value.text)) maskAndCheck(trial, value);
    }
}

void utf8Values(const Context& context) {
    Trial trial(context);
    for (const TestValue& value : trial.corpus) {
        if (!isAscii(value.text)) maskAndCheck(trial, value);
    }
    // Accepted values with a character of each length in their midst.
    for (const TestValue& value : trial.accepted()) {
        for (const char* character : {"\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"}) {
            if (!isAscii(value.text)) continue;
            std::string text = value.text;
            text.insert(text.size() / 2, character);
            maskAndCheck(trial, {value.kind + " around " + std::to_string(strlen(character)) +
                                     " bytes of a character",
                                 text});
        }
    }
}

void wideValues(const Context& context) {
    Trial trial(context);
    How how;
    how.form = Form::wide;
    for (const TestValue& value : trial.corpus) maskAndCheck(trial, value, how);
}

// The bytes that value and result need, terminators included.
size_t neededBytes(const std::string& text, const Outcome& outcome, bool wide) {
    const size_t characters = wide ? text::toWide(text).size() : text.size();
    const size_t unit = wide ? sizeof(wchar_t) : 1;
    return std::max((characters + 1) * unit, outcome.resultBytes + unit);
}

// Masks accepted values with targets of `change(needed)` bytes. The result is the same, or there is
// an error; nothing is written outside.
template <class Change>
void withTargets(const Context& context, Change change) {
    Trial trial(context);
    for (const TestValue& value : trial.accepted()) {
        for (const bool wide : {false, true}) {
            if (!wide && !isAscii(value.text)) continue;
            How how;
            how.form = wide ? Form::wide : Form::narrow;
            const Outcome roomy = trial.mask(value, how);
            if (!roomy.isMasked()) continue;
            for (const size_t capacity : change(neededBytes(value.text, roomy, wide), wide)) {
                how.capacity = capacity;
                for (const bool isFenced : {false, true}) {
                    how.isFenced = isFenced;
                    const Outcome& outcome = trial.mask(value, how);
                    const std::string fault = outcomeFault(trial.session, outcome);
                    if (!fault.empty()) {
                        trial.findings.add("mask " + fault + ", " + with(value, how));
                    } else if (outcome.isMasked() && !outcome.equals(roomy)) {
                        trial.findings.add("mask gives another result than with more room, " +
                                           with(value, how));
                    }
                }
            }
        }
    }
}

void targetExact(const Context& context) {
    withTargets(context, [](size_t needed, bool) { return std::vector<size_t>{needed}; });
}

void targetShort(const Context& context) {
    withTargets(context, [](size_t needed, bool wide) {
        const size_t unit = wide ? sizeof(wchar_t) : 1;
        std::vector<size_t> sizes = {0, unit};
        for (size_t less = 1; less <= 4 && less * unit < needed; ++less) {
            sizes.push_back(needed - less * unit);
        }
        if (wide && needed > 2) sizes.push_back(needed - 2);
        sizes.push_back(needed / 2 / unit * unit);
        return sizes;
    });
}

void sourceFenced(const Context& context) {
    How fenced;
    fenced.isFenced = true;
    forEachOutcome(context, fenced,
                   [](const Trial&, const TestValue&, const How&, const Outcome&) {});
}

void targetFenced(const Context& context) {
    for (const bool isFenced : {false, true}) {
        How told;
        told.isFenced = isFenced;
        forEachOutcome(
            context, told,
            [](Trial& trial, const TestValue& value, const How& how, const Outcome& outcome) {
                if (!outcome.surroundingsAreIntact) {
                    trial.findings.add("mask writes outside its target, " + with(value, how));
                }
            });
    }
}

void sourceUnchanged(const Context& context) {
    forEachOutcome(
        context, {},
        [](Trial& trial, const TestValue& value, const How& how, const Outcome& outcome) {
            if (!outcome.sourceIsIntact) {
                trial.findings.add("mask changes its source, " + with(value, how));
            }
        });
}

void resultSet(const Context& context) {
    forEachOutcome(
        context, {},
        [](Trial& trial, const TestValue& value, const How& how, const Outcome& outcome) {
            if (outcome.status == 0 && !outcome.isSet) {
                trial.findings.add("mask returns 0 and sets no result, " + with(value, how));
            }
        });
}

void resultValid(const Context& context) {
    forEachOutcome(
        context, {},
        [](Trial& trial, const TestValue& value, const How& how, const Outcome& outcome) {
            if (outcome.isSet && !outcome.fault.empty()) {
                trial.findings.add("mask returns " + outcome.fault + ", " + with(value, how));
            }
        });
}

void maskEachAllocation(const Context& context) {
    constexpr unsigned kMostFailures = 200;
    Trial trial(context);
    std::vector<TestValue> values;
    for (size_t i = 0; i < trial.corpus.size(); i += 5) values.push_back(trial.corpus[i]);
    for (size_t i = 0; i < trial.accepted().size() && i < 20; ++i) {
        values.push_back(trial.accepted()[i]);
    }
    for (const TestValue& value : values) {
        heap::failAt(0);
        const Outcome plain = trial.mask(value);
        const unsigned count = std::min(heap::allocations(), kMostFailures);
        for (unsigned n = 1; n <= count; ++n) {
            for (const bool andLater : {false, true}) {
                heap::failAt(n, andLater);
                const Outcome& outcome = trial.mask(value);
                heap::failAt(0);
                const std::string what = "mask, when allocation " + std::to_string(n) +
                                         (andLater ? " and all later ones fail, " : " fails, ");
                if (outcome.threw) trial.findings.add(what + "throws an exception, " + with(value));
                if (outcome.isMasked() && !outcome.equals(plain)) {
                    trial.findings.add(what + "gives another result, " + with(value));
                }
                if (outcome.status != 0 && outcome.errors.empty() && !andLater &&
                    plain.isMasked()) {
                    trial.findings.add(what + "captures no error, " + with(value));
                }
            }
        }
        if (!trial.mask(value).equals(plain)) {
            trial.findings.add("after failures of allocations, mask gives another result, " +
                               with(value));
        }
    }
}

void maskLeak(const Context& context) {
    constexpr int kRounds = 20;
    Trial trial(context);
    const auto round = [&] {
        for (const TestValue& value : trial.corpus) trial.mask(value);
    };
    for (int i = 0; i < 3; ++i) round();
    const size_t blocks = heap::liveBlocks();
    for (int i = 0; i < kRounds; ++i) round();
    if (heap::liveBlocks() >= blocks + kRounds) {
        finding("masking " + std::to_string(kRounds * trial.corpus.size()) + " values keeps " +
                std::to_string(heap::liveBlocks() - blocks) + " blocks of memory");
    }
}

void valuesAccepted(const Context& context) {
    Trial trial(context);
    const size_t count = trial.accepted().size();
    figure("values masked", std::to_string(count) + " of " + std::to_string(trial.corpus.size()));
    if (count == 0) {
        finding(
            "no value was masked, so that little was tested; give --values with values that "
            "the provider masks");
    }
}

void relatedValues(const Context& context) {
    Trial trial(context);
    if (!trial.session.hasRelated()) {
        return note("the rule has no operand that names a column");
    }
    const std::string longText(50000, 'x');
    for (const char* related : {static_cast<const char*>(nullptr), "", "1",
                                "\xC3\xA9\xF0\x9F\x98\x80", " ", longText.c_str()}) {
        for (const TestValue& value : trial.corpus) {
            How how;
            how.related = related;
            maskAndCheck(trial, value, how);
        }
    }
}

// One batch in the engine's own window.
class Batch {
  public:
    Batch(Session& session, const std::vector<TestValue>& values, bool wide)
        : session_(session), wide_(wide) {
        window_.clear(session.hasRelated());
        for (const TestValue& value : values) {
            mask::Value given;
            given.text = value.text;
            given.related = "17";
            given.wide = wide;
            if (window_.count(wide) == mask::ValueWindow::kMost || window_.add(given) != 0) break;
        }
    }

    uint32_t size() const { return window_.count(wide_); }
    uint32_t place(uint32_t i) const { return wide_ ? mask::ValueWindow::kMost - 1 - i : i; }

    // What is wrong with the call as a whole; empty when nothing is.
    std::string run() {
        PrvCall call = session_.request().call(wide_);
        call.value = window_.values(wide_);
        call.result = window_.results(wide_);
        if (session_.hasRelated()) call.related = window_.relateds(wide_);
        try {
            const heap::Inside inside;
            status_ = session_.entry().maskBatch(session_.state(), &call, size(),
                                                 window_.statuses(wide_));
        } catch (...) {
            return "maskBatch throws an exception";
        }
        if (session_.request().hasErrors()) {
            session_.request().takeErrors({});
            return "maskBatch captures an error";
        }
        for (uint32_t i = 0; i < size(); ++i) {
            if (!window_.isIntact(place(i))) return "maskBatch writes past a target";
            if (!window_.sourceIsIntact(place(i))) return "maskBatch changes a source";
        }
        return {};
    }

    // Compares a value's result with what mask makes of it.
    std::string fault(uint32_t i, const Outcome& single) {
        if (status_ != 0 || window_.status(place(i)) != 0) return {};
        std::string_view text;
        bool isNull = false;
        std::string violation;
        if (window_.result(place(i), text, isNull, violation) != 0) {
            return "maskBatch " + violation;
        }
        if (!single.isMasked()) return "maskBatch masks a value that mask refuses";
        const bool isEqual = isNull == single.isNull && text == single.text;
        return isEqual ? "" : "maskBatch gives another result than mask";
    }

  private:
    Session& session_;
    bool wide_;
    mask::ValueWindow window_;
    int32_t status_ = 0;
};

}  // namespace

void compareBatch(Trial& trial, const std::vector<TestValue>& values, bool wide) {
    Batch batch(trial.session, values, wide);
    if (batch.size() == 0) return;
    doing("masking a batch that begins with ", values.front().kind.c_str());
    const std::string fault = batch.run();
    if (!fault.empty()) {
        return trial.findings.add(fault + ", in a batch of " + std::to_string(batch.size()) +
                                  " values that begins " + with(values.front()));
    }
    for (uint32_t i = 0; i < batch.size(); ++i) {
        How how;
        how.form = wide ? Form::wide : Form::narrow;
        const std::string difference = batch.fault(i, trial.mask(values[i], how));
        if (!difference.empty()) {
            trial.findings.add(difference + ", " + with(values[i], how) + " at place " +
                               std::to_string(i + 1) + " of " + std::to_string(batch.size()));
        }
    }
}

bool hasBatches(const Session& session) {
    return session.module().isVersion2() && session.entry().maskBatch != nullptr;
}

namespace {

void batchEqual(const Context& context) {
    Trial trial(context);
    if (!hasBatches(trial.session)) return note("the provider has no maskBatch");
    for (const bool wide : {false, true}) {
        std::vector<TestValue> fitting;
        for (const TestValue& value : trial.corpus) {
            if (wide || isAscii(value.text)) fitting.push_back(value);
        }
        for (const size_t size : {1, 2, 3, 17, 64}) {
            for (size_t begin = 0; begin < fitting.size(); begin += size) {
                const size_t end = std::min(begin + size, fitting.size());
                compareBatch(trial,
                             {fitting.begin() + static_cast<ptrdiff_t>(begin),
                              fitting.begin() + static_cast<ptrdiff_t>(end)},
                             wide);
            }
        }
    }
}

}  // namespace

std::vector<NamedTest> maskTests() {
    return {{"null-value", nullValue},        {"empty-value", emptyValue},
            {"one-character", oneCharacter},  {"longest-value", longestValue},
            {"ascii-values", asciiValues},    {"target-exact", targetExact},
            {"target-short", targetShort},    {"utf8-values", utf8Values},
            {"wide-values", wideValues},      {"source-fenced", sourceFenced},
            {"target-fenced", targetFenced},  {"source-unchanged", sourceUnchanged},
            {"result-set", resultSet},        {"result-valid", resultValid},
            {"batch-equal", batchEqual},      {"mask-each-allocation", maskEachAllocation},
            {"mask-leak", maskLeak},          {"values-accepted", valuesAccepted},
            {"related-values", relatedValues}};
}

}  // namespace kit
