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

#include <algorithm>
#include <cstdint>
#include <exception>
#include <initializer_list>
#include <iterator>
#include <new>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "korv/provider.h"
#include "text/utf8_text.h"

namespace provider {

// Codes that any provider may report; its own are below 100.
enum CommonError : uint32_t {
    kValueTooLong = 100,
    kResultTooLong = 101,
    kNotText = 102,
    kNoMemory = 103,
    kBadFile = 104,
    kNotConverted = 105,
    kUnexpected = 106,
};
#define KORV_COMMON_ERRORS                                                                     \
    {provider::kValueTooLong, "the value is too long"},                                        \
        {provider::kResultTooLong, "the masked value is too long"},                            \
        {provider::kNotText, "the field is not text"}, {provider::kNoMemory, "out of memory"}, \
        {provider::kBadFile, "the file cannot be read or is not UTF-8 text"},                  \
        {provider::kNotConverted, "the text cannot be converted"}, {                           \
        provider::kUnexpected, "the provider failed unexpectedly"                              \
    }

// The longest value in characters; the library counts terminated text in 16 bits.
inline constexpr int32_t kLongestValue = 8000;

struct Token {
    uint32_t id;
    std::variant<int32_t, std::wstring> value;
};

// An error of the value or the rule at hand. The column's name is added to its tokens.
class Error : public std::exception {
  public:
    Error(uint32_t errorCode, std::initializer_list<Token> errorTokens)
        : code(errorCode), tokens(errorTokens) {}
    const char* what() const noexcept override { return "provider error"; }

    uint32_t code;
    std::vector<Token> tokens;
};

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

// A value in its target buffer: `length` characters with a terminator, in room for `capacity`.
template <typename Char>
struct Text {
    Char* data;
    int32_t length;
    int32_t capacity;    // without the terminator
    const Char* source;  // the clear value, of `length` characters at first

    Char* begin() { return data; }
    Char* end() { return data + length; }
    std::basic_string_view<Char> view() const { return {data, static_cast<size_t>(length)}; }

    // Throws Error when a text of `count` characters would not fit.
    void requireRoom(size_t count) const {
        if (count > static_cast<size_t>(capacity)) {
            throw Error(kResultTooLong, {{KORV_TOKID_BUF_EXPECTED_LEN, static_cast<int32_t>(count)},
                                         {KORV_TOKID_BUFFER_SIZE, capacity}});
        }
    }
    // Replaces the characters from `first` on.
    void replaceFrom(int32_t first, std::basic_string_view<Char> tail) {
        requireRoom(static_cast<size_t>(first) + tail.size());
        Char* const last = std::copy(tail.begin(), tail.end(), data + first);
        *last = 0;
        length = static_cast<int32_t>(last - data);
    }
};

// UTF-8 text as wide text. Throws text::ConversionError.
std::wstring widen(const std::string& utf8);

// A text that replaces values or parts of them, in both widths; the narrow one is UTF-8.
struct Replacement {
    explicit Replacement(std::wstring text);
    explicit Replacement(std::string text);
    std::string_view of(const Text<char>&) const { return narrow; }
    std::wstring_view of(const Text<wchar_t>&) const { return wide; }

    std::string narrow;
    std::wstring wide;
};

// ASCII classes, the same in both widths.
constexpr bool isDigit(int32_t c) {
    return c >= '0' && c <= '9';
}
constexpr bool isLetter(int32_t c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}
constexpr int32_t upperAscii(int32_t c) {
    return c >= 'a' && c <= 'z' ? c - ('a' - 'A') : c;
}
constexpr int32_t lowerAscii(int32_t c) {
    return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c;
}

// Convert the letters of a value. Narrow values are ASCII.
inline void lower(Text<char>& text) {
    for (char& c : text) c = static_cast<char>(lowerAscii(c));
}
inline void lower(Text<wchar_t>& text) {
    KORV_StrToWLower(text.data);
}
inline void upper(Text<char>& text) {
    for (char& c : text) c = static_cast<char>(upperAscii(c));
}
inline void upper(Text<wchar_t>& text) {
    KORV_StrToWUpper(text.data);
}

// A positive pseudo-random number made of a key and a position.
uint32_t mix(uint32_t key, uint32_t position);

// Throws Error for a value that is longer than kLongestValue characters or than its target.
void requireFittingValue(size_t length, int32_t capacity, size_t unit);

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
    requireFittingValue(length, value.capacity, sizeof(Char));
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
