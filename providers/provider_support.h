// What every provider needs: operands, values as text, errors with tokens, and the entry record.
//
// A provider is a class with a constructor that takes Operands, and a member template
//     template <typename Char> void mask(Text<Char>& text, const Related& related) const;
// that changes the text in place; the second parameter is optional. Both report an error by
// throwing Error. A provider that can also permute values under a key has three more members:
//     const crypto::Permutation* permutation() const;  // nullptr when the rule's method is another
//     template <typename Char> void prepare(Text<Char>& text, crypto::Permuted& number) const;
//     template <typename Char> void finish(Text<Char>& text, crypto::Permuted& number) const;
// prepare turns the value into a number, and finish writes the permuted one into the text. That is
// done for many values together, and backwards to unmask. Other optional members are
//     uint32_t promises() const;                             // PrvPromise, added up
//     static constexpr const char* kSampleRules[] = {...};   // the text after `COLUMN =`
// The file ends with
//     KORV_PROVIDER("CCN", Ccn, kMethods, kOperands, kErrors)
#pragma once

#include <cstdint>
#include <iterator>
#include <new>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "korv/provider.h"
#include "providers/crypto/permutation.h"
#include "providers/provider_error.h"
#include "providers/value_text.h"
#include "text/utf8_text.h"

namespace provider {

inline constexpr uint32_t kKeyBytes = 32;

// The operands of the rule, by operand code, and its method.
class Operands {
  public:
    explicit Operands(const PrvCall& call) : call_(call), service_(*call.service) {}
    bool isMethod(std::string_view name) const {
        return call_.method != nullptr && name == call_.method;
    }
    // The key of a keyed method; it lives as long as the provider's state. Throws Error without
    // one.
    std::span<const uint8_t> key() const;
    // These throw Error. `key` is the operand's.
    void require(uint16_t code, const wchar_t* key) const;
    void refuse(uint16_t code, const wchar_t* key) const;
    const OprDefX* find(uint16_t code) const;
    bool has(uint16_t code) const { return find(code) != nullptr; }
    int32_t number(uint16_t code, int32_t otherwise) const;
    std::wstring wide(uint16_t code) const;

  private:
    const PrvCall& call_;
    const SvcDefX& service_;
};

// The value of another column in the same row. Empty when it is NULL.
using Related = std::string_view;

// Whether the text of an operand is a given word, without regard to case.
bool isWord(const std::wstring& text, const wchar_t* word);

// A positive pseudo-random number made of a key and a position.
uint32_t mix(uint32_t key, uint32_t position);

// Throws Error for a value that is longer than kLongestValue characters or than its target.
[[noreturn]] void failUnfitting(size_t length, int32_t capacity, size_t unit);

// Copies the call's value to its target and describes it in `text`. False for a NULL or empty
// value, for which the result is complete. Throws Error.
template <typename Char>
bool takeValue(const PrvCall& call, Text<Char>& text) {
    using Traits = std::char_traits<Char>;
    const ValueRecord& value = *call.value;
    const bool null = value.nullIndicator == 1 || value.data == nullptr;
    const auto* const source = static_cast<const Char*>(value.data);
    const size_t length = null ? 0 : Traits::length(source);
    if (length == 0) {
        call.result->nullIndicator = 1;
        return false;
    }
    if (length > kLongestValue ||
        static_cast<int32_t>((length + 1) * sizeof(Char)) > value.capacity) {
        failUnfitting(length, value.capacity, sizeof(Char));
    }
    text = {static_cast<Char*>(value.target), static_cast<int32_t>(length),
            static_cast<int32_t>(value.capacity / sizeof(Char)) - 1, source};
    Traits::copy(text.data, source, length + 1);
    return true;
}

// Captures an error with its tokens in the request's chain; returns its code.
int32_t capture(const PrvCall& call, const Error& error);

template <typename Provider>
concept Permuting = requires(const Provider& provider) {
    provider.permutation();
};

// What belongs to an opened rule: the provider, and memory that is used for one batch after
// another.
template <typename Provider>
struct State {
    explicit State(const PrvCall& call) : provider(Operands(call)) {}

    const Provider provider;
    std::vector<crypto::Permuted> numbers;
    std::vector<uint32_t> places;  // of the values with these numbers
};

// The functions of an entry for a provider class.
template <typename Provider>
struct Glue {
    static int32_t open(const PrvCall* call, void** state) {
        return guarded(*call, [&] { *state = new State<Provider>(*call); });
    }

    static int32_t mask(void* state, const PrvCall* call) {
        return run(state, *call, crypto::Direction::encrypt);
    }

    static int32_t unmask(void* state, const PrvCall* call) {
        return run(state, *call, crypto::Direction::decrypt);
    }

    static int32_t maskBatch(void* state, const PrvCall* call, uint32_t count, int32_t* statuses) {
        auto& known = *static_cast<State<Provider>*>(state);
        if constexpr (Permuting<Provider>) {
            if (known.provider.permutation() != nullptr) {
                const bool wide = call->block->fieldRefs.fieldDef->dataType == WVARCHAR_SZ;
                try {
                    wide ? permuteBatch<wchar_t>(known, *call, count, statuses)
                         : permuteBatch<char>(known, *call, count, statuses);
                    return 0;
                } catch (...) {
                    return 1;
                }
            }
        }
        PrvCall one = *call;
        for (uint32_t i = 0; i < count; ++i, ++one.value, ++one.result) {
            try {
                maskValue(known, one, crypto::Direction::encrypt);
            } catch (...) {
                statuses[i] = 1;
            }
            if (one.related != nullptr) ++one.related;
        }
        return 0;
    }

    static uint32_t promises(const void* state) {
        if constexpr (requires(const Provider& provider) { provider.promises(); }) {
            return static_cast<const State<Provider>*>(state)->provider.promises();
        } else {
            return 0;
        }
    }

    static void close(void* state) { delete static_cast<State<Provider>*>(state); }

    // The provider's record without name, operands and errors.
    static constexpr PrvEntry entry() {
        PrvEntry entry = {};
        entry.interfaceVersion = PRV_INTERFACE_VERSION;
        entry.open = open;
        entry.mask = mask;
        entry.close = close;
        entry.maskBatch = maskBatch;
        if constexpr (Permuting<Provider>) entry.unmask = unmask;
        entry.promises = promises;
        if constexpr (requires { Provider::kSampleRules; }) {
            entry.sampleRules = Provider::kSampleRules;
            entry.sampleRuleCount = std::size(Provider::kSampleRules);
        }
        return entry;
    }

  private:
    static int32_t run(void* state, const PrvCall& call, crypto::Direction direction) {
        auto& known = *static_cast<State<Provider>*>(state);
        return guarded(call, [&] { maskValue(known, call, direction); });
    }

    template <typename Step>
    static int32_t guarded(const PrvCall& call, Step step) {
        try {
            step();
            return 0;
        } catch (const Error& error) {
            return capture(call, error);
        } catch (const text::ConversionError&) {
            return capture(call, Error(kNotConverted, {}));
        } catch (const std::bad_alloc&) {
            return capture(call, Error(kNoMemory, {}));
        } catch (...) {
            return capture(call, Error(kUnexpected, {}));
        }
    }

    static void maskValue(State<Provider>& state, const PrvCall& call,
                          crypto::Direction direction) {
        const int16_t type = call.block->fieldRefs.fieldDef->dataType;
        if (type == VARCHAR_SZ) return maskAs<char>(state, call, direction);
        if (type == WVARCHAR_SZ) return maskAs<wchar_t>(state, call, direction);
        throw Error(kNotText, {{KORV_TOKID_DATATYPE, type}});
    }

    template <typename Char>
    static void maskAs(State<Provider>& state, const PrvCall& call, crypto::Direction direction) {
        Text<Char> text;
        if (!takeValue(call, text)) return;
        const Provider& provider = state.provider;
        if constexpr (Permuting<Provider>) {
            if (const crypto::Permutation* permutation = provider.permutation()) {
                if (state.numbers.empty()) state.numbers.resize(1);
                crypto::Permuted& number = state.numbers.front();
                number.start();
                provider.prepare(text, number);
                permutation->run({&number, 1}, direction);
                provider.finish(text, number);
                return setResult(call, text);
            }
        }
        if constexpr (requires { provider.mask(text, Related()); }) {
            const ValueRecord* const other = call.related;
            const bool has =
                other != nullptr && other->nullIndicator != 1 && other->data != nullptr;
            provider.mask(text, has ? Related(static_cast<const char*>(other->data),
                                              static_cast<size_t>(other->length))
                                    : Related());
        } else {
            provider.mask(text);
        }
        setResult(call, text);
    }

    template <typename Char>
    static void setResult(const PrvCall& call, const Text<Char>& text) {
        call.result->data = call.value->target;
        call.result->length = static_cast<int32_t>(text.length * sizeof(Char));
    }

    // Values that fail are left to mask.
    template <typename Char>
    static void permuteBatch(State<Provider>& state, const PrvCall& call, uint32_t count,
                             int32_t* statuses) {
        if (state.numbers.size() < count) state.numbers.resize(count);
        state.places.clear();
        PrvCall one = call;
        const auto textAt = [&](uint32_t place) {
            one.value = call.value + place;
            one.result = call.result + place;
            Text<Char> text;
            return std::pair(takeValue(one, text), text);
        };
        for (uint32_t i = 0; i < count; ++i) {
            try {
                auto [isValue, text] = textAt(i);
                if (!isValue) continue;
                crypto::Permuted& number = state.numbers[state.places.size()];
                number.start();
                state.provider.prepare(text, number);
                state.places.push_back(i);
            } catch (const Error&) {
                statuses[i] = 1;
            }
        }
        state.provider.permutation()->run({state.numbers.data(), state.places.size()},
                                          crypto::Direction::encrypt);
        for (size_t k = 0; k < state.places.size(); ++k) {
            auto [isValue, text] = textAt(state.places[k]);
            state.provider.finish(text, state.numbers[k]);
            setResult(one, text);
        }
    }
};

}  // namespace provider

#define KORV_PROVIDER(providerName, Class, methodTable, operandTable, errorTable)              \
    extern "C" __attribute__((visibility("default"))) const PrvEntry* KorvProviderEntry(void); \
    extern "C" const PrvEntry* KorvProviderEntry(void) {                                       \
        static constexpr PrvEntry entry = [] {                                                 \
            PrvEntry made = provider::Glue<Class>::entry();                                    \
            made.name = providerName;                                                          \
            made.methods = std::data(methodTable);                                             \
            made.methodCount = std::size(methodTable);                                         \
            made.operands = std::data(operandTable);                                           \
            made.operandCount = std::size(operandTable);                                       \
            made.errors = std::data(errorTable);                                               \
            made.errorCount = std::size(errorTable);                                           \
            return made;                                                                       \
        }();                                                                                   \
        return &entry;                                                                         \
    }
