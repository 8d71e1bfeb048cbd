// Opening of handles, with the engine's records as messages.
#include "masker.h"

#include <map>
#include <tuple>

#include "shape.h"
#include "tool_error.h"

namespace tool {

namespace {

// Records about the rules begin with their place; others get the program's name.
std::string messagesOf(const KorvMask* mask, int32_t status) {
    if (mask == nullptr || KorvMaskRecordCount(mask) == 0) {
        return status == KORV_MASK_NO_MEMORY ? "korv-mask: out of memory"
                                             : "korv-mask: the engine refuses the settings";
    }
    std::string messages;
    for (uint64_t i = 0; const KorvMaskRecord* record = KorvMaskGetRecord(mask, i); ++i) {
        if (i > 0) messages += "\n";
        if (record->rulesLine == 0) messages += "korv-mask: ";
        messages += record->message;
    }
    return messages;
}

MaskHandle open(const Options& options, KorvMaskSettings& settings) {
    std::vector<const char*> folders;
    for (const std::string& folder : options.providers) folders.push_back(folder.c_str());
    settings.size = sizeof settings;
    settings.folders = folders.data();
    settings.folderCount = static_cast<uint32_t>(folders.size());
    if (!options.secrets.empty()) settings.secretsFile = options.secrets.c_str();
    if (options.secretVariables != nullptr) {
        const std::vector<KorvMaskSecret>& secrets = options.secretVariables->secrets();
        settings.secrets = secrets.data();
        settings.secretCount = static_cast<uint32_t>(secrets.size());
    }
    KorvMask* mask = nullptr;
    const int32_t status = KorvMaskOpen(&settings, &mask);
    MaskHandle handle(mask);
    if (status != KORV_MASK_SUCCESS) throw ToolError(messagesOf(mask, status));
    return handle;
}

}  // namespace

MaskHandle openMask(const Options& options, const std::vector<std::string>& columns) {
    std::vector<const char*> names;
    names.reserve(columns.size());
    for (const std::string& column : columns) names.push_back(column.c_str());
    KorvMaskSettings settings = {};
    settings.flags = (options.keepUnlisted ? KORV_MASK_KEEP_UNLISTED : 0) |
                     (options.verifyProviders ? KORV_MASK_VERIFY_PROVIDERS : 0) |
                     (options.strict ? KORV_MASK_STRICT : 0) |
                     (options.unmask ? KORV_MASK_UNMASK : 0) |
                     (options.dialect.header ? 0 : KORV_MASK_UNNAMED_COLUMNS);
    settings.columns = names.data();
    settings.columnCount = static_cast<uint32_t>(names.size());
    settings.rulesFile = options.rules.c_str();
    return open(options, settings);
}

MaskHandle openProviders(const Options& options) {
    KorvMaskSettings settings = {};
    settings.flags = KORV_MASK_ALL_PROVIDERS;
    return open(options, settings);
}

std::vector<ColumnPlan> planOf(const KorvMask& mask, const Options& options) {
    std::vector<ColumnPlan> plan;
    for (uint32_t i = 0; const KorvMaskColumn* column = KorvMaskGetColumn(&mask, i); ++i) {
        ColumnPlan& entry = plan.emplace_back();
        entry.name = column->name;
        entry.action = column->actionName;
        entry.kind = column->action;
        entry.related = column->related;
        entry.aborts = std::string(column->onError) == "abort";
        if (column->module != nullptr) entry.module = column->module;
        entry.files.assign(column->files, column->files + column->fileCount);
        if (column->method != nullptr) entry.protection.method = column->method;
        entry.protection.isDisguise = column->isDisguise == 1;
        if (column->secret != nullptr) {
            entry.protection.secret = column->secret;
            entry.protection.fingerprint = column->fingerprint;
        }
        entry.scope = column->scope;
        entry.mapping = column->mapping;
        entry.reason = "no rule";
        if (column->rulesLine != 0) {
            // Operands are left out: among them are keys and seeds.
            entry.reason = std::string("rule ") + column->rulePattern + " = " + column->actionName +
                           ", " + options.rules + ":" + std::to_string(column->rulesLine);
        }
    }
    return plan;
}

std::vector<std::string> warningsOf(const std::vector<ColumnPlan>& plan) {
    std::vector<std::string> warnings;
    // By secret, provider and scope: the first column with them.
    std::map<std::tuple<std::string, std::string, std::string>, const ColumnPlan*> first;
    for (const ColumnPlan& column : plan) {
        if (column.protection.isDisguise) {
            warnings.push_back("column " + printable(column.name) + ": " + column.action +
                               ", method " + column.protection.method +
                               ", is a disguise, which can be undone without a secret");
        }
        if (column.protection.secret.empty()) continue;
        const auto [known, isNew] =
            first.try_emplace({column.protection.secret, column.module, column.scope}, &column);
        if (isNew || known->second->mapping == column.mapping) continue;
        warnings.push_back("columns " + printable(known->second->name) + " and " +
                           printable(column.name) + " share the secret " +
                           column.protection.secret + " and the provider " + column.action +
                           " and differ in operands: equal values are masked differently");
    }
    return warnings;
}

}  // namespace tool
