// A rule that a provider has opened, with hand-built records, and the values that it masks.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "korv/provider.h"

// The providers' keyed methods need libcrypto.
#ifdef KORV_HAS_LIBCRYPTO
inline constexpr bool kHasKeyedMethods = true;
#else
inline constexpr bool kHasKeyedMethods = false;
#endif

// A rule such as `LKP, "file=list.txt", default=Other, type=wide` or `CCN, secret=test`.
struct RuleText {
    // Relative names of files begin in `folder`.
    RuleText(const std::string& text, const std::string& folder);

    struct Operand {
        std::string key;  // in capitals
        std::string value;
    };
    std::string provider;
    std::vector<Operand> operands;  // without the engine's own
    std::string folder;
    std::string method;  // in lower case; empty when the rule names none
    bool hasSecret = false;
    bool wideOnly = false;
};

// What became of a value: the result as UTF-8 or "NULL"; or else "error" and the captured errors as
// "CODE NAME=text NAME=text", without the names' common prefix and the column.
using Outcome = std::string;

class OpenedRule {
  public:
    enum Form { narrow, wide };

    // Calls open. error() tells whether and why it has failed.
    OpenedRule(const PrvEntry& entry, const RuleText& rule);
    ~OpenedRule();
    OpenedRule(const OpenedRule&) = delete;
    OpenedRule& operator=(const OpenedRule&) = delete;

    const std::string& error() const { return error_; }
    uint32_t promises() const { return entry_.promises(state_); }

    // Masks a value by `mask`. An empty value is handed on as NULL, as to modules of version 1.
    Outcome mask(Form form, const std::string& value);
    // Passes a masked value to `unmask`, and returns what came back.
    Outcome unmask(Form form, const std::string& masked);
    // Masks values by one call of `maskBatch`. The outcome of a value that is left to `mask` is
    // "error".
    std::vector<Outcome> maskBatch(Form form, const std::vector<std::string>& values);

  private:
    struct Records;
    struct Buffers;
    Outcome run(int32_t (*function)(void*, const PrvCall*), Form form, const std::string& value);
    std::string takeErrors();

    const PrvEntry& entry_;
    std::unique_ptr<Records> records_;
    std::string error_;
    void* state_ = nullptr;
};
