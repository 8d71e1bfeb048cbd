// An open handle of the engine, for the columns of one input.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "korv/mask.h"
#include "options.h"
#include "summary.h"

namespace tool {

struct CloseMask {
    void operator()(KorvMask* mask) const { KorvMaskClose(mask); }
};
using MaskHandle = std::unique_ptr<KorvMask, CloseMask>;

// Opens the rules for the columns. Throws ToolError with everything that is wrong with them.
MaskHandle openMask(const Options& options, const std::vector<std::string>& columns);

// Loads every provider that the program finds; rules are not needed. Throws ToolError.
MaskHandle openProviders(const Options& options);

// What happens to each column: the same for every handle of a run.
struct ColumnPlan {
    std::string name;
    std::string action;  // as KorvMaskColumn::actionName
    std::string reason;  // the rule, or why the column has no rule
    int32_t kind;        // KorvMaskAction
    uint32_t related;
    bool aborts;         // on-error=abort
    std::string module;  // of the provider
    std::vector<std::string> files;
    Protection protection;
    std::string scope;
    std::string mapping;  // see KorvMaskColumn

    bool isMasked() const { return kind != KORV_MASK_KEEP && kind != KORV_MASK_DROP; }
};
std::vector<ColumnPlan> planOf(const KorvMask& mask, const Options& options);

// What a person should know of the plan before a run, a line each: disguises, and columns that
// share a secret without sharing the mapping.
std::vector<std::string> warningsOf(const std::vector<ColumnPlan>& plan);

}  // namespace tool
