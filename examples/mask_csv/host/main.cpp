// mask_csv: masks columns of a CSV file with the providers that its rules name.
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "host/byte_source.h"
#include "host/csv_reader.h"
#include "host/csv_writer.h"
#include "host/host_error.h"
#include "host/masking.h"
#include "host/options.h"
#include "host/output_file.h"
#include "host/progress.h"
#include "host/provider_loader.h"
#include "host/report.h"
#include "host/rules.h"
#include "host/utf16_source.h"

namespace {

enum ExitStatus { kAllMasked = 0, kSomeFailed = 1, kNotRun = 2 };

// The rules are not to be overwritten, nor the input by the report, by whatever name they go. (The
// output may take the place of the input: it does so when it is complete.)
void refuseToReplace(const std::string& read, const std::string& written) {
    std::error_code none;
    if (std::filesystem::equivalent(read, written, none)) {
        throw host::HostError(written + ": would replace " + read + ", which is read");
    }
}

ExitStatus run(const host::Options& options) {
    refuseToReplace(options.rules, options.output);
    refuseToReplace(options.rules, options.report);
    refuseToReplace(options.input, options.report);
    const host::Rules rules = host::readRules(options.rules);
    host::FileSource file(options.input);
    std::unique_ptr<host::ByteSource> conversion;
    host::CsvReader reader(host::openAsUtf8(file, conversion), file.name());

    host::Report report(options.report);
    host::ProviderLoader loader(options.providers);
    host::Masking masking(rules, loader, reader, file.name(), report);

    host::OutputFile output(options.output);
    host::CsvWriter writer(output);
    host::Summary summary;
    {
        host::Progress progress(options.progress, file.size());
        report.beforeLine([&] { progress.clear(); });
        summary = masking.run(writer, [&] { progress.update(file.bytesRead()); });
        report.beforeLine(nullptr);
    }
    if (summary.failed > 0) {
        report.print(file.name() + ": " + std::to_string(summary.failed) + " of " +
                     std::to_string(summary.values) + " values in " + std::to_string(summary.rows) +
                     " rows failed and were left empty");
    }
    report.flush();
    output.commit();
    return summary.failed > 0 ? kSomeFailed : kAllMasked;
}

}  // namespace

int main(int argc, char** argv) {
    // The library's case functions follow the locale; this one knows every letter of UTF-8 input.
    std::setlocale(LC_CTYPE, "C.UTF-8");
    // Dates are plain calendar dates; without this, each day difference would look up the zone's
    // file.
    setenv("TZ", "UTC0", 1);
    host::Options options;
    int status = kAllMasked;
    if (!host::parseOptions(argc, argv, options, status)) return status;
    try {
        return run(options);
    } catch (const host::HostError& error) {
        std::fprintf(stderr, "%s\n", error.what());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "mask_csv: %s\n", error.what());
    }
    return kNotRun;
}
