// What the tests share.
#pragma once

#include <string>
#include <vector>

#include "channel.h"
#include "corpus.h"
#include "session.h"

namespace kit {

struct Context {
    const Settings& settings;
    const mask::ProviderModule* module = nullptr;  // of tests that need the tables
};

using Test = void (*)(const Context& context);

struct NamedTest {
    const char* name;
    Test run;
};

// The tests of each level, in tests_*.cpp.
std::vector<NamedTest> loadingTests();
std::vector<NamedTest> tableTests();
std::vector<NamedTest> openTests();
std::vector<NamedTest> maskTests();
std::vector<NamedTest> determinismTests();
std::vector<NamedTest> errorTests();
std::vector<NamedTest> surroundingsTests();
std::vector<NamedTest> promiseTests();
std::vector<NamedTest> vectorTests();
std::vector<NamedTest> fuzzTests();

// Not more findings of one kind than a reader wants: after the first few, they are counted.
class Findings {
  public:
    ~Findings();
    void add(const std::string& text);
    bool areFull() const { return count_ >= kMost; }
    bool isEmpty() const { return count_ == 0; }

  private:
    static constexpr size_t kMost = 3;
    size_t count_ = 0;
};

// "with card number 2 as wide text": what a finding says of a value.
std::string with(const TestValue& value, const How& how = {});

// An opened rule with its corpus, and what most tests do with them.
struct Trial {
    explicit Trial(const Context& context)
        : session(*context.module, context.settings), corpus(makeCorpus(context.settings)) {}

    // The values that are masked; reports nothing.
    const std::vector<TestValue>& accepted();
    // Masks with what is being done on record.
    const Outcome& mask(const TestValue& value, const How& how = {});

    Session session;
    std::vector<TestValue> corpus;
    std::vector<TestValue> acceptedValues;
    bool knowsAccepted = false;
    Findings findings;
};

// Calls check(trial, value, how, outcome) with each value of the corpus, in both forms and
// otherwise as told.
template <class Check>
void forEachOutcome(const Context& context, How how, Check check) {
    Trial trial(context);
    for (const TestValue& value : trial.corpus) {
        for (const Form form : {Form::automatic, Form::wide}) {
            how.form = form;
            check(trial, value, how, trial.mask(value, how));
        }
    }
}

bool isAscii(const std::string& text);
// What every call must hold to, whatever its value is; empty when it does.
std::string outcomeFault(const Session& session, const Outcome& outcome);

bool hasBatches(const Session& session);
// Masks values as one batch and one by one, and reports differences. In narrow form the values must
// be ASCII text.
void compareBatch(Trial& trial, const std::vector<TestValue>& values, bool wide);

// What a module has besides its functions, as text: for comparisons.
std::string tablesAsText(const PrvEntry& entry);

// Runs this program again for a task, such as "results", under other settings of the environment,
// and returns what it prints to its report.
std::vector<Record> runAgain(const Settings& settings, const std::string& task,
                             const std::vector<std::string>& environment);
// The task "results": the results of all values, as lines "value", kind, outcome.
void sendResults(const Context& context);
// An outcome as text, for comparisons between processes and with recorded vectors.
std::string asText(const Outcome& outcome);

}  // namespace kit
