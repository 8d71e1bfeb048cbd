// mask_csv: masks columns of a CSV file with the providers that its rules name.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>
#include <new>
#include <string>
#include <system_error>

#include "host/byte_source.h"
#include "host/csv_reader.h"
#include "host/csv_writer.h"
#include "host/host_error.h"
#include "host/masking.h"
#include "host/options.h"
#include "host/output_file.h"
#include "host/process.h"
#include "host/progress.h"
#include "host/provider_loader.h"
#include "host/report.h"
#include "host/rules.h"
#include "host/utf16_source.h"

namespace {

bool isSameFile(const std::string& first, const std::string& second) {
    std::error_code none;
    return std::filesystem::equivalent(first, second, none);
}

// The rules are not to be overwritten, nor the input by the report, by whatever name they go. (The
// output may take the place of the input: it does so when it is complete.)
void refuseToReplace(const std::string& read, const std::string& written) {
    if (isSameFile(read, written)) {
        throw host::HostError(written + ": would replace " + read + ", which is read");
    }
}

host::ExitStatus run(const host::Options& options) {
    refuseToReplace(options.rules, options.output);
    refuseToReplace(options.rules, options.report);
    refuseToReplace(options.input, options.report);
    if (options.report == options.output || isSameFile(options.report, options.output)) {
        throw host::HostError(options.report + ": is the output, too");
    }
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
    return summary.failed > 0 ? host::kSomeFailed : host::kAllMasked;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        host::prepareProcess();
        host::Options options;
        int status = host::kAllMasked;
        if (!host::parseOptions(argc, argv, options, status)) return status;
        return run(options);
    } catch (const host::HostError& error) {
        std::fprintf(stderr, "%s\n", error.what());
    } catch (const std::bad_alloc&) {
        std::fputs("mask_csv: out of memory\n", stderr);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "mask_csv: %s\n", error.what());
    }
    return host::kNotRun;
}
