// A provider that is opened for a rule, and calls of its functions with everything that is checked
// about one call.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fenced_memory.h"
#include "mask/request.h"
#include "mask/secrets/secret_pages.h"

namespace kit {

// What a test runs with.
struct Settings {
    std::string module;
    std::string test;  // "4.6"
    std::string rule;
    std::string files;   // folder of files that rules name
    std::string values;  // file of values
    std::string replay;  // file of recorded vectors, for this rule
    uint64_t seed = 1;
    unsigned seconds = 2;  // for each fuzz test
    std::string task;      // of a process that a test starts: "", "results"
};

// Loads the module as the engine does. Throws std::runtime_error with the loader's message.
std::unique_ptr<void, mask::CloseModule> loadModule(const std::string& path);
PrvEntryFunction findEntry(void* handle);

struct SeenToken {
    uint32_t id;
    bool hasText;
    std::wstring text;
};

struct SeenError {
    uint32_t firstCode;
    int16_t slotCount;
    std::vector<SeenToken> tokens;
};

enum class Form { automatic, narrow, wide };

// How a value is handed over.
struct How {
    Form form = Form::automatic;
    bool unmask = false;
    bool isNull = false;
    bool isFenced = false;           // source and target end at unreadable pages
    std::optional<size_t> capacity;  // bytes of the target; otherwise as the engine gives them
    unsigned char fill = 0xA5;       // in the memory around source and target, and in the target
    const char* related = "17";      // the value of the other column; nullptr for NULL
};

// What one call has done.
struct Outcome {
    int32_t status = 0;
    bool threw = false;
    bool isNull = false;
    bool isSet = false;
    bool sourceIsIntact = true;
    bool surroundingsAreIntact = true;
    uint32_t resultBytes = 0;
    std::string text;   // the result as UTF-8 text
    std::string fault;  // of the result, such as "a length of -1"
    std::vector<SeenError> errors;
    std::vector<std::string> messages;  // as the engine reports the errors, nothing withheld

    bool isMasked() const { return status == 0 && !threw && errors.empty() && fault.empty(); }
    // Whether another call has had the same end.
    bool equals(const Outcome& other) const;
};

// A function of the provider that masks: mask or unmask.
using MaskFunction = int32_t (*)(void*, const PrvCall*);

// What is wrong with the error records of a call that returned this; empty when nothing is.
std::string recordsFault(const PrvEntry& entry, int32_t status,
                         const std::vector<SeenError>& errors);
// Whether a text has bytes that are no UTF-8 text, or a zero byte.
bool isText(std::string_view text);

class Session {
  public:
    // Opens the rule. Throws MaskError when the provider or the engine refuses it.
    Session(const mask::ProviderModule& module, const Settings& settings);

    const mask::ProviderModule& module() const { return module_; }
    const PrvEntry& entry() const { return *module_.entry; }
    mask::Request& request() { return *request_; }
    void* state() const { return request_->state(); }
    bool hasRelated() const { return hasRelated_; }
    uint32_t promises() const;
    bool canUnmask() const { return module_.isVersion2() && entry().unmask != nullptr; }

    // Calls mask or unmask. The result is valid until the next call.
    const Outcome& mask(std::string_view text, const How& how = {});
    // The records of the last call's errors, which are then taken out of the chain.
    void takeErrors(std::vector<SeenError>& errors, std::vector<std::string>& messages);

    // Replaces the plain call of a function, for stacks of other kinds.
    std::function<int32_t(MaskFunction, void*, const PrvCall*)> invoke;

    // The key of the rule's secret, or nullptr.
    const uint8_t* key() const { return request_->call(false).key; }

  private:
    void fill(const How& how, std::string_view text, bool wide);
    void call(const How& how, bool wide);
    void readResult(bool wide);

    const mask::ProviderModule& module_;
    mask::Rules rules_;
    mask::Rule rule_;
    secrets::SecretPages keys_;
    bool hasRelated_ = false;
    std::unique_ptr<mask::Request> request_;

    FencedMemory source_;
    FencedMemory target_;
    std::wstring wideText_;
    char* sourceBegin_ = nullptr;
    size_t sourceBytes_ = 0;
    char* targetBegin_ = nullptr;
    size_t capacity_ = 0;
    ValueRecord value_ = {};
    ValueRecord result_ = {};
    Outcome outcome_;
};

// Thread-local locale C.UTF-8, under which providers run.
class EngineLocale {
  public:
    EngineLocale();
    ~EngineLocale();
    EngineLocale(const EngineLocale&) = delete;
    EngineLocale& operator=(const EngineLocale&) = delete;

  private:
    locale_t locale_;
    locale_t before_;
};

// Why the rule cannot be opened here although the module may be sound; empty otherwise.
std::string reasonNotToRun(const Settings& settings);

}  // namespace kit
