// The table of the tests.
#include "catalogue.h"

namespace kit {

namespace {

constexpr Scope kFile = Scope::file;
constexpr Scope kModule = Scope::module;
constexpr Scope kRule = Scope::rule;

constexpr TestInfo kTests[] = {
    {1, 1, "elf-module", kFile, 0, "the file is an ELF shared object for x86, of 32 or 64 bits"},
    {1, 2, "symbols-resolved", kModule, 0, "it loads with RTLD_NOW and RTLD_LOCAL"},
    {1, 3, "entry-only", kFile, 0, "it exports KorvProviderEntry and nothing else"},
    {1, 4, "no-executable-stack", kFile, 0, "it does not require an executable stack"},
    {1, 5, "no-text-relocations", kFile, 0, "its code is not changed when it is loaded"},
    {1, 6, "safe-search-path", kFile, 0, "its RPATH names fixed folders, not writable for others"},
    {1, 7, "silent-loading", kModule, 0, "loading and unloading print nothing"},
    {1, 8, "quick-loading", kModule, 0, "it loads in less than 100 ms"},
    {1, 9, "reloading", kModule, 0, "it can be loaded and unloaded 1,000 times and keeps nothing"},
    {1, 10, "clean-constructors", kModule, 0, "loading changes nothing in the process"},

    {2, 1, "entry-record", kModule, 0, "KorvProviderEntry returns a record"},
    {2, 2, "interface-version", kModule, 0, "the record has a version of the interface"},
    {2, 3, "provider-name", kModule, 0, "its name has the form of names and fits the file's name"},
    {2, 4, "functions", kModule, 0, "open, mask and close are not NULL"},
    {2, 5, "operand-keys", kModule, 0, "operands have unique keys and codes, not the engine's own"},
    {2, 6, "operand-kinds", kModule, 0, "operands have known kinds that fit their flags"},
    {2, 7, "operand-bounds", kModule, 0, "the bounds of numbers are ordered"},
    {2, 8, "error-texts", kModule, 0, "every error has a unique code and a text"},
    {2, 9, "method-names", kModule, 0, "methods have unique names in lower-case letters"},
    {2, 10, "sample-rules", kModule, 0, "sample rules are rules for this provider"},
    {2, 11, "same-entry", kModule, 0, "every call of KorvProviderEntry returns the same record"},
    {2, 12, "constant-tables", kRule, 0, "the tables stay as they are when the provider is used"},

    {3, 1, "rule-opens", kRule, 0, "the rule is accepted"},
    {3, 2, "operand-missing", kRule, 0, "each operand left out in turn"},
    {3, 3, "operand-bounds-used", kRule, 0, "each number at its minimum and its maximum"},
    {3, 4, "operand-beyond-bounds", kRule, 0, "each number beyond its bounds"},
    {3, 5, "operand-unknown", kRule, 0, "operands with codes that the provider does not know"},
    {3, 6, "operand-repeated", kRule, 0, "each operand given twice"},
    {3, 7, "operand-wrong-kind", kRule, 0, "each operand with a value of each other kind"},
    {3, 8, "operand-odd-text", kRule, 0, "text operands that are NULL, empty, long or not ASCII"},
    {3, 9, "key-and-method", kRule, 0, "no key, a short key, no method, an unknown method"},
    {3, 10, "open-leak", kRule, 0, "nothing is kept after close, nor after an open that failed"},
    {3, 11, "open-each-allocation", kRule, 0, "open survives the failure of each allocation"},
    {3, 12, "open-all-allocations", kRule, 0, "open survives the failure of all allocations"},

    {4, 1, "null-value", kRule, 0, "NULL stays NULL or empty, or is refused"},
    {4, 2, "empty-value", kRule, 0, "an empty value stays empty or NULL, or is refused"},
    {4, 3, "one-character", kRule, 0, "values of one character"},
    {4, 4, "longest-value", kRule, 0, "the longest value that is accepted, and one character more"},
    {4, 5, "ascii-values", kRule, 0, "values with every ASCII character"},
    {4, 6, "target-exact", kRule, 0, "a target that just holds the value and the result"},
    {4, 7, "target-short", kRule, 0, "targets that are too short, down to 0 bytes"},
    {4, 8, "utf8-values", kRule, 0, "values with characters of each length in UTF-8"},
    {4, 9, "wide-values", kRule, 0, "ASCII values as wide text, and characters beyond the BMP"},
    {4, 10, "source-fenced", kRule, 0, "a source that ends at an unreadable page"},
    {4, 11, "target-fenced", kRule, 0, "a target that ends at an unreadable page"},
    {4, 12, "source-unchanged", kRule, 0, "the source stays as it is"},
    {4, 13, "result-set", kRule, 0, "a value that is masked has a result"},
    {4, 14, "result-valid", kRule, 0, "results are whole, valid text in their target"},
    {4, 15, "batch-equal", kRule, 0, "maskBatch and mask give the same results"},
    {4, 16, "mask-each-allocation", kRule, 0, "mask survives the failure of each allocation"},
    {4, 17, "mask-leak", kRule, 0, "masking keeps no memory"},
    {4, 18, "values-accepted", kRule, 0, "at least one value is masked"},
    {4, 19, "related-values", kRule, 0, "values of another column: NULL, empty, long, not ASCII"},

    {5, 1, "repeated-value", kRule, 0, "the same value has the same result in the next call"},
    {5, 2, "other-order", kRule, 0, "values in another order have the same results"},
    {5, 3, "other-instance", kRule, 0, "another instance gives the same results"},
    {5, 4, "other-process", kRule, 0, "another process gives the same results"},
    {5, 5, "threads", kRule, 0, "8 threads with an instance each get the same results"},
    {5, 6, "other-locale", kRule, 0, "the locale of the process does not matter"},
    {5, 7, "other-time-zone", kRule, 0, "the time zone does not matter"},
    {5, 8, "narrow-against-wide", kRule, 0, "an ASCII value has one result in both forms"},
    {5, 9, "other-memory", kRule, 0, "the bytes around source and target do not matter"},

    {6, 1, "error-captured", kRule, 0, "a value that fails has at least one error"},
    {6, 2, "declared-codes", kRule, 0, "errors have codes of the provider's table"},
    {6, 3, "valid-tokens", kRule, 0, "tokens have known identifiers, texts and slots"},
    {6, 4, "no-clear-value", kRule, 0, "no error contains the value or a neighbouring one"},
    {6, 5, "no-secret", kRule, 0, "no error and no result contains the key"},
    {6, 6, "success-without-error", kRule, 0, "a value that is masked leaves no error"},
    {6, 7, "chain-kept", kRule, 0, "errors are appended; earlier ones stay"},
    {6, 8, "silent-masking", kRule, 0, "opening and masking print nothing"},

    {7, 1, "stack-alignment", kRule, 32, "it works on stacks that are aligned to 4 bytes"},
    {7, 2, "small-stack", kRule, 0, "a stack of 16 KiB is enough; 64 KiB for 64-bit modules"},
    {7, 3, "locale-kept", kRule, 0, "the locale stays as it is"},
    {7, 4, "signals-kept", kRule, 0, "signal handlers and masks stay as they are"},
    {7, 5, "umask-kept", kRule, 0, "umask and current folder stay as they are"},
    {7, 6, "environment-kept", kRule, 0, "the environment stays as it is"},
    {7, 7, "descriptors-kept", kRule, 0, "no descriptor is left open or closed"},
    {7, 8, "threads-kept", kRule, 0, "no thread and no process is started"},
    {7, 9, "floating-point-kept", kRule, 0, "the floating-point state stays as it is"},
    {7, 10, "constant-memory", kRule, 0, "opened and closed 10,000 times, it keeps no memory"},
    {7, 11, "limits-kept", kRule, 0, "resource limits, priority and timers stay as they are"},

    {8, 1, "promises-known", kRule, 0, "promises are known ones, and the same in each call"},
    {8, 2, "one-to-one-small", kRule, 0, "in small domains, all results are different"},
    {8, 3, "one-to-one-samples", kRule, 0, "a million different values have different results"},
    {8, 4, "length-kept", kRule, 0, "results have the length of their values"},
    {8, 5, "format-kept", kRule, 0, "results are accepted as values"},
    {8, 6, "reversible", kRule, 0, "unmask gives the value back"},
    {8, 7, "checks-only-refuse", kRule, 0,
     "operands that only refuse values do not change results"},

    {9, 1, "vectors-recorded", kRule, 0, "results can be recorded and are repeated"},
    {9, 2, "vectors-replayed", kRule, 0, "results are those of the file that --replay names"},

    {10, 1, "fuzz-values", kRule, 0, "random values are masked or refused, the same way twice"},
    {10, 2, "fuzz-operands", kRule, 0, "random operands are accepted or refused"},
    {10, 3, "fuzz-batches", kRule, 0, "random batches and single values give the same results"},
    {10, 4, "fuzz-unmask", kRule, 0, "random values are unmasked or refused"},
    {10, 5, "time-per-value", kRule, 0, "no value of up to 8,000 characters takes a second"},
    {10, 6, "time-growth", kRule, 0, "time grows at most with the square of the length"},
};

constexpr std::string_view kLevels[] = {
    "loading", "tables",       "open",     "mask",           "determinism",
    "errors",  "surroundings", "promises", "golden vectors", "fuzzing",
};
static_assert(std::size(kLevels) == kHighestLevel);

}  // namespace

std::span<const TestInfo> allTests() {
    return kTests;
}

std::string_view levelName(int level) {
    return kLevels[level - 1];
}

}  // namespace kit
