// The command line's options and help.
#include "host/options.h"

#include <CLI/CLI.hpp>
#include <map>

#include "host/process.h"

namespace host {

bool parseOptions(int argc, char** argv, Options& options, int& status) {
    CLI::App app("Masks columns of a CSV file by rules such as: CARD = CCN, key=17", "mask_csv");
    app.add_option("-r,--rules", options.rules, "Rules, one masked column a line")
        ->required()
        ->type_name("FILE");
    app.add_option("input", options.input, "CSV file to mask; - is standard input")
        ->capture_default_str()
        ->type_name("FILE");
    app.add_option("-o,--output", options.output,
                   "Masked CSV file; - is standard output. A file appears when it is complete.")
        ->capture_default_str()
        ->type_name("FILE");
    app.add_option("--report", options.report, "Write the error report here, not to standard error")
        ->type_name("FILE");
    app.add_option("--providers", options.providers,
                   "Folder of the provider modules (default: lib/korv-providers next to the "
                   "program's folder, or where they were installed)")
        ->type_name("DIR");
    const std::map<std::string, ProgressMode> modes = {{"auto", ProgressMode::automatic},
                                                       {"always", ProgressMode::always},
                                                       {"never", ProgressMode::never}};
    app.add_option(
           "--progress", options.progress,
           "Progress bar on standard error: auto (long inputs, on a terminal), always, never")
        ->transform(CLI::Transformer(modes).description(""))
        ->type_name("WHEN");
    app.footer(
        "Exit status: 0 all values masked; 1 some values failed, were left empty and stand in the\n"
        "report; 2 the run ended early, and no output file was made.");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        status = app.exit(error) == 0 ? kAllMasked : kNotRun;
        return false;
    }
    return true;
}

}  // namespace host
