// korv-mask: masks the columns of a CSV file with the providers that its rules name.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <map>
#include <new>
#include <optional>
#include <string>
#include <utility>

#include "file_roles.h"
#include "html_page.h"
#include "input.h"
#include "korv/provider.h"
#include "modes.h"
#include "options.h"
#include "output_file.h"
#include "pipeline.h"
#include "process.h"
#include "progress.h"
#include "report.h"
#include "shape.h"
#include "tool_error.h"

namespace tool {

namespace {

// What the codes of a provider's errors mean.
using ErrorTexts = std::map<std::string, std::map<uint32_t, std::string>>;

ErrorTexts errorTextsOf(const KorvMask& mask) {
    ErrorTexts texts;
    for (uint32_t i = 0; const KorvMaskProvider* provider = KorvMaskGetProvider(&mask, i); ++i) {
        for (uint32_t k = 0; k < provider->entry->errorCount; ++k) {
            const PrvErrorText& error = provider->entry->errors[k];
            texts[provider->module][error.code] = error.text;
        }
    }
    return texts;
}

Page pageOf(const Input& input, const Table& table, const ErrorTexts& texts,
            const std::vector<DifferenceRow>& samples, const Summary& summary) {
    Page page = {input.name(), summary, {}};
    for (size_t i = 0; i < table.plan.size(); ++i) {
        PageColumn& column = page.columns.emplace_back();
        column.summary = summary.columns[i];
        column.reason = table.plan[i].reason;
        const auto found = texts.find(table.plan[i].module);
        if (found != texts.end()) column.errorTexts = found->second;
        for (const DifferenceRow& row : samples) {
            column.samples.push_back({row.before[i], row.after[i]});
        }
    }
    return page;
}

std::string counted(const Summary& summary) {
    uint64_t values = 0;
    for (const ColumnSummary& column : summary.columns) values += column.values;
    return std::to_string(summary.failedValues()) + " of " + std::to_string(values) +
           " values in " + std::to_string(summary.rowsIn) + " rows failed";
}

// What deserves attention at the end of a run, for standard error.
std::string warnings(const Options& options, const Input& input, const Summary& summary) {
    std::string text;
    for (const ColumnSummary& column : summary.columns) {
        if (column.formulas == 0) continue;
        text += "korv-mask: column " + printable(column.name) + ": " +
                std::to_string(column.formulas) +
                " masked values begin with =, +, - or @ where the clear values did not; a "
                "spreadsheet may take them for formulas\n";
    }
    if (summary.failedValues() > 0) {
        text += "korv-mask: " + input.name() + ": " + counted(summary) +
                (options.report.empty() ? "" : "; see " + options.report) + "\n";
    }
    return text;
}

int mask(const Options& options) {
    Input input(options);
    MaskHandle handle = openFor(options, input);
    const Table table = tableFor(options, input, *handle);
    const ErrorTexts texts = errorTextsOf(*handle);
    checkFiles(options, table.plan, input.file());
    Report report(options.report);
    checkReport(options, table.plan, input.file(), report);
    report.start();
    OutputFile output(options.output);
    std::optional<OutputFile> summaryFile;
    std::optional<OutputFile> page;
    if (!options.summary.empty()) summaryFile.emplace(options.summary);
    if (!options.html.empty()) page.emplace(options.html);

    Pipeline pipeline(options, table, std::move(handle), input);
    // A second call, with another status, replaces the files of the first.
    const auto finish = [&](int status) {
        Summary summary = pipeline.summary();
        summary.status = status;
        if (!options.summary.empty()) {
            if (!summaryFile) summaryFile.emplace(options.summary);
            summaryFile->write(toJson(summary));
            summaryFile->commit();
            summaryFile.reset();
        }
        if (!options.html.empty()) {
            if (!page) page.emplace(options.html);
            page->write(toHtml(pageOf(input, table, texts, pipeline.samples(), summary)));
            page->commit();
            page.reset();
        }
    };
    try {
        std::vector<bool> isLeftOut;
        for (const ColumnPlan& column : table.plan) {
            isLeftOut.push_back(column.kind == KORV_MASK_DROP);
        }
        output.write(input.headerFor(isLeftOut));
        {
            Progress progress(options.progress, input.file().size());
            report.beforeLine([&] { progress.clear(); });
            pipeline.run(output, report, progress);
            report.beforeLine(nullptr);
        }
        const bool hasFailed = pipeline.summary().failedValues() > 0;
        report.finish(hasFailed && !options.report.empty()
                          ? input.name() + ": " + counted(pipeline.summary())
                          : "");
        const std::string text = warnings(options, input, pipeline.summary());
        finish(hasFailed ? kSomeFailed : kAllMasked);
        // The output comes last: when it is there, nothing can fail any more.
        output.commit();
        std::fputs(text.c_str(), stderr);
        return hasFailed ? kSomeFailed : kAllMasked;
    } catch (const ToolError&) {
        try {
            report.finish("");
            summaryFile.reset();
            page.reset();
            finish(kNotRun);
        } catch (const ToolError&) {
            // The first error is the one to report.
        }
        throw;
    }
}

int run(const Options& options) {
    if (!options.newSecret.empty()) return printNewSecret(options.newSecret);
    if (options.listProviders) return listProviders(options);
    if (options.suggest) return suggest(options);
    if (options.check) return check(options);
    if (options.differenceRows > 0) return showDifference(options);
    return mask(options);
}

}  // namespace
}  // namespace tool

int main(int argc, char** argv) {
    const tool::SignalStack signalStack;
    try {
        tool::prepareProcess();
        tool::SecretVariables variables;
        variables.take();
        tool::Options options;
        options.secretVariables = &variables;
        int status = tool::kAllMasked;
        if (!tool::parseOptions(argc, argv, options, status)) return status;
        return tool::run(options);
    } catch (const tool::ToolError& error) {
        std::fprintf(stderr, "%s\n", error.what());
    } catch (const std::bad_alloc&) {
        std::fputs("korv-mask: out of memory\n", stderr);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "korv-mask: %s\n", error.what());
    }
    return tool::kNotRun;
}
