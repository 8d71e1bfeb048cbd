// Level 8: what a provider promises for its rules, proved on small domains and tried on many
// values.
#include <algorithm>
#include <ctime>
#include <string_view>
#include <unordered_map>

#include "checks.h"
#include "mask/mask_error.h"
#include "mask/text/utf8_text.h"

namespace kit {

namespace {

constexpr uint32_t kKnown = PRV_PROMISE_ONE_TO_ONE | PRV_PROMISE_LENGTH_KEPT |
                            PRV_PROMISE_FORMAT_KEPT | PRV_PROMISE_REVERSIBLE;

bool promises(Trial& trial, uint32_t promise) {
    if ((trial.session.promises() & promise) != 0) return true;
    note("the rule does not promise it");
    return false;
}

void promisesKnown(const Context& context) {
    Trial trial(context);
    const uint32_t first = trial.session.promises();
    if ((first & ~kKnown) != 0) {
        finding("it promises " + std::to_string(first) + ", which holds unknown promises");
    }
    if ((first & PRV_PROMISE_REVERSIBLE) != 0 && !trial.session.canUnmask()) {
        finding("it promises that unmask gives values back, and has no unmask");
    }
    for (const TestValue& value : trial.corpus) trial.mask(value);
    if (trial.session.promises() != first) finding("after values were masked, it promises another");
    Session other(*context.module, context.settings);
    if (other.promises() != first) finding("another instance promises another");
}

// Every text of `length` characters of an alphabet.
template <class Visit>
void forEachText(std::string_view alphabet, size_t length, Visit visit) {
    std::string text(length, alphabet[0]);
    std::vector<size_t> digits(length, 0);
    for (;;) {
        visit(text);
        size_t at = length;
        while (at > 0 && ++digits[at - 1] == alphabet.size()) {
            digits[at - 1] = 0;
            text[at - 1] = alphabet[0];
            --at;
        }
        if (at == 0) return;
        text[at - 1] = alphabet[digits[at - 1]];
    }
}

constexpr std::string_view kDigits = "0123456789";
constexpr std::string_view kLower = "abcdefghijklmnopqrstuvwxyz";
constexpr std::string_view kUpper = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";

// The places of the last `count` characters of an alphabet in a text.
std::vector<size_t> lastPlaces(const std::string& text, std::string_view alphabet, size_t count) {
    std::vector<size_t> places;
    for (size_t i = text.size(); i > 0 && places.size() < count; --i) {
        if (alphabet.find(text[i - 1]) != std::string_view::npos) places.push_back(i - 1);
    }
    return places;
}

// All values of small domains: short texts, and accepted values with all characters in some places.
template <class Visit>
void forEachSmall(const std::vector<TestValue>& accepted, Visit visit) {
    for (size_t length = 1; length <= 4; ++length) forEachText(kDigits, length, visit);
    for (size_t length = 1; length <= 2; ++length) {
        forEachText(kLower, length, visit);
        forEachText(kUpper, length, visit);
    }
    constexpr size_t kMostValues = 40;
    size_t used = 0;
    for (const TestValue& value : accepted) {
        const std::pair<std::string_view, size_t> domains[] = {{kDigits, 3}, {kLower, 2}};
        for (const auto& domain : domains) {
            const std::string_view alphabet = domain.first;
            const size_t count = domain.second;
            const std::vector<size_t> places = lastPlaces(value.text, alphabet, count);
            if (places.size() < count || value.text.size() > 200) continue;
            std::string text = value.text;
            forEachText(alphabet, count, [&](const std::string& part) {
                for (size_t i = 0; i < count; ++i) text[places[i]] = part[i];
                visit(text);
            });
        }
        if (++used == kMostValues) break;
    }
}

std::string shapeOf(const std::string& text) {
    return std::to_string(text.size()) + " bytes";
}

void oneToOneSmall(const Context& context) {
    Trial trial(context);
    if (!promises(trial, PRV_PROMISE_ONE_TO_ONE)) return;
    const std::vector<TestValue>& accepted = trial.accepted();
    std::unordered_map<std::string, std::string> sources;  // by result
    doing("masking every value of small domains");
    const auto visit = [&](const std::string& text) {
        const Outcome& outcome = trial.session.mask(text);
        if (!outcome.isMasked()) return;
        const auto [at, isNew] = sources.emplace(outcome.isNull ? "" : outcome.text, text);
        if (!isNew && at->second != text) {
            trial.findings.add("two values have one result; they have " + shapeOf(text) + " and " +
                               shapeOf(at->second));
        }
    };
    forEachSmall(accepted, visit);
    for (const TestValue& value : accepted) visit(value.text);
    figure("values of small domains", std::to_string(sources.size()));
}

// Values like those of a corpus. Some providers prepare something for each beginning or end of
// values: the samples of a block share their first half and, in every other block, their last
// quarter.
class Samples {
  public:
    Samples(const std::vector<TestValue>& values, uint64_t seed, size_t block)
        : random_(seed), block_(block) {
        for (const TestValue& value : values) {
            if (value.text.size() <= 100 || values_.empty()) values_.push_back(value.text);
        }
    }

    std::string next() {
        if (count_++ % block_ == 0) {
            base_ = variant(values_[random_.below(static_cast<uint32_t>(values_.size()))], random_);
        }
        std::string text = variant(base_, random_, base_.size() / 2);
        const size_t end = base_.size() - base_.size() / 4;
        if (count_ / block_ % 2 == 1) text.replace(end, std::string::npos, base_, end);
        return text;
    }

  private:
    std::vector<std::string> values_;
    Random random_;
    size_t block_;
    size_t count_ = 0;
    std::string base_;
};

uint64_t hashOf(std::string_view text) {
    uint64_t x = 0xCBF29CE484222325u;  // FNV-1a, then mixed
    for (const char c : text) x = (x ^ static_cast<unsigned char>(c)) * 0x100000001B3u;
    return Random(x).next();
}

void oneToOneSamples(const Context& context) {
    constexpr size_t kSamples = 1000000;
    constexpr std::clock_t kMostSeconds = 8;
    Trial trial(context);
    if (!promises(trial, PRV_PROMISE_ONE_TO_ONE)) return;
    const std::vector<TestValue>& accepted = trial.accepted();
    if (accepted.empty()) return notRun("no value was masked; give --values");
    // Pairs of the hashes of a value and its result: the chance that two of 10^6 are equal although
    // the texts differ is below 10^-7.
    std::vector<std::pair<uint64_t, uint64_t>> pairs;
    pairs.reserve(kSamples);
    doing("masking a million values");
    Samples samples(accepted, context.settings.seed, 1000);
    const std::clock_t start = std::clock();
    for (size_t i = 0; i < kSamples; ++i) {
        if (i % 1024 == 0 && std::clock() - start > kMostSeconds * CLOCKS_PER_SEC) {
            note("it took too long for a million values: " + std::to_string(i) + " were tried");
            break;
        }
        const std::string text = samples.next();
        const Outcome& outcome = trial.session.mask(text);
        if (outcome.isMasked()) pairs.emplace_back(hashOf(text), hashOf(outcome.text));
    }
    std::sort(pairs.begin(), pairs.end());
    pairs.erase(std::unique(pairs.begin(), pairs.end()), pairs.end());
    std::vector<uint64_t> values, results;
    for (const auto& [value, result] : pairs) {
        values.push_back(value);
        results.push_back(result);
    }
    const auto countOf = [](std::vector<uint64_t>& hashes) {
        std::sort(hashes.begin(), hashes.end());
        return std::unique(hashes.begin(), hashes.end()) - hashes.begin();
    };
    const auto valueCount = countOf(values);
    const auto resultCount = countOf(results);
    figure("different values masked", std::to_string(valueCount));
    if (resultCount < valueCount) {
        finding(std::to_string(valueCount) + " different values have " +
                std::to_string(resultCount) + " different results; --seed " +
                std::to_string(context.settings.seed) + " repeats this");
    }
}

// Calls `check` with accepted values and many like them, and their results.
template <class Check>
void forEachMasked(const Context& context, uint32_t promise, Check check) {
    constexpr size_t kSamples = 10000;
    Trial trial(context);
    if (!promises(trial, promise)) return;
    const std::vector<TestValue>& accepted = trial.accepted();
    if (accepted.empty()) return notRun("no value was masked; give --values");
    for (const TestValue& value : accepted) {
        const Outcome outcome = trial.mask(value);
        check(trial, value, outcome);
    }
    Samples samples(accepted, context.settings.seed, 500);
    for (size_t i = 0; i < kSamples && !trial.findings.areFull(); ++i) {
        const TestValue value = {"sample " + std::to_string(i + 1) + " of --seed " +
                                     std::to_string(context.settings.seed),
                                 samples.next()};
        const Outcome outcome = trial.session.mask(value.text);
        if (outcome.isMasked()) check(trial, value, outcome);
    }
}

size_t characters(const std::string& text) {
    return static_cast<size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

void lengthKept(const Context& context) {
    forEachMasked(context, PRV_PROMISE_LENGTH_KEPT,
                  [](Trial& trial, const TestValue& value, const Outcome& outcome) {
                      const size_t before = characters(value.text);
                      const size_t after = characters(outcome.text);
                      if (before == after) return;
                      trial.findings.add("a result of " + std::to_string(after) +
                                         " characters for a value of " + std::to_string(before) +
                                         ", " + with(value));
                  });
}

void formatKept(const Context& context) {
    forEachMasked(
        context, PRV_PROMISE_FORMAT_KEPT,
        [](Trial& trial, const TestValue& value, const Outcome& outcome) {
            if (outcome.isNull || outcome.text.empty() ||
                !trial.session.mask(outcome.text).isMasked()) {
                trial.findings.add("the result is not accepted as a value, " + with(value));
            }
        });
}

void reversible(const Context& context) {
    forEachMasked(
        context, PRV_PROMISE_REVERSIBLE,
        [](Trial& trial, const TestValue& value, const Outcome& outcome) {
            if (!trial.session.canUnmask()) return;
            for (const Form form : {Form::automatic, Form::wide}) {
                How how;
                how.form = form;
                how.unmask = true;
                how.isFenced = true;
                const Outcome& back = trial.session.mask(outcome.text, how);
                const std::string fault = outcomeFault(trial.session, back);
                if (!fault.empty() || back.isNull || back.text != value.text) {
                    trial.findings.add("unmask does not give the value back, " + with(value, how));
                }
            }
        });
}

std::string quoted(const std::string& element) {
    std::string text = "\"";
    for (const char c : element) {
        if (c == '"' || c == '\\') text += '\\';
        text += c;
    }
    return text + '"';
}

// The rule without the operand, and with each of `elements` instead of it.
std::vector<std::string> changedRules(const std::string& rule, const std::string& key,
                                      const std::vector<std::string>& elements) {
    const mask::Rules parsed = mask::parseOneRule(rule, "rule");
    std::string without = parsed.rules.front().action;
    for (const mask::RuleOperand& operand : parsed.rules.front().operands) {
        if (operand.key == key) continue;
        without += ", " + quoted(operand.key + (operand.hasValue ? "=" + operand.value : ""));
    }
    std::vector<std::string> rules = {without};
    for (const std::string& element : elements) rules.push_back(without + ", " + element);
    return rules;
}

// What the results of a rule are with an operand and without it: where both mask a value, the same.
void checksOnlyRefuse(const Context& context) {
    const PrvEntry& entry = *context.module->entry;
    Trial trial(context);
    bool hasSome = false;
    for (uint32_t i = 0; i < entry.operandCount && trial.session.module().isVersion3(); ++i) {
        const PrvOperand& operand = entry.operands[i];
        if ((operand.flags & PRV_OPERAND_CHECK) == 0) continue;
        hasSome = true;
        std::vector<std::string> elements;
        if (operand.kind == OPR_VALUE_NONE) elements = {operand.key};
        if (operand.kind == OPR_VALUE_INTEGER) {
            for (const int32_t number : {operand.minimum, operand.maximum}) {
                elements.push_back(std::string(operand.key) + "=" + std::to_string(number));
            }
        }
        for (const std::string& rule : changedRules(context.settings.rule, operand.key, elements)) {
            Settings settings = context.settings;
            settings.rule = rule;
            std::unique_ptr<Session> other;
            try {
                other = std::make_unique<Session>(*context.module, settings);
            } catch (const mask::MaskError&) {
                continue;  // it may refuse rules as well
            }
            for (const TestValue& value : trial.corpus) {
                const Outcome& changed = other->mask(value.text);
                const Outcome& plain = trial.mask(value);
                if (!changed.isMasked() || !plain.isMasked() || changed.equals(plain)) continue;
                trial.findings.add("operand " + std::string(operand.key) + " changes the result, " +
                                   with(value));
            }
        }
    }
    if (!hasSome) note("the provider has no operand that only refuses values");
}

}  // namespace

std::vector<NamedTest> promiseTests() {
    return {{"promises-known", promisesKnown},
            {"one-to-one-small", oneToOneSmall},
            {"one-to-one-samples", oneToOneSamples},
            {"length-kept", lengthKept},
            {"format-kept", formatKept},
            {"reversible", reversible},
            {"checks-only-refuse", checksOnlyRefuse}};
}

}  // namespace kit
