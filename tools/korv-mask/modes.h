// What the program does instead of masking the whole input: --check, --diff, --suggest and
// --list-providers. Each prints to standard output and returns the exit status.
#pragma once

#include "chunk_masking.h"
#include "input.h"
#include "options.h"

namespace tool {

// Opens the rules for the input's columns. Throws ToolError, with hints at what may be wrong.
MaskHandle openFor(const Options& options, const Input& input);
Table tableFor(const Options& options, const Input& input, const KorvMask& mask);

int check(const Options& options);
int showDifference(const Options& options);
int suggest(const Options& options);
int listProviders(const Options& options);

// Providers with their operands, for --help; empty when they cannot be loaded.
std::string providersInShort();

}  // namespace tool
