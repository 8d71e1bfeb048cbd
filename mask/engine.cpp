// Opening of rules for columns, and the faults of batches as records.
#include "engine.h"

#include <new>
#include <stdexcept>
#include <utility>

#include "mask_error.h"
#include "plan.h"
#include "text/utf8_text.h"

namespace mask {

namespace {

constexpr int64_t kLongestValue = int64_t{1} << 30;
// Values are copied to wide text for providers: on 32 bits a smaller one fills the address space.
constexpr int64_t kLongestHere = sizeof(void*) == 4 ? kLongestValue / 16 : kLongestValue;

std::vector<std::string> namesOf(const KorvMaskSettings& settings) {
    std::vector<std::string> names;
    for (uint32_t i = 0; i < settings.columnCount; ++i) {
        const bool isNamed = (settings.flags & KORV_MASK_UNNAMED_COLUMNS) == 0;
        names.push_back(isNamed ? settings.columns[i] : "@" + std::to_string(i + 1));
    }
    return names;
}

void readSecrets(const KorvMaskSettings& settings, secrets::Secrets& secrets) {
    for (uint32_t i = 0; i < settings.secretCount; ++i) {
        const KorvMaskSecret& secret = settings.secrets[i];
        secrets.add(secret.name, {secret.bytes, secret.length});
    }
    if (settings.secretsFile != nullptr) secrets.read(settings.secretsFile);
}

bool hasProvider(const Rule& rule) {
    return rule.action != "KEEP" && rule.action != "DROP" && rule.action != "NULL" &&
           rule.action != "CONST";
}

}  // namespace

Engine::~Engine() {
    {
        const LocaleScope scope(locale_);
        columns_.clear();
        modules_.reset();
    }
    if (locale_ != nullptr) ::freelocale(locale_);
}

int32_t Engine::report(int32_t status, const char* message) noexcept {
    try {
        records_.add(status, message);
    } catch (const std::bad_alloc&) {
        return KORV_MASK_NO_MEMORY;
    }
    return status;
}

int32_t Engine::report(const MaskError& error) noexcept {
    try {
        for (const Fault& fault : error.faults) records_.add(fault);
    } catch (const std::bad_alloc&) {
        return KORV_MASK_NO_MEMORY;
    }
    return error.faults.front().status;
}

int32_t Engine::open(const KorvMaskSettings& settings) noexcept {
    try {
        locale_ = ::newlocale(LC_ALL_MASK, "C.UTF-8", nullptr);
        if (locale_ == nullptr) throw MaskError(KORV_MASK_NO_MEMORY, "no locale C.UTF-8");
        const LocaleScope scope(locale_);
        openRules(settings);
        return KORV_MASK_SUCCESS;
    } catch (const MaskError& error) {
        columns_.clear();
        return report(error);
    } catch (const std::bad_alloc&) {
        columns_.clear();
        return report(KORV_MASK_NO_MEMORY, "out of memory");
    } catch (const std::exception& error) {
        columns_.clear();
        return report(KORV_MASK_BAD_RULES, error.what());
    } catch (...) {
        columns_.clear();
        return report(KORV_MASK_BAD_PROVIDER, "a provider threw an exception");
    }
}

void Engine::openRules(const KorvMaskSettings& settings) {
    flags_ = settings.flags;
    const bool loadsAll = (flags_ & KORV_MASK_ALL_PROVIDERS) != 0;
    modules_ = std::make_unique<ProviderModules>(
        std::vector<std::string>(settings.folders, settings.folders + settings.folderCount));
    if (loadsAll) modules_->loadAll();
    if (settings.rules != nullptr) {
        const bool isOne = (flags_ & KORV_MASK_ONE_RULE) != 0;
        const std::string file = settings.rulesFile != nullptr ? settings.rulesFile
                                 : isOne                       ? "rule"
                                                               : "rules";
        rules_ = isOne ? parseOneRule(settings.rules, file, namesOf(settings).front())
                       : parseRules(settings.rules, file);
    } else if (settings.rulesFile != nullptr) {
        rules_ = readRules(settings.rulesFile);
    }
    rules_.confinesFiles = settings.fileFolderCount > 0;
    rules_.fileFolders.assign(settings.fileFolders,
                              settings.fileFolders + settings.fileFolderCount);
    secrets::Secrets secrets;
    readSecrets(settings, secrets);
    if (settings.rules != nullptr || settings.rulesFile != nullptr) {
        const std::vector<std::string> names = namesOf(settings);
        Faults faults;
        const auto plan = planColumns(rules_, names, flags_, faults);
        openColumns(names, plan, secrets, faults);
        faults.raise();
    }
    for (const auto& [name, module] : modules_->loaded()) {
        providers_.push_back({module.name.c_str(), module.path.c_str(), module.entry});
    }
}

void Engine::openColumns(const std::vector<std::string>& names,
                         const std::vector<const Rule*>& plan, const secrets::Secrets& secrets,
                         Faults& faults) {
    const Rule* refused = nullptr;
    for (uint32_t i = 0; i < names.size(); ++i) {
        // A pattern's rule that has been refused once is not tried for every column.
        if (plan[i] != nullptr && plan[i] == refused) continue;
        const Rule* const before = std::exchange(refused, plan[i]);
        faults.collect([&] {
            columns_.push_back(openColumn(i, names, plan[i], secrets));
            refused = before;
        });
    }
}

std::unique_ptr<Column> Engine::openColumn(uint32_t index, const std::vector<std::string>& names,
                                           const Rule* rule, const secrets::Secrets& secrets) {
    const bool unmask = (flags_ & KORV_MASK_UNMASK) != 0;
    if (rule == nullptr || !hasProvider(*rule)) {
        if (unmask && rule != nullptr && rule->action != "KEEP") {
            rules_.fail(
                *rule, rule->actionPosition,
                rule->action + " cannot be reversed; write KEEP to leave the column as it is");
        }
        return std::make_unique<Column>(index, names[index], rule);
    }
    const ProviderModule& module = modules_->load(rules_, *rule);
    Rule providers = *rule;  // without the engine's operands
    MethodChoice choice =
        chooseMethod(rules_, providers, module, secrets, (flags_ & KORV_MASK_STRICT) != 0, keys_);
    const RelatedColumn related =
        findRelated(*rule, relatedColumn(providers, *module.entry), names);
    auto request =
        std::make_unique<Request>(rules_, providers, module, choice, names[index],
                                  related.index == KORV_MASK_NO_COLUMN ? nullptr : &related.name);
    std::string mapping = mappingOf(providers, *module.entry, choice);
    const bool mustBeUnique = choice.mustBeUnique;
    auto column = std::make_unique<Column>(index, names[index], *rule, std::move(request),
                                           std::move(choice), std::move(mapping), related, unmask);
    checkPromises(*rule, module, *column, mustBeUnique);
    return column;
}

RelatedColumn Engine::findRelated(const Rule& rule, const RuleOperand* operand,
                                  const std::vector<std::string>& names) const {
    if (operand == nullptr) return {};
    // The number of a column says nothing where only some are given.
    const bool areAll = (flags_ & (KORV_MASK_SOME_COLUMNS | KORV_MASK_ONE_RULE)) == 0;
    size_t found = names.size();
    if (areAll || ((flags_ & KORV_MASK_ONE_RULE) == 0 && columnNumber(operand->value) == 0)) {
        found = findColumn(names, operand->value);
    }
    if (found < names.size()) return {static_cast<uint32_t>(found), names[found]};
    if (areAll) {
        rules_.fail(rule, operand->position,
                    "operand " + operand->key + " must name one column, and '" + operand->value +
                        "' does not");
    }
    const std::string& name = operand->value;
    const bool isQuoted = name.size() > 2 && name.front() == '"' && name.back() == '"';
    return {static_cast<uint32_t>(found), isQuoted ? name.substr(1, name.size() - 2) : name};
}

void Engine::checkPromises(const Rule& rule, const ProviderModule& module, const Column& column,
                           bool mustBeUnique) const {
    const uint32_t promises = column.description().promises;
    if (mustBeUnique && (promises & PRV_PROMISE_ONE_TO_ONE) == 0) {
        rules_.fail(rule, rule.actionPosition,
                    "UNIQUE is demanded, and " + module.name +
                        " does not promise with these operands that different values have "
                        "different results");
    }
    const bool isReversible =
        (promises & PRV_PROMISE_REVERSIBLE) != 0 && module.entry->unmask != nullptr;
    if ((flags_ & KORV_MASK_UNMASK) != 0 && !isReversible) {
        rules_.fail(rule, rule.actionPosition,
                    module.name + " cannot be reversed with these operands");
    }
}

const Column* Engine::column(uint32_t index) const {
    return index < columns_.size() ? columns_[index].get() : nullptr;
}

const KorvMaskProvider* Engine::provider(uint32_t index) const {
    return index < providers_.size() ? &providers_[index] : nullptr;
}

int32_t Engine::maskBatch(uint32_t index, uint64_t firstRow, const KorvMaskStrings& source,
                          const KorvMaskStrings* related, const KorvMaskResult*& result) noexcept {
    if (ended_ != KORV_MASK_SUCCESS) return report(ended_, "a provider has damaged the process");
    if (index >= columns_.size() || columns_[index]->description().action == KORV_MASK_DROP) {
        return report(KORV_MASK_BAD_ARGUMENT, "there is no such column to mask");
    }
    Column& column = *columns_[index];
    const bool needsRelated = column.description().related != KORV_MASK_NO_COLUMN;
    bool tooLong = false;
    if (!Strings(source).isReadable(kLongestHere, tooLong) ||
        (needsRelated && (related == nullptr || related->count != source.count ||
                          !Strings(*related).isReadable(kLongestHere, tooLong)))) {
        return tooLong ? report(KORV_MASK_TOO_LARGE, "a value is too long to be masked")
                       : report(KORV_MASK_BAD_ARGUMENT, "the values cannot be read");
    }
    try {
        const LocaleScope scope(locale_);
        result = &column.mask(firstRow, source, needsRelated ? related : nullptr,
                              (flags_ & KORV_MASK_VERIFY_PROVIDERS) != 0, window_, records_);
        return result->statistics.failed == 0 ? KORV_MASK_SUCCESS : KORV_MASK_VALUES_FAILED;
    } catch (const Overrun&) {
        ended_ = KORV_MASK_OVERRUN;
        return report(KORV_MASK_OVERRUN, column.overrunMessage().c_str());
    } catch (const Aborted&) {
        return KORV_MASK_ABORTED;  // the value's own record says why
    } catch (const TooLarge&) {
        return report(KORV_MASK_TOO_LARGE, "the result is too large for 32-bit offsets");
    } catch (const std::bad_alloc&) {
        return report(KORV_MASK_NO_MEMORY, "out of memory");
    } catch (const std::length_error&) {
        return report(KORV_MASK_NO_MEMORY, "out of memory");
    } catch (const std::exception& error) {
        return report(KORV_MASK_BAD_PROVIDER, error.what());
    } catch (...) {
        return report(KORV_MASK_BAD_PROVIDER, "a provider threw an exception");
    }
}

}  // namespace mask
