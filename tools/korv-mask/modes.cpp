// The modes that write no masked file.
#include "modes.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <deque>
#include <optional>

#include "csv_field.h"
#include "difference.h"
#include "korv/provider.h"
#include "pipeline.h"
#include "process.h"
#include "shape.h"
#include "suggestion.h"
#include "tool_error.h"

namespace tool {

namespace {

constexpr uint64_t kSuggestionRows = 10000;

void print(const std::string& text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() &&
        std::fflush(stdout) == 0) {
        return;
    }
    throw ToolError(std::string("korv-mask: standard output: ") + std::strerror(errno));
}

std::string operandText(const PrvOperand& operand, bool isShort) {
    std::string text;
    for (const char* c = operand.key; *c != '\0'; ++c) {
        text += static_cast<char>(*c >= 'A' && *c <= 'Z' ? *c - 'A' + 'a' : *c);
    }
    if (isShort) {
        // The key is enough.
    } else if (operand.kind == OPR_VALUE_INTEGER) {
        text += "=" + std::to_string(operand.minimum) + ".." + std::to_string(operand.maximum);
    } else if (operand.kind != OPR_VALUE_NONE) {
        text += (operand.flags & PRV_OPERAND_PATH) != 0 ? "=FILE" : "=TEXT";
    }
    if ((operand.flags & PRV_OPERAND_REQUIRED) != 0) return text;
    return "[" + text + "]";
}

// The methods, in brief "method=ff1|transpose", or else "secret=NAME[, method=ff1] or
// method=transpose".
std::string methodsOf(const PrvEntry& entry, bool isShort) {
    std::string all;
    std::string keyed;
    std::string others;
    const auto append = [](std::string& list, const char* name) {
        list += list.empty() ? "" : "|";
        list += name;
    };
    for (uint32_t i = 0; entry.interfaceVersion >= 3 && i < entry.methodCount; ++i) {
        const PrvMethod& method = entry.methods[i];
        append(all, method.name);
        append((method.flags & PRV_METHOD_KEYED) != 0 ? keyed : others, method.name);
    }
    if (all.empty()) return {};
    if (isShort) return "method=" + all;
    std::string text = keyed.empty() ? "" : "secret=NAME[, method=" + keyed + "]";
    if (others.empty()) return text;
    return text + (text.empty() ? "" : " or ") + "method=" + others;
}

std::string operandsOf(const PrvEntry& entry, bool isShort) {
    std::string text = methodsOf(entry, isShort);
    for (uint32_t i = 0; i < entry.operandCount; ++i) {
        text += (text.empty() ? "" : ", ") + operandText(entry.operands[i], isShort);
    }
    return text;
}

const char* sentenceFor(const ColumnPlan& column) {
    switch (column.kind) {
        case KORV_MASK_KEEP:
            return "kept in clear";
        case KORV_MASK_DROP:
            return "left out";
        case KORV_MASK_NULL:
            return "emptied";
        case KORV_MASK_CONST:
            return "replaced by a constant";
        default:
            return "masked by ";
    }
}

}  // namespace

MaskHandle openFor(const Options& options, const Input& input) {
    try {
        return openMask(options, input.columns());
    } catch (const ToolError& error) {
        std::string message = error.what();
        const std::string hint = input.delimiterHint();
        if (!hint.empty()) {
            message += "\n" + hint;
        } else if (message.find("unlisted") != std::string::npos) {
            message += "\nkorv-mask: --keep-unlisted keeps all columns that have no rule";
        }
        throw ToolError(message);
    }
}

Table tableFor(const Options& options, const Input& input, const KorvMask& mask) {
    Table table = {input.columns(), planOf(mask, options), options.nullTexts, options.dialect};
    if (std::all_of(table.plan.begin(), table.plan.end(),
                    [](const ColumnPlan& column) { return column.kind == KORV_MASK_DROP; })) {
        throw ToolError("korv-mask: " + options.rules + ": the rules drop every column");
    }
    return table;
}

int check(const Options& options) {
    const Input input(options);
    const MaskHandle mask = openFor(options, input);
    const Table table = tableFor(options, input, *mask);
    std::string text;
    for (size_t i = 0; i < table.plan.size(); ++i) {
        const ColumnPlan& column = table.plan[i];
        text += std::to_string(i + 1) + "  " + printable(column.name) + ": " + sentenceFor(column);
        if (column.kind == KORV_MASK_PROVIDER) text += column.action;
        text += column.protection.text() + " (" + printable(column.reason) + ")\n";
    }
    for (const std::string& warning : warningsOf(table.plan)) text += "warning: " + warning + "\n";
    print(text);
    return kAllMasked;
}

int showDifference(const Options& options) {
    Input input(options);
    MaskHandle mask = openFor(options, input);
    const Table table = tableFor(options, input, *mask);
    ChunkMasking masking(table, std::move(mask));
    Chunk chunk;
    ChunkOutcome outcome;
    std::vector<DifferenceRow> rows;
    uint64_t rowsBefore = 0;
    uint64_t lines = 0;
    while (rows.size() < options.differenceRows && input.next(chunk)) {
        const uint64_t skipped = chunk.number == 0 ? input.headerRows() : 0;
        masking.run(chunk, skipped, outcome);
        if (outcome.malformed) throw input.errorAt(lines, *outcome.malformed);
        for (const ChunkError& error : outcome.errors) {
            if (error.aborts) {
                throw ToolError("korv-mask: a value failed, and the rule says on-error=abort");
            }
        }
        for (DifferenceRow& row : pairRows(table, chunk, skipped, outcome, rowsBefore + 1,
                                           options.differenceRows - rows.size())) {
            rows.push_back(std::move(row));
        }
        rowsBefore += outcome.rowsIn;
        lines += outcome.lines;
    }
    printDifference(stdout, table.names, rows, options.showClear);
    print("");
    return kAllMasked;
}

int suggest(const Options& options) {
    Input input(options);
    std::vector<ColumnGuess> guesses;
    for (const std::string& name : input.columns()) guesses.emplace_back(name);
    Chunk chunk;
    uint64_t rows = 0;
    uint64_t lines = 0;
    std::string work;
    while (rows < kSuggestionRows && input.next(chunk)) {
        RowParser parser(chunk, options.dialect);
        try {
            for (uint64_t i = chunk.number == 0 ? input.headerRows() : 0; i > 0; --i) parser.next();
            while (rows < kSuggestionRows && parser.next()) {
                if (parser.isBlank() && guesses.size() > 1) continue;
                if (parser.fields().size() != guesses.size()) {
                    parser.fail(parser.rowBegin(), "the row has " +
                                                       std::to_string(parser.fields().size()) +
                                                       " fields where the header has " +
                                                       std::to_string(guesses.size()));
                }
                for (size_t i = 0; i < guesses.size(); ++i) {
                    const std::string_view text = unquoted(parser.fields()[i], work);
                    const bool isNull =
                        std::find(options.nullTexts.begin(), options.nullTexts.end(), text) !=
                        options.nullTexts.end();
                    guesses[i].add(isNull ? std::string_view() : text);
                }
                ++rows;
            }
        } catch (const MalformedRow& malformed) {
            throw input.errorAt(lines, malformed);
        }
        lines += parser.lines();
    }
    print(suggestRules(guesses, input.name()));
    return kAllMasked;
}

int listProviders(const Options& options) {
    const MaskHandle mask = openProviders(options);
    std::string text;
    for (uint32_t i = 0; const KorvMaskProvider* provider = KorvMaskGetProvider(mask.get(), i);
         ++i) {
        text += std::string(provider->name) + "  " + operandsOf(*provider->entry, false) +
                "\n    " + provider->module + ", interface version " +
                std::to_string(provider->entry->interfaceVersion) + "\n";
    }
    print(text);
    return kAllMasked;
}

std::string providersInShort() {
    try {
        const MaskHandle mask = openProviders({});
        std::string text;
        for (uint32_t i = 0; const KorvMaskProvider* provider = KorvMaskGetProvider(mask.get(), i);
             ++i) {
            text += "  " + std::string(provider->name) + "  " + operandsOf(*provider->entry, true) +
                    "\n";
        }
        return text;
    } catch (const ToolError&) {
        return {};
    }
}

}  // namespace tool
