// The command line's options and help.
#include "options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <string>
#include <thread>

#include "modes.h"
#include "process.h"

namespace tool {

namespace {

constexpr uint32_t kMostJobs = 256;

constexpr const char* kRulesInShort =
    "Rules, one line for each column:\n"
    "  CARD = CCN, secret=crm           masked by the provider CCN, with the secret crm\n"
    "  \"First Name\" = HASH, secret=crm, file=names.txt\n"
    "  @3 = KEEP                        the third column, kept in clear\n"
    "  ADDR* = DROP                     every column whose name begins with ADDR, left out\n"
    "  NOTE = NULL                      every value becomes NULL\n"
    "  TITLE = CONST, value=Dr.         replaced by a constant\n"
    "Operands of every rule: type=auto|wide, on-error=empty|null|const|drop-row|abort,\n"
    "unchanged=error, unique; with a secret also method and scope. A column without a rule\n"
    "is an error unless --keep-unlisted is given.\n";

constexpr const char* kExitStatus =
    "\nExit status: 0 every value is masked; 1 some values failed, see the report; 2 the run "
    "ended\n"
    "early, and there is no output.";

std::string footer() {
    const std::string providers = providersInShort();
    return kRulesInShort + (providers.empty() ? "" : "\nProviders:\n" + providers) + kExitStatus;
}

// One character, also by the name tab.
std::string parseDelimiter(const std::string& text, char& delimiter) {
    if (text == "tab" || text == "\\t") {
        delimiter = '\t';
        return {};
    }
    const bool isUsable =
        text.size() == 1 && (text[0] == '\t' || (text[0] >= ' ' && text[0] < 127));
    if (!isUsable || text[0] == '"')
        return "must be one ASCII character other than a quote, or tab";
    delimiter = text[0];
    return {};
}

void addFiles(CLI::App& app, Options& options) {
    app.add_option("input", options.input, "CSV file to mask; - is standard input")
        ->capture_default_str()
        ->type_name("IN");
    app.add_option("-r,--rules", options.rules, "Rules, one line for each column")
        ->type_name("FILE");
    app.add_option("--secrets", options.secrets,
                   "Secrets that rules name: lines `name = value`, in hexadecimal\n"
                   "digits or base64. Only the user may have access to the file. A\n"
                   "secret may also be in the environment: KORV_SECRET_NAME")
        ->type_name("FILE");
    app.add_option("-o,--output", options.output,
                   "Masked CSV file; - is standard output. A file appears when it is\n"
                   "complete, and may replace the input.")
        ->capture_default_str()
        ->type_name("FILE");
    app.add_option("--report", options.report, "Write the errors here, not to standard error")
        ->type_name("FILE");
    app.add_option("--summary", options.summary, "Write the counts of the run as JSON")
        ->type_name("FILE");
    app.add_option("--html", options.html, "Write the run as a page for a browser")
        ->type_name("FILE");
    app.add_option("--providers", options.providers,
                   "Folder of provider modules, instead of the installed ones;\n"
                   "may be repeated: folders are searched in order")
        ->type_name("FOLDER")
        ->allow_extra_args(false);
}

void addFormat(CLI::App& app, Options& options) {
    app.add_option_function<std::string>(
           "--delimiter",
           [&options](const std::string& text) {
               const std::string fault = parseDelimiter(text, options.dialect.delimiter);
               if (!fault.empty()) throw CLI::ValidationError("--delimiter", fault);
           },
           "Character between fields, or tab (default: a comma)")
        ->type_name("C");
    app.add_option("--encoding", options.encoding,
                   "Code page of the input, such as windows-1252 (default: UTF-8,\n"
                   "or UTF-16 with its byte order mark). Output is UTF-8.")
        ->type_name("NAME");
    app.add_flag_callback(
        "--no-header", [&options] { options.dialect.header = false; },
        "The first row is data; rules name columns by number: @1, @2");
    app.add_option("--null", options.nullTexts,
                   "Fields with this text are NULL, like empty ones; may be repeated")
        ->type_name("TEXT")
        ->allow_extra_args(false);
}

void addModes(CLI::App& app, Options& options) {
    app.add_flag("--check", options.check,
                 "Print what will happen to each column, and write nothing");
    app.add_option("--diff", options.differenceRows,
                   "Show this many rows before and after, and write nothing; clear\n"
                   "values are shown by their shape")
        ->type_name("N")
        ->check(CLI::PositiveNumber);
    app.add_flag("--show-clear", options.showClear, "Show clear values in --diff");
    app.add_flag("--suggest", options.suggest,
                 "Print a rules file to start from, made from the first\n10,000 rows");
    app.add_option("--new-secret", options.newSecret,
                   "Print a line for a secrets file with 32 random bytes")
        ->type_name("NAME");
    app.add_flag("--list-providers", options.listProviders, "Print the providers that are found");
}

void addRun(CLI::App& app, Options& options) {
    app.add_option("-j,--jobs", options.jobs, "Worker threads (default: the number of cores)")
        ->type_name("N")
        ->check(CLI::Range(uint32_t{1}, kMostJobs));
    app.add_option("--max-errors", options.maxErrors,
                   "End without output when more values than this fail")
        ->type_name("N");
    app.add_flag("--keep-unlisted", options.keepUnlisted, "Keep columns that have no rule");
    app.add_flag("--strict", options.strict, "Refuse methods without a secret");
    app.add_flag("--unmask", options.unmask,
                 "Reverse the masking, with the rules and secrets that it was done with");
    app.add_flag("--verify-providers", options.verifyProviders,
                 "Call providers twice for each value, and compare the results");
    const std::map<std::string, ProgressMode> modes = {{"auto", ProgressMode::automatic},
                                                       {"always", ProgressMode::always},
                                                       {"never", ProgressMode::never}};
    app.add_option(
           "--progress", options.progress,
           "Progress bar on standard error: auto (long inputs, on a\nterminal), always, never")
        ->transform(CLI::Transformer(modes).description(""))
        ->type_name("WHEN");
}

}  // namespace

bool parseOptions(int argc, char** argv, Options& options, int& status) {
    CLI::App app("Masks the columns of a CSV file by rules such as: CARD = CCN, secret=crm",
                 "korv-mask");
    app.failure_message([](const CLI::App*, const CLI::Error& error) {
        return std::string("korv-mask: ") + error.what() +
               "\nkorv-mask --help describes the options.\n";
    });
    app.set_version_flag("--version", "korv-mask " KORV_VERSION);
    addFiles(app, options);
    addFormat(app, options);
    addModes(app, options);
    addRun(app, options);
    app.footer(footer);
    try {
        app.parse(argc, argv);
        if (options.rules.empty() && !options.suggest && !options.listProviders &&
            options.newSecret.empty()) {
            throw CLI::RequiredError("--rules");
        }
        // The values after the change are the clear ones then.
        if (options.unmask && options.differenceRows > 0 && !options.showClear) {
            throw CLI::ValidationError("--diff",
                                       "shows clear values with --unmask; add --show-clear");
        }
    } catch (const CLI::ParseError& error) {
        status = app.exit(error) == 0 ? kAllMasked : kNotRun;
        return false;
    }
    if (options.jobs == 0) {
        options.jobs = std::clamp(std::thread::hardware_concurrency(), 1u, kMostJobs);
    }
    return true;
}

}  // namespace tool
