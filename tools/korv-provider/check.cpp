// Which tests run with which rules, and the report of what they found.
#include "check.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <exception>
#include <fstream>
#include <mutex>
#include <optional>
#include <regex>
#include <set>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <thread>

#include "catalogue.h"
#include "elf_file.h"
#include "file_tests.h"
#include "helper_process.h"
#include "json.h"

namespace kit {

namespace {

// One test, with one rule if it needs one, and what came of it.
struct Job {
    const TestInfo* test;
    std::string rule;
    std::vector<std::string> findings;
    std::vector<std::string> notes;
    std::vector<std::pair<std::string, std::string>> figures;
    std::string notRun;      // the reason
    bool isRefused = false;  // the reason is the rule
    double seconds = 0;
};

struct Report {
    std::string provider;  // its name, when it is known
    std::vector<std::string> rules;
    std::vector<Job> jobs;
};

std::vector<const TestInfo*> chosenTests(const Options& options) {
    const auto compiled = [](const std::string& text, const char* option) {
        try {
            return std::regex(text, std::regex::ECMAScript);
        } catch (const std::regex_error&) {
            throw std::runtime_error(std::string(option) + " is not a regular expression: " + text);
        }
    };
    const std::regex only = compiled(options.only, "--only");
    const std::regex skip = compiled(options.skip, "--skip");
    std::vector<const TestInfo*> tests;
    for (const TestInfo& test : allTests()) {
        if (test.level > options.level) continue;
        if (options.replay.empty() && std::string_view(test.name) == "vectors-replayed") continue;
        const std::string title = test.title();
        if (!options.only.empty() && !std::regex_search(title, only)) continue;
        if (!options.skip.empty() && std::regex_search(title, skip)) continue;
        tests.push_back(&test);
    }
    if (tests.empty()) throw std::runtime_error("no test of these levels matches");
    return tests;
}

void requireReadable(const std::string& path, const char* option) {
    if (path.empty() || ::access(path.c_str(), R_OK) == 0) return;
    throw std::system_error(errno, std::generic_category(), std::string(option) + " " + path);
}

HelperRun runFor(const Options& options, const Helper& helper, const std::string& rule,
                 std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), options.module);
    const std::pair<const char*, std::string> all[] = {
        {"--rule", rule},
        {"--values", options.values},
        {"--files", options.files},
        {"--replay", options.replay},
        {"--seed", std::to_string(options.seed)},
        {"--seconds", std::to_string(options.seconds)}};
    for (const auto& [name, value] : all) {
        if (!value.empty()) arguments.insert(arguments.end(), {name, value});
    }
    // Fuzz tests take their time and then some.
    HelperRun run = runHelper(helper, arguments, options.timeout + options.seconds);
    if (!run.isDone && run.status == 127 && run.records.empty()) {
        throw std::runtime_error("the helper " + helper.path + " cannot be started");
    }
    return run;
}

void runJob(const Options& options, const Helper& helper, const ElfFile& file, Job& job) {
    if (job.test->scope == Scope::file) {
        job.findings = runFileTest(*job.test, options.module, &file, "");
        return;
    }
    const auto start = std::chrono::steady_clock::now();
    const std::string number =
        std::to_string(job.test->level) + "." + std::to_string(job.test->number);
    const HelperRun run = runFor(options, helper, job.rule, {"--test", number});
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    job.seconds = took.count();
    for (const Record& record : run.records) {
        if (record.size() < 2) continue;
        if (record[0] == "finding") job.findings.push_back(record[1]);
        if (record[0] == "note") job.notes.push_back(record[1]);
        if (record[0] == "not run" || record[0] == "refused") job.notRun = record[1];
        job.isRefused |= record[0] == "refused";
        if (record[0] == "figure" && record.size() > 2) {
            job.figures.emplace_back(record[1], record[2]);
        }
    }
    if (std::string end = endOf(run); !end.empty()) job.findings.push_back(std::move(end));
}

// The jobs of several threads, each of which waits for one helper at a time.
void runJobs(const Options& options, const Helper& helper, const ElfFile& file,
             std::vector<Job>& jobs) {
    std::atomic<size_t> next = 0;
    std::exception_ptr failure;
    std::mutex mutex;
    std::vector<std::thread> workers;
    for (unsigned n = 0; n < options.jobs; ++n) {
        workers.emplace_back([&] {
            for (size_t i; (i = next++) < jobs.size();) {
                try {
                    runJob(options, helper, file, jobs[i]);
                } catch (...) {
                    const std::lock_guard<std::mutex> lock(mutex);
                    failure = std::current_exception();
                    next = jobs.size();
                }
            }
        });
    }
    for (std::thread& worker : workers) worker.join();
    if (failure) std::rethrow_exception(failure);
}

// The name and the sample rules, as far as the module can be asked.
void askModule(const Options& options, const Helper& helper, Report& report) {
    const HelperRun run = runFor(options, helper, "", {"--task", "inspect"});
    for (const Record& record : run.records) {
        if (record.size() < 2) continue;
        if (record[0] == "provider") report.provider = record[1];
        if (record[0] == "rule" && options.rules.empty()) report.rules.push_back(record[1]);
    }
    if (!options.rules.empty()) report.rules = options.rules;
}

std::vector<Job> jobsFor(const std::vector<const TestInfo*>& tests, const ElfFile& file,
                         const std::vector<std::string>& rules) {
    std::vector<Job> jobs;
    const auto add = [&jobs](const TestInfo* test, const std::string& rule) {
        Job& job = jobs.emplace_back();
        job.test = test;
        job.rule = rule;
    };
    for (const TestInfo* test : tests) {
        if (test->bits != 0 && test->bits != file.bits) continue;
        if (test->scope != Scope::rule) add(test, "");
    }
    for (const std::string& rule : rules) {
        for (const TestInfo* test : tests) {
            if (test->bits != 0 && test->bits != file.bits) continue;
            if (test->scope == Scope::rule) add(test, rule);
        }
    }
    return jobs;
}

std::string withRule(const Job& job) {
    return job.rule.empty() ? "" : ", with the rule '" + job.rule + "'";
}

size_t findingsOf(const Report& report) {
    size_t count = 0;
    for (const Job& job : report.jobs) count += job.findings.size();
    return count;
}

// A message about several tests that were not run for one reason is printed once.
void printNotRun(const Options& options, const Report& report) {
    std::set<std::string> told;
    for (const Job& job : report.jobs) {
        if (job.notRun.empty() || !told.insert(withRule(job) + job.notRun).second) continue;
        std::printf("%s: tests were not run%s: %s\n", options.module.c_str(),
                    printable(withRule(job)).c_str(), printable(job.notRun).c_str());
    }
}

void printReport(const Options& options, const Report& report) {
    const char* const path = options.module.c_str();
    size_t notRun = 0;
    for (const Job& job : report.jobs) {
        const auto print = [&](const char* kind, const std::string& text) {
            std::printf("%s: %s: %s%s%s\n", path, job.test->title().c_str(), kind,
                        printable(text).c_str(), printable(withRule(job)).c_str());
        };
        for (const std::string& text : job.findings) print("", text);
        if (options.verbose) {
            for (const std::string& text : job.notes) print("note: ", text);
            for (const auto& [name, value] : job.figures) print("figure: ", name + ": " + value);
        }
        if (!job.notRun.empty()) ++notRun;
    }
    printNotRun(options, report);
    if (report.rules.empty()) {
        std::printf("%s: no rule was tested: the module has no sample rules; give --rule\n", path);
    }
    std::printf("%s: %s: level %d, %zu tests with %zu rules, %zu findings, %zu not run\n", path,
                report.provider.empty() ? "no provider" : printable(report.provider).c_str(),
                options.level, report.jobs.size() - notRun, report.rules.size(), findingsOf(report),
                notRun);
}

std::string asJson(const Job& job) {
    std::vector<std::pair<std::string, std::string>> figures;
    for (const auto& [name, value] : job.figures) figures.emplace_back(name, jsonString(value));
    const char* const verdict = !job.findings.empty() ? "found"
                                : !job.notRun.empty() ? "not run"
                                                      : "passed";
    std::vector<std::pair<std::string, std::string>> members = {
        {"number",
         jsonString(std::to_string(job.test->level) + "." + std::to_string(job.test->number))},
        {"name", jsonString(job.test->name)},
        {"level", std::to_string(job.test->level)},
        {"verdict", jsonString(verdict)},
        {"findings", jsonStrings(job.findings)},
        {"notes", jsonStrings(job.notes)},
        {"figures", jsonObject(figures)},
        {"seconds", std::to_string(job.seconds)}};
    if (!job.rule.empty()) members.emplace_back("rule", jsonString(job.rule));
    if (!job.notRun.empty()) members.emplace_back("reason", jsonString(job.notRun));
    return jsonObject(members);
}

void printJson(const Options& options, const Report& report, int status) {
    std::vector<std::string> jobs;
    for (const Job& job : report.jobs) jobs.push_back(asJson(job));
    std::printf("%s\n", jsonObject({{"module", jsonString(options.module)},
                                    {"provider", jsonString(report.provider)},
                                    {"level", std::to_string(options.level)},
                                    {"seed", std::to_string(options.seed)},
                                    {"rules", jsonStrings(report.rules)},
                                    {"findings", std::to_string(findingsOf(report))},
                                    {"status", std::to_string(status)},
                                    {"tests", jsonArray(jobs)}})
                            .c_str());
}

// The results of all values with each rule, one in a line.
void recordVectors(const Options& options, const Helper& helper, const Report& report) {
    std::string text = "# Results of " + report.provider +
                       " for korv-provider check --replay: rule, kind of value, value, result\n";
    for (const std::string& rule : report.rules) {
        const HelperRun run = runFor(options, helper, rule, {"--task", "results"});
        for (const Record& record : run.records) {
            if (record[0] != "value" || record.size() != 4) continue;
            text += toLine({rule, record[1], record[2], record[3]}) + "\n";
        }
    }
    std::ofstream file(options.record, std::ios::binary);
    file << text;
    file.close();
    if (!file) {
        throw std::system_error(errno, std::generic_category(), "--record " + options.record);
    }
}

int finish(const Options& options, const Report& report) {
    // A rule that is refused is a finding of one test. Without that test, nothing was tested.
    const bool isRefused = std::any_of(report.jobs.begin(), report.jobs.end(),
                                       [](const Job& job) { return job.isRefused; });
    const int status = findingsOf(report) > 0 ? kHasFindings : isRefused ? kNotRun : kSound;
    options.json ? printJson(options, report, status) : printReport(options, report);
    return status;
}

}  // namespace

int check(const Options& options) {
    const std::vector<const TestInfo*> tests = chosenTests(options);
    requireReadable(options.values, "--values");
    requireReadable(options.files, "--files");
    requireReadable(options.replay, "--replay");
    Report report;
    ElfFile file;
    try {
        file = readElfFile(options.module);
    } catch (const ElfFault& fault) {
        Job& job = report.jobs.emplace_back();
        job.test = &allTests().front();
        job.findings = runFileTest(*job.test, options.module, nullptr, fault.what());
        return finish(options, report);
    }
    const Helper helper = findHelper(file.bits, options.helpers);
    if (helper.path.empty()) throw std::runtime_error(missingHelper(options.module, file.bits));
    askModule(options, helper, report);
    report.jobs = jobsFor(tests, file, report.rules);
    runJobs(options, helper, file, report.jobs);
    if (!options.record.empty()) recordVectors(options, helper, report);
    return finish(options, report);
}

int listTests() {
    for (const TestInfo& test : allTests()) {
        std::printf("%-27s level %2d, %s: %s%s\n", test.title().c_str(), test.level,
                    std::string(levelName(test.level)).c_str(), test.purpose,
                    test.bits == 32 ? " (32-bit modules only)" : "");
    }
    return kSound;
}

}  // namespace kit
