// Level 5: the same rule and value give the same result, always and everywhere.
#include <locale.h>
#include <stdlib.h>
#include <time.h>

#include <algorithm>
#include <exception>
#include <thread>

#include "checks.h"

namespace kit {

namespace {

std::vector<Outcome> outcomesOf(Trial& trial, const How& how = {}) {
    std::vector<Outcome> outcomes;
    for (const TestValue& value : trial.corpus) outcomes.push_back(trial.mask(value, how));
    return outcomes;
}

// Compares with earlier outcomes for the same corpus.
void compare(Trial& trial, const std::vector<Outcome>& before, const std::vector<Outcome>& now,
             const std::string& when) {
    for (size_t i = 0; i < before.size(); ++i) {
        if (now[i].equals(before[i])) continue;
        trial.findings.add("the result is another one " + when + ", " + with(trial.corpus[i]));
    }
}

void repeatedValue(const Context& context) {
    Trial trial(context);
    for (const TestValue& value : trial.corpus) {
        const Outcome first = trial.mask(value);
        for (int i = 0; i < 3; ++i) {
            if (trial.mask(value).equals(first)) continue;
            trial.findings.add("the result is another one in a later call, " + with(value));
        }
    }
}

void otherOrder(const Context& context) {
    Trial trial(context);
    const std::vector<Outcome> before = outcomesOf(trial);
    std::vector<size_t> order(trial.corpus.size());
    for (size_t i = 0; i < order.size(); ++i) order[i] = order.size() - 1 - i;
    Random random(context.settings.seed);
    for (int round = 0; round < 3; ++round) {
        for (const size_t i : order) {
            if (trial.mask(trial.corpus[i]).equals(before[i])) continue;
            trial.findings.add("the result is another one after other values, " +
                               with(trial.corpus[i]));
        }
        for (size_t i = order.size() - 1; i > 0; --i) {
            std::swap(order[i], order[random.below(static_cast<uint32_t>(i + 1))]);
        }
    }
}

void otherInstance(const Context& context) {
    Trial trial(context);
    const std::vector<Outcome> before = outcomesOf(trial);
    // Both are open at the same time and are used by turns.
    Trial other(context);
    for (size_t i = 0; i < trial.corpus.size(); ++i) {
        const Outcome second = other.mask(trial.corpus[i]);
        if (!second.equals(before[i]) || !trial.mask(trial.corpus[i]).equals(before[i])) {
            trial.findings.add("another instance gives another result, " + with(trial.corpus[i]));
        }
    }
}

// The results in another process with these variables.
void compareProcess(const Context& context, const std::vector<std::string>& environment,
                    const std::string& where) {
    Trial trial(context);
    doing("masking in another process");
    const std::vector<Record> records = runAgain(context.settings, "results", environment);
    if (records.size() != trial.corpus.size()) return finding("another process ended early");
    for (size_t i = 0; i < records.size(); ++i) {
        if (records[i].back() == asText(trial.mask(trial.corpus[i]))) continue;
        trial.findings.add("the result is another one " + where + ", " + with(trial.corpus[i]));
    }
}

void otherProcess(const Context& context) {
    compareProcess(context, {"KORV_PROVIDER_OTHER_PROCESS=1"}, "in another process");
}

void otherTimeZone(const Context& context) {
    compareProcess(context, {"TZ=Pacific/Kiritimati"}, "in the time zone Pacific/Kiritimati");
    Trial trial(context);
    const std::vector<Outcome> before = outcomesOf(trial);
    for (const char* zone : {"America/St_Johns", "XYZ-13:59:59", "UTC"}) {
        ::setenv("TZ", zone, 1);
        ::tzset();
        compare(trial, before, outcomesOf(trial), std::string("in the time zone ") + zone);
        Trial opened(context);
        compare(trial, before, outcomesOf(opened), std::string("in the time zone ") + zone);
    }
}

// Of the process; the thread's stays C.UTF-8, as in the engine.
void otherLocale(const Context& context) {
    Trial trial(context);
    const std::vector<Outcome> before = outcomesOf(trial);
    size_t tried = 0;
    for (const char* name : {"C", "POSIX", "C.UTF-8", "tr_TR.UTF-8", "de_DE.UTF-8", "de_DE",
                             "en_US.UTF-8", "fr_FR.UTF-8", "ja_JP.UTF-8"}) {
        if (::setlocale(LC_ALL, name) == nullptr) continue;
        ++tried;
        compare(trial, before, outcomesOf(trial), std::string("in the locale ") + name);
        Trial opened(context);
        compare(trial, before, outcomesOf(opened), std::string("in the locale ") + name);
    }
    figure("locales tried", std::to_string(tried));
}

void threads(const Context& context) {
    constexpr int kThreads = 8;
    constexpr int kRounds = 5;
    Trial trial(context);
    const std::vector<Outcome> before = outcomesOf(trial);
    std::vector<std::vector<std::string>> differences(kThreads);
    std::vector<std::thread> workers;
    workers.reserve(kThreads);
    doing("masking in 8 threads");
    for (int n = 0; n < kThreads; ++n) {
        workers.emplace_back([&, n] {
            try {
                const EngineLocale locale;
                for (int round = 0; round < kRounds; ++round) {
                    Session session(*context.module, context.settings);
                    for (size_t i = 0; i < before.size(); ++i) {
                        // Each thread begins elsewhere.
                        const size_t at = (i + static_cast<size_t>(n) * 37) % before.size();
                        if (session.mask(trial.corpus[at].text).equals(before[at])) continue;
                        differences[static_cast<size_t>(n)].push_back(with(trial.corpus[at]));
                    }
                }
            } catch (const std::exception& error) {
                differences[static_cast<size_t>(n)].push_back(error.what());
            }
        });
    }
    for (std::thread& worker : workers) worker.join();
    for (const auto& ofThread : differences) {
        for (const std::string& text : ofThread) {
            trial.findings.add("the result is another one when 8 threads work, " + text);
        }
    }
}

void narrowAgainstWide(const Context& context) {
    Trial trial(context);
    for (const TestValue& value : trial.corpus) {
        if (!isAscii(value.text)) continue;
        How how;
        how.form = Form::narrow;
        const Outcome narrow = trial.mask(value, how);
        how.form = Form::wide;
        if (trial.mask(value, how).equals(narrow)) continue;
        trial.findings.add("narrow and wide text have different results, " + with(value));
    }
}

void otherMemory(const Context& context) {
    Trial trial(context);
    const std::vector<Outcome> before = outcomesOf(trial);
    for (const unsigned char fill : {'\0', '0', 'a', '\xFF'}) {
        for (const bool isFenced : {false, true}) {
            How how;
            how.fill = fill;
            how.isFenced = isFenced;
            compare(trial, before, outcomesOf(trial, how),
                    "with bytes " + std::to_string(fill) + " in the target and around the source");
        }
    }
}

}  // namespace

std::vector<NamedTest> determinismTests() {
    return {{"repeated-value", repeatedValue},
            {"other-order", otherOrder},
            {"other-instance", otherInstance},
            {"other-process", otherProcess},
            {"threads", threads},
            {"other-locale", otherLocale},
            {"other-time-zone", otherTimeZone},
            {"narrow-against-wide", narrowAgainstWide},
            {"other-memory", otherMemory}};
}

}  // namespace kit
