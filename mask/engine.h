// An open handle: rules, providers and columns.
#pragma once

#include <locale.h>

#include <memory>
#include <string>
#include <vector>

#include "column.h"
#include "korv/mask.h"
#include "mask_error.h"
#include "provider_module.h"
#include "records.h"
#include "rules.h"

namespace mask {

// Providers run under the thread locale C.UTF-8, whatever the process has set. An object of this
// class gives the thread its own locale back.
class LocaleScope {
  public:
    explicit LocaleScope(locale_t locale)
        : before_(locale == nullptr ? nullptr : ::uselocale(locale)) {}
    ~LocaleScope() {
        if (before_ != nullptr) ::uselocale(before_);
    }
    LocaleScope(const LocaleScope&) = delete;
    LocaleScope& operator=(const LocaleScope&) = delete;

  private:
    locale_t before_;
};

class Engine {
  public:
    Engine() = default;
    ~Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    // Each returns a KorvMaskStatus and adds records.
    int32_t open(const KorvMaskSettings& settings) noexcept;
    int32_t maskBatch(uint32_t column, uint64_t firstRow, const KorvMaskStrings& source,
                      const KorvMaskStrings* related, const KorvMaskResult*& result) noexcept;

    // Adds a record, and returns its status.
    int32_t report(int32_t status, const char* message) noexcept;

    const Column* column(uint32_t index) const;
    const KorvMaskProvider* provider(uint32_t index) const;
    Records& records() { return records_; }
    const Records& records() const { return records_; }

  private:
    void openRules(const KorvMaskSettings& settings);
    void openColumns(const std::vector<std::string>& names, const std::vector<const Rule*>& plan,
                     const secrets::Secrets& secrets, Faults& faults);
    std::unique_ptr<Column> openColumn(uint32_t index, const std::vector<std::string>& names,
                                       const Rule* rule, const secrets::Secrets& secrets);
    RelatedColumn findRelated(const Rule& rule, const RuleOperand* operand,
                              const std::vector<std::string>& names) const;
    void checkPromises(const Rule& rule, const ProviderModule& module, const Column& column,
                       bool mustBeUnique) const;
    int32_t report(const MaskError& error) noexcept;

    locale_t locale_ = nullptr;
    uint32_t flags_ = 0;
    int32_t ended_ = KORV_MASK_SUCCESS;  // the status that every further batch ends with
    Records records_;
    Rules rules_;
    secrets::SecretPages keys_;  // of the columns' methods
    std::unique_ptr<ProviderModules> modules_;
    std::vector<std::unique_ptr<Column>> columns_;
    ValueWindow window_;                       // of the column that is being masked
    std::vector<KorvMaskProvider> providers_;  // by name
};

}  // namespace mask
