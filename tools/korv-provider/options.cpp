// The command line's options and help.
#include "options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <thread>

#include "catalogue.h"

namespace kit {

namespace {

constexpr const char* kExitStatus =
    "Exit status: 0 no findings; 1 findings, also if the file is not a provider; 2 the tests\n"
    "could not be run.";

void addModule(CLI::App& app, Options& options) {
    app.add_option("module", options.module, "The provider module")->type_name("FILE");
    app.add_option("--helper", options.helpers,
                   "A helper korv-provider-run32 or korv-provider-run64, if it\n"
                   "is not found automatically; may be repeated")
        ->type_name("FILE")
        ->allow_extra_args(false);
    app.add_flag("--json", options.json, "Print one JSON document");
}

void addCheck(CLI::App& app, Options& options) {
    app.add_option("--rule", options.rules,
                   "A rule to test with, such as \"CCN, secret=test\", instead of\n"
                   "the module's sample rules; may be repeated. Every secret\n"
                   "that a rule names is replaced by a test secret")
        ->type_name("RULE")
        ->allow_extra_args(false);
    app.add_option("-l,--level", options.level, "Run the tests of the levels 1 to N")
        ->capture_default_str()
        ->type_name("N")
        ->check(CLI::Range(1, kHighestLevel));
    app.add_option("--only", options.only,
                   "Run only the tests whose title matches this,\n"
                   "such as '^4\\.' or 'target'")
        ->type_name("REGEX");
    app.add_option("--skip", options.skip, "Leave out the tests whose title matches this")
        ->type_name("REGEX");
    app.add_option("--values", options.values,
                   "Values to test with, one per line, in addition to the\nbuilt-in ones")
        ->type_name("FILE");
    app.add_option("--files", options.files,
                   "Folder of the files that rules name (default: the current one)")
        ->type_name("FOLDER");
    app.add_option("--record", options.record, "Write the results of all values to a file")
        ->type_name("FILE");
    app.add_option("--replay", options.replay, "Level 9: compare with the results in a file")
        ->type_name("FILE");
    app.add_option("--seed", options.seed, "Seed of random values")
        ->capture_default_str()
        ->type_name("N");
    app.add_option("--seconds", options.seconds,
                   "Level 10: seconds of each fuzz test with each rule")
        ->capture_default_str()
        ->type_name("N")
        ->check(CLI::Range(1u, 86400u));
    app.add_option("--timeout", options.timeout,
                   "Seconds of processor time after which a test is ended; it is\nalso ended after "
                   "four times as many seconds")
        ->capture_default_str()
        ->type_name("N")
        ->check(CLI::Range(1u, 86400u));
    app.add_option("-j,--jobs", options.jobs, "Tests at a time (default: the number of cores)")
        ->type_name("N")
        ->check(CLI::Range(1u, 256u));
    app.add_flag("-v,--verbose", options.verbose, "Print notes and figures, too");
}

}  // namespace

bool parseOptions(int argc, char** argv, Options& options, int& status) {
    CLI::App app("Inspects and certifies modules of masking providers.", "korv-provider");
    app.failure_message([](const CLI::App*, const CLI::Error& error) {
        return std::string("korv-provider: ") + error.what() +
               "\nkorv-provider --help describes the options.\n";
    });
    app.set_version_flag("--version", "korv-provider " KORV_VERSION);
    app.require_subcommand(1);
    app.footer(kExitStatus);
    CLI::App* const inspect =
        app.add_subcommand("inspect", "Print the properties of a module's file and its tables");
    addModule(*inspect, options);
    CLI::App* const check =
        app.add_subcommand("check", "Test a module, each test in a separate process");
    addModule(*check, options);
    addCheck(*check, options);
    bool isList = false;
    check->add_flag("--list", isList, "Print the tests, one per line, and exit");
    check->footer(kExitStatus);
    try {
        app.parse(argc, argv);
        options.mode = inspect->parsed() ? Mode::inspect : isList ? Mode::list : Mode::check;
        if (options.mode != Mode::list && options.module.empty()) {
            throw CLI::RequiredError("FILE");
        }
    } catch (const CLI::ParseError& error) {
        status = app.exit(error) == 0 ? kSound : kNotRun;
        return false;
    }
    if (options.jobs == 0) options.jobs = std::clamp(std::thread::hardware_concurrency(), 1u, 64u);
    return true;
}

}  // namespace kit
