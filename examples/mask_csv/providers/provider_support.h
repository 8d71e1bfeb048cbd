// What every provider needs: operands, values as text, errors with tokens, and the entry record.
//
// A provider is a class with a constructor that takes Operands, and a member template
//     template <typename Char> void mask(Text<Char>& text) const;
// that changes the text in place. Both report an error by throwing Error. The file ends with
//     MASK_CSV_PROVIDER("CCN", Ccn, kOperands, kErrors)
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

#include "provider.h"
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
};
#define MASK_CSV_COMMON_ERRORS                                                             \
    {provider::kValueTooLong, "the value is too long"},                                    \
        {provider::kResultTooLong, "the masked value is too long"},                        \
        {provider::kNotText, "the field is not text"}, {provider::kNoMemory, "no memory"}, \
        {provider::kBadFile, "the file cannot be read or is not UTF-8 text"}, {            \
        provider::kNotConverted, "text that cannot be converted"                           \
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
    std::string narrow(uint16_t code) const;

  private:
    const SvcDefX& service_;
};

// A value in its target buffer: `length` characters with a terminator, in room for `capacity`.
template <typename Char>
struct Text {
    Char* data;
    int32_t length;
    int32_t capacity;    // without the terminator
    const Char* source;  // the clear value, of `length` characters

    Char* begin() { return data; }
    Char* end() { return data + length; }

    void assign(std::basic_string_view<Char> text) {
        const auto count = static_cast<int32_t>(text.size());
        if (count > capacity) {
            throw Error(kResultTooLong,
                        {{KORV_TOKID_BUF_EXPECTED_LEN, count}, {KORV_TOKID_BUFFER_SIZE, capacity}});
        }
        std::copy(text.begin(), text.end(), data);
        data[count] = 0;
        length = count;
    }
};

// A text that replaces values, in both widths; the narrow one is UTF-8.
struct Replacement {
    explicit Replacement(std::wstring text);
    void putInto(Text<char>& text) const { text.assign(narrow); }
    void putInto(Text<wchar_t>& text) const { text.assign(wide); }

    std::string narrow;
    std::wstring wide;
};

// The characters of a value as wide text: the value itself, or its narrow characters in `buffer`.
struct WideBuffer {
    wchar_t characters[kLongestValue + 1];
};
inline const wchar_t* widen(const Text<wchar_t>& text, WideBuffer&) {
    return text.data;
}
inline const wchar_t* widen(const Text<char>& text, WideBuffer& buffer) {
    std::copy(text.data, text.data + text.length + 1, buffer.characters);
    return buffer.characters;
}

// ASCII classes, the same in both widths.
constexpr bool isDigit(int32_t c) {
    return c >= '0' && c <= '9';
}
constexpr bool isLetter(int32_t c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// A positive pseudo-random number made of a key and a position.
uint32_t mix(uint32_t key, uint32_t position);

// Measures, classifies and copies the call's value to its target. False for a null or empty value,
// for which the result is complete. Throws Error.
bool takeValue(const PrvCall& call, int32_t& characters);

// Captures an error with its tokens in the request's chain; returns its code.
int32_t capture(const PrvCall& call, const Error& error);

// The three functions of an entry for a provider class.
template <typename Provider>
struct Glue {
    template <typename Step>
    static int32_t guarded(const PrvCall& call, Step step) {
        try {
            step();
            return 0;
        } catch (const Error& error) {
            return capture(call, error);
        } catch (const text::ConversionError&) {
            return capture(call, Error(kNotConverted, {}));
        } catch (const std::exception&) {
            return capture(call, Error(kNoMemory, {}));
        }
    }

    static int32_t open(const PrvCall* call, void** state) {
        return guarded(*call, [&] { *state = new Provider(Operands(*call->service)); });
    }

    static int32_t mask(void* state, const PrvCall* call) {
        const auto& provider = *static_cast<const Provider*>(state);
        return guarded(*call, [&] {
            int32_t characters = 0;
            if (!takeValue(*call, characters)) return;
            if (call->block->fieldRefs.fieldDef->dataType == VARCHAR_SZ) {
                maskAs<char>(provider, *call, characters);
            } else {
                maskAs<wchar_t>(provider, *call, characters);
            }
        });
    }

    static void close(void* state) { delete static_cast<Provider*>(state); }

  private:
    template <typename Char>
    static void maskAs(const Provider& provider, const PrvCall& call, int32_t characters) {
        const auto room = static_cast<int32_t>(call.value->capacity / sizeof(Char));
        Text<Char> text = {static_cast<Char*>(call.value->target), characters, room - 1,
                           static_cast<const Char*>(call.value->data)};
        provider.mask(text);
        call.result->data = call.value->target;
        call.result->length = static_cast<int32_t>(text.length * sizeof(Char));
    }
};

}  // namespace provider

#define MASK_CSV_PROVIDER(name, Class, operands, errors)                                       \
    extern "C" __attribute__((visibility("default"))) const PrvEntry* KorvProviderEntry(void); \
    extern "C" const PrvEntry* KorvProviderEntry(void) {                                       \
        using Glue = provider::Glue<Class>;                                                    \
        static const PrvEntry entry = {PRV_INTERFACE_VERSION,                                  \
                                       name,                                                   \
                                       std::data(operands),                                    \
                                       std::size(operands),                                    \
                                       std::data(errors),                                      \
                                       std::size(errors),                                      \
                                       Glue::open,                                             \
                                       Glue::mask,                                             \
                                       Glue::close};                                           \
        return &entry;                                                                         \
    }
