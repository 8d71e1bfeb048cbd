/** @file
 * A masking provider as a C++17 class: operands, values as text, errors with tokens, and the record
 * of the module.
 *
 * @code
 * #include <korv/provider.hpp>
 *
 * #include <algorithm>
 * #include <array>
 *
 * using namespace korv::provider;
 *
 * constexpr PrvOperand kOperands[] = {{"KEEP", 1, 0, OPR_VALUE_INTEGER, 0, 1000}};
 * constexpr PrvErrorText kErrors[] = {{1, "the value is too short"}, KORV_COMMON_ERRORS};
 * constexpr std::array<PrvMethod, 0> kMethods;
 *
 * class Stars {  // replaces all characters except the first ones by asterisks
 *   public:
 *     explicit Stars(const Operands& operands) : keep_(operands.number(1, 0)) {}
 *
 *     template <class Char>
 *     void mask(Text<Char>& text) const {
 *         if (text.length <= keep_) throw Error(1, {{KORV_TOKID_SRCLEN, text.length}});
 *         std::fill(text.begin() + keep_, text.end(), static_cast<Char>('*'));
 *     }
 *
 *   private:
 *     int32_t keep_;
 * };
 *
 * KORV_PROVIDER("STARS", Stars, kMethods, kOperands, kErrors)
 * @endcode
 *
 * The constructor reads the operands of a rule. mask changes a text in place; it is compiled for
 * narrow text, which holds ASCII characters only, and for wide text. Both report an error by
 * throwing Error; any other exception becomes an error too, and none leaves the module. The object
 * of one rule is used by one thread at a time.
 *
 * Further members, each of them optional:
 *   - `template <class Char> void mask(Text<Char>& text, Related related)`, instead of the other
 *     mask, also takes the value of the column that an operand names.
 *   - `template <class Char> void unmask(Text<Char>& text)` turns a masked text back into the
 *     clear one.
 *   - `template <class Char> void maskAll(std::vector<Item<Char>>& items)` masks many texts in
 * one call, if `bool usesBatches() const` returns true.
 *   - `std::uint32_t promises() const` returns what the rule promises: PrvPromise, added up.
 *   - `static constexpr const char* kSampleRules[] = {"STARS, keep=2"}` are rules to try the
 * provider with: the text after `COLUMN =`.
 *
 * The header needs the support library and the C++ run-time library.
 *
 * @since 1.1 */
#ifndef KORV_PROVIDER_HPP
#define KORV_PROVIDER_HPP

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <initializer_list>
#include <iterator>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "korv/provider.h"

namespace korv {
namespace provider {

/** Codes that any provider may report. Its own codes are 1 to 99. */
enum CommonError : std::uint32_t {
    kValueTooLong = 100,   /**< more than kLongestValue characters, or more than the target has */
    kResultTooLong = 101,  /**< the masked text does not fit the target */
    kNotText = 102,        /**< the field is not text */
    kNoMemory = 103,       /**< std::bad_alloc */
    kBadFile = 104,        /**< a file that a rule names */
    kNotConverted = 105,   /**< a text without a form in the other width */
    kUnexpected = 106,     /**< an exception of another type */
    kMissingOperand = 107, /**< thrown by Operands::require and Operands::key */
    kUnfitOperand = 108    /**< thrown by Operands::refuse */
};

/** The texts of CommonError, for the provider's table of errors. */
#define KORV_COMMON_ERRORS                                                            \
    {::korv::provider::kValueTooLong, "the value is too long"},                       \
        {::korv::provider::kResultTooLong, "the masked value is too long"},           \
        {::korv::provider::kNotText, "the field is not text"},                        \
        {::korv::provider::kNoMemory, "out of memory"},                               \
        {::korv::provider::kBadFile, "the file cannot be read or is not UTF-8 text"}, \
        {::korv::provider::kNotConverted, "the text cannot be converted"},            \
        {::korv::provider::kUnexpected, "the provider failed unexpectedly"},          \
        {::korv::provider::kMissingOperand, "the method needs this operand"}, {       \
        ::korv::provider::kUnfitOperand, "the operand does not go with the method"    \
    }

/** Bytes of the key of a keyed method. */
inline constexpr std::uint32_t kKeyBytes = 32;

/** The longest value in characters. A longer one fails with kValueTooLong: the support library
 * counts terminated text in 16 bits. */
inline constexpr std::int32_t kLongestValue = 8000;

/** A token of an error: a number or a text, never the value or a part of it. */
struct Token {
    std::uint32_t id;                               /**< KorvTokenId */
    std::variant<std::int32_t, std::wstring> value; /**< what it says */
};

/** An error of the value or of the rule. The name of the column is added to its tokens. */
class Error : public std::exception {
  public:
    /** An error.
     *
     * @param errorCode    of the provider's table of errors
     * @param errorTokens  in the order of the report */
    Error(std::uint32_t errorCode, std::initializer_list<Token> errorTokens)
        : code(errorCode), tokens(errorTokens) {}
    /** A text without the value.
     * @return the same text for all errors */
    const char* what() const noexcept override { return "provider error"; }

    std::uint32_t code;        /**< of the provider's table of errors */
    std::vector<Token> tokens; /**< in the order of the report */
};

/** The method and the operands of a rule. It refers to the call of open, so it is used in the
 * constructor of the provider only. */
class Operands {
  public:
    /** The operands of a call.
     * @param call  the call of open */
    explicit Operands(const PrvCall& call) : call_(call) {}

    /** Whether the rule has a method.
     * @param name  name of the method
     * @return true if it does */
    bool isMethod(std::string_view name) const {
        return call_.method != nullptr && name == call_.method;
    }
    /** The key of a keyed method. Throws Error when the rule has none.
     * @return kKeyBytes bytes, valid as long as the provider's object */
    const std::uint8_t* key() const {
        if (call_.key == nullptr || call_.keyLength != kKeyBytes) {
            throw Error(kMissingOperand, {{KORV_TOKID_PARMKEY, L"SECRET"}});
        }
        return call_.key;
    }
    /** An operand.
     * @param code  its code
     * @return the operand, or NULL when the rule does not have it */
    const OprDefX* find(std::uint16_t code) const {
        const OprDefX* operand = call_.service->oprDefs;
        while (operand != nullptr && operand->oprCode != code) operand = operand->link;
        return operand;
    }
    /** Whether the rule has an operand.
     * @param code  its code
     * @return true if it does */
    bool has(std::uint16_t code) const { return find(code) != nullptr; }
    /** The value of an operand of the kind OPR_VALUE_INTEGER.
     * @param code       its code
     * @param otherwise  returned when the rule does not have it
     * @return the number */
    std::int32_t number(std::uint16_t code, std::int32_t otherwise) const {
        const OprDefX* const operand = find(code);
        return operand == nullptr ? otherwise : static_cast<std::int32_t>(operand->intValue);
    }
    /** The value of an operand of one of the kinds of text.
     * @param code  its code
     * @return the text, empty when the rule does not have the operand */
    std::wstring wide(std::uint16_t code) const {
        const OprDefX* const operand = find(code);
        return operand == nullptr || operand->wideValue == nullptr ? L"" : operand->wideValue;
    }
    /** The value of an operand of the kind OPR_VALUE_NARROW, such as a file name.
     * @param code  its code
     * @return the UTF-8 text, empty when the rule does not have the operand */
    std::string narrow(std::uint16_t code) const {
        const OprDefX* const operand = find(code);
        return operand == nullptr || operand->narrowValue == nullptr ? "" : operand->narrowValue;
    }
    /** Throws Error when the rule does not have an operand.
     * @param code  its code
     * @param key   its key, which the error names */
    void require(std::uint16_t code, const wchar_t* key) const {
        if (!has(code)) throw Error(kMissingOperand, {{KORV_TOKID_PARMKEY, key}});
    }
    /** Throws Error when the rule has an operand.
     * @param code  its code
     * @param key   its key, which the error names */
    void refuse(std::uint16_t code, const wchar_t* key) const {
        if (has(code)) throw Error(kUnfitOperand, {{KORV_TOKID_PARMKEY, key}});
    }

  private:
    const PrvCall& call_;
};

/** The UTF-8 value of another column in the same row; an empty text if the value is NULL. */
using Related = std::string_view;

/** A value in its target buffer, where it is masked: `length` characters and a terminator.
 * @tparam Char  char or wchar_t */
template <class Char>
struct Text {
    Char* data;            /**< the first character */
    std::int32_t length;   /**< in characters, without the terminator */
    std::int32_t capacity; /**< the most characters that fit, without the terminator */
    const Char* source;    /**< the clear value, of `length` characters at first; do not write */

    /** For loops and algorithms.
     * @return the first character */
    Char* begin() { return data; }
    /** For loops and algorithms.
     * @return the place of the terminator */
    Char* end() { return data + length; }
    /** The text as a view.
     * @return the text, without the terminator */
    std::basic_string_view<Char> view() const { return {data, static_cast<std::size_t>(length)}; }

    /** Throws Error when a text does not fit.
     * @param count  its characters, without the terminator */
    void requireRoom(std::size_t count) const {
        if (count > static_cast<std::size_t>(capacity)) {
            throw Error(kResultTooLong,
                        {{KORV_TOKID_BUF_EXPECTED_LEN, static_cast<std::int32_t>(count)},
                         {KORV_TOKID_BUFFER_SIZE, capacity}});
        }
    }
    /** Replaces the end of the text. Throws Error when the result does not fit.
     * @param first  the first character that is replaced
     * @param tail   what replaces it and all that follow; may be a part of this text */
    void replaceFrom(std::int32_t first, std::basic_string_view<Char> tail) {
        requireRoom(static_cast<std::size_t>(first) + tail.size());
        std::char_traits<Char>::move(data + first, tail.data(), tail.size());
        length = first + static_cast<std::int32_t>(tail.size());
        data[length] = 0;
    }
};

/** A text of a batch.
 * @tparam Char  char or wchar_t */
template <class Char>
struct Item {
    Text<Char> text;     /**< the value, to be masked in place */
    Related related;     /**< the value of the other column */
    std::uint32_t place; /**< of the value in the batch */
    bool isLeft;         /**< set it to leave the value to mask, which then reports its error */
};

/** Whether a character of either width is a decimal digit.
 * @param c  the character
 * @return true for 0 to 9 */
constexpr bool isDigit(std::int32_t c) {
    return c >= '0' && c <= '9';
}
/** Whether a character of either width is an ASCII letter.
 * @param c  the character
 * @return true for A to Z and a to z */
constexpr bool isLetter(std::int32_t c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}
/** The capital letter of an ASCII letter.
 * @param c  the character
 * @return the capital letter; any other character as it is */
constexpr std::int32_t upperAscii(std::int32_t c) {
    return c >= 'a' && c <= 'z' ? c - ('a' - 'A') : c;
}
/** The small letter of an ASCII letter.
 * @param c  the character
 * @return the small letter; any other character as it is */
constexpr std::int32_t lowerAscii(std::int32_t c) {
    return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c;
}

/** Makes the letters of a value small, in place.
 * @param text  the value */
inline void lower(Text<char>& text) {
    for (char& c : text) c = static_cast<char>(lowerAscii(c));
}
/** Makes the letters of a value small, in place, as KORV_StrToWLower does.
 * @param text  the value */
inline void lower(Text<wchar_t>& text) {
    KORV_StrToWLower(text.data);
}
/** Makes the letters of a value capital, in place.
 * @param text  the value */
inline void upper(Text<char>& text) {
    for (char& c : text) c = static_cast<char>(upperAscii(c));
}
/** Makes the letters of a value capital, in place, as KORV_StrToWUpper does.
 * @param text  the value */
inline void upper(Text<wchar_t>& text) {
    KORV_StrToWUpper(text.data);
}

/** Whether the text of an operand is a given word, without regard to case.
 * @param text  the text
 * @param word  the word
 * @return true if it is; false for an empty text */
inline bool isWord(const std::wstring& text, const wchar_t* word) {
    return !text.empty() && StringWCaseCompare(text.c_str(), word) == 0;
}

/** Captures an error with its tokens in the chain of the request.
 *
 * @param call   the call that has failed
 * @param error  the error
 * @return the code of the error, or KORV_FAILURE when it could not be captured */
inline std::int32_t capture(const PrvCall& call, const Error& error) noexcept {
    const auto slots = static_cast<std::int16_t>(error.tokens.size() + 1);
    if (ErrorCapture(call.context, error.code, call.service->svcCode1, slots) != KORV_SUCCESS) {
        return KORV_FAILURE;
    }
    const FieldDefX* const field = call.block->fieldRefs.fieldDef;
    TokenCapture(call.context, field->wideText, KORV_TYPE_WVARCHAR_SZ, KORV_TOKID_COLNAME, 0);
    for (const Token& token : error.tokens) {
        if (const auto* number = std::get_if<std::int32_t>(&token.value)) {
            TokenCapture(call.context, number, KORV_TYPE_INTEGER, token.id, 0);
        } else if (const auto* text = std::get_if<std::wstring>(&token.value)) {
            TokenCapture(call.context, text->c_str(), KORV_TYPE_WVARCHAR_SZ, token.id, 0);
        }
    }
    return static_cast<std::int32_t>(error.code);
}

/** What KORV_PROVIDER is made of. */
namespace detail {

[[noreturn]] inline void failUnfitting(std::size_t length, std::int32_t capacity,
                                       std::size_t unit) {
    const std::size_t most = INT32_MAX / sizeof(wchar_t) - 1;
    const auto count = static_cast<std::int32_t>(length < most ? length : most);
    if (count > kLongestValue) {
        throw Error(kValueTooLong,
                    {{KORV_TOKID_SRCLEN, count}, {KORV_TOKID_EXPSRCLEN, kLongestValue}});
    }
    const auto bytes = static_cast<std::int32_t>((length + 1) * unit);
    throw Error(kValueTooLong,
                {{KORV_TOKID_BUF_EXPECTED_LEN, bytes}, {KORV_TOKID_BUFFER_SIZE, capacity}});
}

// Copies the call's value to its target and describes it in `text`. False for a NULL or empty
// value, for which the result is complete. Throws Error.
template <class Char>
bool takeValue(const PrvCall& call, Text<Char>& text) {
    using Traits = std::char_traits<Char>;
    const ValueRecord& value = *call.value;
    const bool isNull = value.nullIndicator == 1 || value.data == nullptr;
    const auto* const source = static_cast<const Char*>(value.data);
    const std::size_t length = isNull ? 0 : Traits::length(source);
    if (length == 0) {
        call.result->nullIndicator = 1;
        return false;
    }
    if (length > kLongestValue ||
        static_cast<std::int32_t>((length + 1) * sizeof(Char)) > value.capacity) {
        failUnfitting(length, value.capacity, sizeof(Char));
    }
    text = {static_cast<Char*>(value.target), static_cast<std::int32_t>(length),
            static_cast<std::int32_t>(value.capacity / sizeof(Char)) - 1, source};
    Traits::copy(text.data, source, length + 1);
    return true;
}

template <class Char>
void setResult(const PrvCall& call, const Text<Char>& text) {
    call.result->data = call.value->target;
    call.result->length = static_cast<std::int32_t>(text.length * sizeof(Char));
}

inline Related relatedOf(const PrvCall& call) {
    const ValueRecord* const other = call.related;
    if (other == nullptr || other->nullIndicator == 1 || other->data == nullptr) return {};
    return {static_cast<const char*>(other->data), static_cast<std::size_t>(other->length)};
}

// Optional members of a provider class.
template <class Provider, class = void>
inline constexpr bool kTakesRelated = false;
template <class Provider>
inline constexpr bool
    kTakesRelated<Provider, std::void_t<decltype(std::declval<Provider&>().mask(
                                std::declval<Text<char>&>(), std::declval<Related>()))>> = true;
template <class Provider, class = void>
inline constexpr bool kUnmasks = false;
template <class Provider>
inline constexpr bool
    kUnmasks<Provider,
             std::void_t<decltype(std::declval<Provider&>().unmask(std::declval<Text<char>&>()))>> =
        true;
template <class Provider, class = void>
inline constexpr bool kHasBatches = false;
template <class Provider>
inline constexpr bool
    kHasBatches<Provider, std::void_t<decltype(std::declval<const Provider&>().usesBatches())>> =
        true;
template <class Provider, class = void>
inline constexpr bool kHasPromises = false;
template <class Provider>
inline constexpr bool
    kHasPromises<Provider, std::void_t<decltype(std::declval<const Provider&>().promises())>> =
        true;
template <class Provider, class = void>
inline constexpr bool kHasSamples = false;
template <class Provider>
inline constexpr bool kHasSamples<Provider, std::void_t<decltype(Provider::kSampleRules)>> = true;

// The state of an opened rule: the provider's object, and memory for its batches.
template <class Provider>
struct State {
    explicit State(const PrvCall& call) : provider(Operands(call)) {}
    std::vector<Item<char>>& items(char) { return narrow; }
    std::vector<Item<wchar_t>>& items(wchar_t) { return wide; }

    Provider provider;
    std::vector<Item<char>> narrow;
    std::vector<Item<wchar_t>> wide;
};

struct Masking {
    template <class Provider, class Char>
    static void run(Provider& provider, Text<Char>& text, Related related) {
        if constexpr (kTakesRelated<Provider>) {
            provider.mask(text, related);
        } else {
            provider.mask(text);
        }
    }
};

struct Unmasking {
    template <class Provider, class Char>
    static void run(Provider& provider, Text<Char>& text, Related) {
        provider.unmask(text);
    }
};

/** For functions that programs for 32 bits may call with a stack that is aligned to 4 bytes. */
#ifdef __i386__
#define KORV_PROVIDER_CALL __attribute__((force_align_arg_pointer))
#else
#define KORV_PROVIDER_CALL
#endif

// The functions of a PrvEntry for a provider class.
template <class Provider>
struct Glue {
    KORV_PROVIDER_CALL static std::int32_t open(const PrvCall* call, void** state) noexcept {
        return guarded(*call, [&] { *state = new State<Provider>(*call); });
    }

    KORV_PROVIDER_CALL static void close(void* state) noexcept {
        delete static_cast<State<Provider>*>(state);
    }

    template <class Direction>
    KORV_PROVIDER_CALL static std::int32_t run(void* state, const PrvCall* call) noexcept {
        return guarded(*call, [&] { runValue<Direction>(stateOf(state).provider, *call); });
    }

    KORV_PROVIDER_CALL static std::int32_t maskBatch(void* state, const PrvCall* call,
                                                     std::uint32_t count,
                                                     std::int32_t* statuses) noexcept {
        State<Provider>& known = stateOf(state);
        if constexpr (kHasBatches<Provider>) {
            if (known.provider.usesBatches()) {
                try {
                    const bool isWide =
                        call->block->fieldRefs.fieldDef->dataType == KORV_TYPE_WVARCHAR_SZ;
                    isWide ? maskItems<wchar_t>(known, *call, count, statuses)
                           : maskItems<char>(known, *call, count, statuses);
                    return 0;
                } catch (...) {
                    return 1;
                }
            }
        }
        PrvCall one = *call;
        for (std::uint32_t i = 0; i < count; ++i, ++one.value, ++one.result) {
            try {
                runValue<Masking>(known.provider, one);
            } catch (...) {
                statuses[i] = 1;
            }
            if (one.related != nullptr) ++one.related;
        }
        return 0;
    }

    KORV_PROVIDER_CALL static std::uint32_t promises(const void* state) noexcept {
        if constexpr (kHasPromises<Provider>) {
            return static_cast<const State<Provider>*>(state)->provider.promises();
        } else {
            return 0;
        }
    }

    // The record without name and tables.
    static constexpr PrvEntry entry() {
        PrvEntry entry = {};
        entry.interfaceVersion = PRV_INTERFACE_VERSION;
        entry.open = open;
        entry.mask = run<Masking>;
        entry.close = close;
        entry.maskBatch = maskBatch;
        if constexpr (kUnmasks<Provider>) entry.unmask = run<Unmasking>;
        entry.promises = promises;
        if constexpr (kHasSamples<Provider>) {
            entry.sampleRules = Provider::kSampleRules;
            entry.sampleRuleCount = static_cast<std::uint32_t>(std::size(Provider::kSampleRules));
        }
        return entry;
    }

  private:
    static State<Provider>& stateOf(void* state) { return *static_cast<State<Provider>*>(state); }

    template <class Step>
    static std::int32_t guarded(const PrvCall& call, Step step) noexcept {
        try {
            try {
                step();
                return 0;
            } catch (const Error& error) {
                return capture(call, error);
            } catch (const std::bad_alloc&) {
                return capture(call, Error(kNoMemory, {}));
            } catch (...) {
                return capture(call, Error(kUnexpected, {}));
            }
        } catch (...) {  // no memory for the error itself
            return KORV_FAILURE;
        }
    }

    template <class Direction>
    static void runValue(Provider& provider, const PrvCall& call) {
        const std::int16_t type = call.block->fieldRefs.fieldDef->dataType;
        if (type == KORV_TYPE_VARCHAR_SZ) return runAs<Direction, char>(provider, call);
        if (type == KORV_TYPE_WVARCHAR_SZ) return runAs<Direction, wchar_t>(provider, call);
        throw Error(kNotText, {{KORV_TOKID_DATATYPE, type}});
    }

    template <class Direction, class Char>
    static void runAs(Provider& provider, const PrvCall& call) {
        Text<Char> text;
        if (!takeValue(call, text)) return;
        Direction::run(provider, text, relatedOf(call));
        setResult(call, text);
    }

    // Values that fail are left to mask.
    template <class Char>
    static void maskItems(State<Provider>& state, const PrvCall& call, std::uint32_t count,
                          std::int32_t* statuses) {
        std::vector<Item<Char>>& items = state.items(Char());
        items.clear();
        PrvCall one = call;
        for (std::uint32_t i = 0; i < count; ++i, ++one.value, ++one.result) {
            try {
                Text<Char> text;
                if (takeValue(one, text)) items.push_back({text, relatedOf(one), i, false});
            } catch (const Error&) {
                statuses[i] = 1;
            }
            if (one.related != nullptr) ++one.related;
        }
        state.provider.maskAll(items);
        for (const Item<Char>& item : items) {
            one.value = call.value + item.place;
            one.result = call.result + item.place;
            if (item.isLeft) {
                statuses[item.place] = 1;
            } else {
                setResult(one, item.text);
            }
        }
    }
};

#undef KORV_PROVIDER_CALL

}  // namespace detail
}  // namespace provider
}  // namespace korv

/** Defines the function that a module exports, for a provider class and its tables. It stands once
 * in a module, at namespace scope. A provider without operands or methods has an empty
 * `std::array` for them.
 *
 * @param providerName  the name in rules, in capitals
 * @param Class         the provider class
 * @param methodTable   array of PrvMethod
 * @param operandTable  array of PrvOperand
 * @param errorTable    array of PrvErrorText */
#define KORV_PROVIDER(providerName, Class, methodTable, operandTable, errorTable)              \
    extern "C" __attribute__((visibility("default"))) const PrvEntry* KorvProviderEntry(void); \
    extern "C" const PrvEntry* KorvProviderEntry(void) {                                       \
        static constexpr PrvEntry entry = [] {                                                 \
            PrvEntry made = ::korv::provider::detail::Glue<Class>::entry();                    \
            made.name = providerName;                                                          \
            made.methods = std::data(methodTable);                                             \
            made.methodCount = static_cast<std::uint32_t>(std::size(methodTable));             \
            made.operands = std::data(operandTable);                                           \
            made.operandCount = static_cast<std::uint32_t>(std::size(operandTable));           \
            made.errors = std::data(errorTable);                                               \
            made.errorCount = static_cast<std::uint32_t>(std::size(errorTable));               \
            return made;                                                                       \
        }();                                                                                   \
        return &entry;                                                                         \
    }

#endif
