// Level 10: random values and operands, and time.
#include <time.h>

#include <algorithm>

#include "checks.h"
#include "opening.h"
#include "watched_heap.h"

namespace kit {

namespace {

double now(clockid_t clock) {
    timespec time = {};
    ::clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

// Random steps until the time is over. A seed gives the same steps each time.
template <class Step>
void fuzz(const Context& context, Step step) {
    const Settings& settings = context.settings;
    Trial trial(context);
    Random random(settings.seed);
    const double end = now(CLOCK_MONOTONIC) + settings.seconds;
    uint64_t number = 0;
    while (!trial.findings.areFull() && (number % 16 != 0 || now(CLOCK_MONOTONIC) < end)) {
        ++number;
        // Each step has numbers of its own, however many the one before has used.
        Random own(random.next());
        const std::string where =
            "step " + std::to_string(number) + " of --seed " + std::to_string(settings.seed);
        step(trial, own, where);
    }
    figure("steps", std::to_string(number));
}

void fuzzValues(const Context& context) {
    fuzz(context, [](Trial& trial, Random& random, const std::string& where) {
        const TestValue value = {where, anyValue(trial.corpus, random)};
        How how;
        if (!isAscii(value.text) || random.below(3) == 0) how.form = Form::wide;
        how.isFenced = random.below(2) == 0;
        const Outcome first = trial.mask(value, how);
        const std::string fault = outcomeFault(trial.session, first);
        if (!fault.empty()) trial.findings.add("mask " + fault + ", in " + where);
        if (!first.sourceIsIntact) trial.findings.add("mask changes its source, in " + where);
        if (random.below(4) == 0) how.fill = 0x31;
        if (!trial.mask(value, how).equals(first)) {
            trial.findings.add("a second call gives another result, in " + where);
        }
        if (random.below(8) != 0) return;
        how.capacity = random.below(static_cast<uint32_t>(value.text.size() * 4 + 8)) / 4 * 4;
        const std::string tight = outcomeFault(trial.session, trial.mask(value, how));
        if (!tight.empty()) trial.findings.add("mask " + tight + ", in " + where);
    });
}

// A random value of any kind for an operand.
void randomize(Operands& operands, OprDefX& operand, const std::vector<TestValue>& corpus,
               Random& random) {
    operand.valueKind = static_cast<int32_t>(random.below(4));
    operand.intValue =
        random.below(2) == 0 ? random.below(20) : static_cast<uint32_t>(random.next());
    operand.wideValue = nullptr;
    operand.narrowValue = nullptr;
    if (operand.valueKind != OPR_VALUE_WIDE && operand.valueKind != OPR_VALUE_NARROW) return;
    const std::string text = anyValue(corpus, random);
    std::wstring wide;
    for (const char c : text) wide += static_cast<wchar_t>(static_cast<unsigned char>(c));
    operands.setText(operand, wide);
}

void fuzzOperands(const Context& context) {
    size_t blocks = 0;
    unsigned opened = 0;
    unsigned grown = 0;
    fuzz(context, [&](Trial& trial, Random& random, const std::string& where) {
        doing("opening the rule in ", where.c_str());
        PrvCall call = trial.session.request().call(false);
        Operands operands(*call.service);
        const PrvEntry& entry = trial.session.entry();
        auto& list = operands.list();
        for (uint32_t changes = 1 + random.below(3); changes > 0; --changes) {
            const uint32_t choice = random.below(4);
            if (choice == 0 && !list.empty()) {
                list.erase(list.begin() + random.below(static_cast<uint32_t>(list.size())));
            } else if (choice == 1 && !list.empty()) {
                randomize(operands, list[random.below(static_cast<uint32_t>(list.size()))],
                          trial.corpus, random);
            } else {
                OprDefX added = {};
                const bool isKnown = entry.operandCount > 0 && random.below(4) != 0;
                added.oprCode = isKnown ? entry.operands[random.below(entry.operandCount)].code
                                        : static_cast<uint16_t>(random.next());
                randomize(operands, added, trial.corpus, random);
                list.push_back(added);
            }
        }
        call.service = operands.linked();
        for (int again = 0; again < 2; ++again) {
            blocks = heap::liveBlocks();
            const Opening opening = openOnce(trial.session, call);
            const std::string fault = recordsFault(entry, opening.status, opening.errors);
            if (opening.threw) trial.findings.add("open throws an exception, in " + where);
            if (!fault.empty()) trial.findings.add("open " + fault + ", in " + where);
        }
        // The second of two equal calls fills no cache. `opening` above is gone by now.
        ++opened;
        if (heap::liveBlocks() > blocks) ++grown;
    });
    if (opened > 20 && grown > opened / 2) {
        finding("open with random operands keeps memory in " + std::to_string(grown) + " of " +
                std::to_string(opened) + " cases");
    }
}

void fuzzBatches(const Context& context) {
    fuzz(context, [](Trial& trial, Random& random, const std::string& where) {
        if (!hasBatches(trial.session)) return;
        const bool wide = random.below(3) == 0;
        std::vector<TestValue> values;
        for (uint32_t i = 1 + random.below(64); i > 0; --i) {
            std::string text = anyValue(trial.corpus, random);
            if (wide || isAscii(text)) values.push_back({where, std::move(text)});
        }
        if (!values.empty()) compareBatch(trial, values, wide);
    });
}

void fuzzUnmask(const Context& context) {
    fuzz(context, [](Trial& trial, Random& random, const std::string& where) {
        const bool isPromised = (trial.session.promises() & PRV_PROMISE_REVERSIBLE) != 0;
        if (!trial.session.canUnmask() || !isPromised) return;
        const TestValue value = {where, anyValue(trial.corpus, random)};
        How how;
        how.unmask = true;
        if (!isAscii(value.text) || random.below(3) == 0) how.form = Form::wide;
        how.isFenced = random.below(2) == 0;
        const std::string fault = outcomeFault(trial.session, trial.mask(value, how));
        if (!fault.empty()) trial.findings.add("unmask " + fault + ", in " + where);
    });
}

// The least CPU time of several calls, in seconds.
double timeOf(Session& session, const std::string& text) {
    constexpr double kEnough = 0.02;
    double least = 1e9;
    double total = 0;
    for (int i = 0; i < 7 && (i < 2 || total < kEnough); ++i) {
        const double start = now(CLOCK_THREAD_CPUTIME_ID);
        session.mask(text);
        const double took = now(CLOCK_THREAD_CPUTIME_ID) - start;
        least = std::min(least, took);
        total += took;
    }
    return least;
}

// Texts of a length that providers of different kinds accept, or look at to their end.
std::vector<TestValue> textsOfLength(Trial& trial, size_t length) {
    const auto repeated = [length](const std::string& unit, const std::string& end) {
        std::string text;
        while (text.size() + end.size() < length) text += unit;
        text.resize(length > end.size() ? length - end.size() : 1);
        return text + end;
    };
    std::vector<TestValue> texts = {
        {"digits", repeated("1234567890", "")},
        {"letters", repeated("abcdefghij", "")},
        {"an address", repeated("name", "@b.example")},
        {"words", repeated("word and ", "")},
        {"blanks", repeated(" ", "")},
        {"hyphens", repeated("1-", "")},
        {"at signs", repeated("@", "")},
        {"quotes", repeated("\"", "")},
        {"accents", {}},
    };
    for (size_t i = 0; i < length; ++i) texts.back().text += "\xC3\xA9";
    size_t added = 0;
    for (const TestValue& value : trial.accepted()) {
        if (isAscii(value.text) && added++ < 6) {
            texts.push_back({value.kind + " repeated", repeated(value.text, "")});
        }
    }
    return texts;
}

std::string inMilliseconds(double seconds) {
    return std::to_string(seconds * 1000) + " ms";
}

void timePerValue(const Context& context) {
    constexpr double kLimit = 1;
    Trial trial(context);
    // The mean over the values that are masked.
    double total = 0;
    for (const TestValue& value : trial.accepted()) total += timeOf(trial.session, value.text);
    if (!trial.accepted().empty()) {
        const double each = total / static_cast<double>(trial.accepted().size());
        figure("time per value, ns", std::to_string(static_cast<uint64_t>(each * 1e9)));
    }
    for (const size_t length : {10, 100, 1000, 8000}) {
        for (const TestValue& value : textsOfLength(trial, length)) {
            if (trial.findings.areFull()) return;
            doing("masking long ", value.kind.c_str());
            const double took = timeOf(trial.session, value.text);
            if (took < kLimit) continue;
            trial.findings.add(std::to_string(length) + " characters take " + inMilliseconds(took) +
                               ", with " + value.kind);
        }
    }
}

void timeGrowth(const Context& context) {
    constexpr size_t kShort = 1000;
    constexpr size_t kLong = 8000;
    // The square of 8 is 64. What takes less time than this is not measured well enough.
    constexpr double kMostGrowth = 160;
    constexpr double kMeasurable = 0.0005;
    Trial trial(context);
    const std::vector<TestValue> shorter = textsOfLength(trial, kShort);
    const std::vector<TestValue> longer = textsOfLength(trial, kLong);
    double worst = 0;
    for (size_t i = 0; i < longer.size(); ++i) {
        doing("masking long ", longer[i].kind.c_str());
        double after = timeOf(trial.session, longer[i].text);
        if (after < kMeasurable) continue;
        double before = timeOf(trial.session, shorter[i].text);
        // A busy machine disturbs: once more when it looks bad.
        if (after > before * kMostGrowth) {
            after = std::min(after, timeOf(trial.session, longer[i].text));
            before = std::max(before, timeOf(trial.session, shorter[i].text));
        }
        worst = std::max(worst, after / before);
        if (after <= before * kMostGrowth) continue;
        trial.findings.add(std::to_string(kShort) + " characters take " + inMilliseconds(before) +
                           " and " + std::to_string(kLong) + " take " + inMilliseconds(after) +
                           ", with " + longer[i].kind);
    }
    figure("growth from 1,000 to 8,000 characters",
           worst == 0 ? "below 0.5 ms" : std::to_string(worst));
}

}  // namespace

std::vector<NamedTest> fuzzTests() {
    return {{"fuzz-values", fuzzValues},      {"fuzz-operands", fuzzOperands},
            {"fuzz-batches", fuzzBatches},    {"fuzz-unmask", fuzzUnmask},
            {"time-per-value", timePerValue}, {"time-growth", timeGrowth}};
}

}  // namespace kit
