// What every provider needs: operands, values as text, errors with tokens, and the entry record.
//
// A provider is a class with a constructor that takes Operands, and a member template
//     template <typename Char> void mask(Text<Char>& text) const;
// that changes the text in place. Both report an error by throwing Error. Optional members are
//     uint32_t promises() const;                             // PrvPromise, added up
//     static constexpr const char* kSampleRules[] = {...};   // the text after `COLUMN =`
// The file ends with
//     KORV_PROVIDER("CCN", Ccn, kOperands, kErrors)
#pragma once

#include <cstdint>
#include <iterator>
#include <new>
#include <string>

#include "korv/provider.h"
#include "providers/provider_error.h"
#include "providers/value_text.h"
#include "text/utf8_text.h"

namespace provider {

// The operands of the rule, by operand code.
class Operands {
  public:
    explicit Operands(const SvcDefX& service) : service_(service) {}
    const OprDefX* find(uint16_t code) const;
    bool has(uint16_t code) const { return find(code) != nullptr; }
    int32_t number(uint16_t code, int32_t otherwise) const;
    std::wstring wide(uint16_t code) const;

  private:
    const SvcDefX& service_;
};

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

// The functions of an entry for a provider class.
template <typename Provider>
struct Glue {
    static int32_t open(const PrvCall* call, void** state) {
        return guarded(*call, [&] { *state = new Provider(Operands(*call->service)); });
    }

    static int32_t mask(void* state, const PrvCall* call) {
        return guarded(*call, [&] { maskValue(*static_cast<const Provider*>(state), *call); });
    }

    static int32_t maskBatch(void* state, const PrvCall* call, uint32_t count, int32_t* statuses) {
        const auto& provider = *static_cast<const Provider*>(state);
        PrvCall one = *call;
        for (uint32_t i = 0; i < count; ++i, ++one.value, ++one.result) {
            try {
                maskValue(provider, one);
            } catch (...) {
                statuses[i] = 1;
            }
        }
        return 0;
    }

    static uint32_t promises(const void* state) {
        if constexpr (requires(const Provider& provider) { provider.promises(); }) {
            return static_cast<const Provider*>(state)->promises();
        } else {
            return 0;
        }
    }

    static void close(void* state) { delete static_cast<Provider*>(state); }

    // The provider's record without name, operands and errors.
    static constexpr PrvEntry entry() {
        PrvEntry entry = {};
        entry.interfaceVersion = PRV_INTERFACE_VERSION;
        entry.open = open;
        entry.mask = mask;
        entry.close = close;
        entry.maskBatch = maskBatch;
        entry.promises = promises;
        if constexpr (requires { Provider::kSampleRules; }) {
            entry.sampleRules = Provider::kSampleRules;
            entry.sampleRuleCount = std::size(Provider::kSampleRules);
        }
        return entry;
    }

  private:
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

    static void maskValue(const Provider& provider, const PrvCall& call) {
        const int16_t type = call.block->fieldRefs.fieldDef->dataType;
        if (type == VARCHAR_SZ) return maskAs<char>(provider, call);
        if (type == WVARCHAR_SZ) return maskAs<wchar_t>(provider, call);
        throw Error(kNotText, {{KORV_TOKID_DATATYPE, type}});
    }

    template <typename Char>
    static void maskAs(const Provider& provider, const PrvCall& call) {
        Text<Char> text;
        if (!takeValue(call, text)) return;
        provider.mask(text);
        call.result->data = call.value->target;
        call.result->length = static_cast<int32_t>(text.length * sizeof(Char));
    }
};

}  // namespace provider

#define KORV_PROVIDER(providerName, Class, operandTable, errorTable)                           \
    extern "C" __attribute__((visibility("default"))) const PrvEntry* KorvProviderEntry(void); \
    extern "C" const PrvEntry* KorvProviderEntry(void) {                                       \
        static constexpr PrvEntry entry = [] {                                                 \
            PrvEntry made = provider::Glue<Class>::entry();                                    \
            made.name = providerName;                                                          \
            made.operands = std::data(operandTable);                                           \
            made.operandCount = std::size(operandTable);                                       \
            made.errors = std::data(errorTable);                                               \
            made.errorCount = std::size(errorTable);                                           \
            return made;                                                                       \
        }();                                                                                   \
        return &entry;                                                                         \
    }
