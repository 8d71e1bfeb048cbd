// Level 6: errors, and what they must not tell.
#include <algorithm>
#include <string_view>

#include "checks.h"
#include "mask/text/utf8_text.h"

namespace kit {

namespace {

constexpr uint32_t kKeyBytes = 32;
// A value this short is also a part of lengths, positions and names.
constexpr size_t kShortestSearched = 5;

void errorCaptured(const Context& context) {
    forEachOutcome(
        context, {},
        [](Trial& trial, const TestValue& value, const How& how, const Outcome& outcome) {
            if (outcome.status != 0 && outcome.errors.empty()) {
                trial.findings.add("mask returns " + std::to_string(outcome.status) +
                                   " and captures no error, " + with(value, how));
            }
        });
}

void declaredCodes(const Context& context) {
    forEachOutcome(
        context, {},
        [](Trial& trial, const TestValue& value, const How& how, const Outcome& outcome) {
            if (outcome.status == 0 || outcome.errors.empty()) return;
            const std::string fault =
                recordsFault(trial.session.entry(), outcome.status, outcome.errors);
            if (!fault.empty()) trial.findings.add("mask " + fault + ", " + with(value, how));
        });
}

std::string tokenFault(const SeenError& error) {
    if (error.slotCount < 0) return "an error with a negative number of token slots";
    for (const SeenToken& token : error.tokens) {
        if (token.id == KORV_TOKID_UNUSED) continue;
        if (token.id >= KORV_TOKID_COUNT) {
            return "a token with the unknown identifier " + std::to_string(token.id);
        }
        if (!token.hasText) return "a token without a text";
        if (token.text.find(L"<NULL>") != std::wstring::npos) return "a token of a NULL text";
    }
    return {};
}

void validTokens(const Context& context) {
    forEachOutcome(
        context, {},
        [](Trial& trial, const TestValue& value, const How& how, const Outcome& outcome) {
            for (const SeenError& error : outcome.errors) {
                const std::string fault = tokenFault(error);
                if (!fault.empty())
                    trial.findings.add("mask captures " + fault + ", " + with(value, how));
            }
        });
}

// Text in which a value is searched without regard to the case of ASCII letters.
template <class Text>
Text folded(Text text) {
    for (auto& c : text) {
        if (c >= 'A' && c <= 'Z') c += 'a' - 'A';
    }
    return text;
}

bool holds(const Outcome& outcome, const std::string& text) {
    const std::string narrow = folded(text);
    const std::wstring wide = folded(text::toWide(text));
    // UTF-8 that was captured as if each byte were a character.
    std::wstring bytes;
    for (const char c : narrow) bytes += static_cast<wchar_t>(static_cast<unsigned char>(c));
    for (const SeenError& error : outcome.errors) {
        for (const SeenToken& token : error.tokens) {
            const std::wstring found = folded(token.text);
            if (found.find(wide) != std::wstring::npos) return true;
            if (found.find(bytes) != std::wstring::npos) return true;
        }
    }
    return std::any_of(outcome.messages.begin(), outcome.messages.end(), [&](const auto& message) {
        return folded(message).find(narrow) != std::string::npos;
    });
}

void noClearValue(const Context& context) {
    std::string before;
    forEachOutcome(
        context, {},
        [&before](Trial& trial, const TestValue& value, const How& how, const Outcome& outcome) {
            const bool isSearched = value.text.size() >= kShortestSearched &&
                                    value.text.find_first_not_of(" -\t\r\n") != std::string::npos;
            if (isSearched && holds(outcome, value.text)) {
                trial.findings.add("an error holds the value, " + with(value, how));
            }
            if (!before.empty() && before != value.text && holds(outcome, before)) {
                trial.findings.add("an error holds the value before, " + with(value, how));
            }
            before = isSearched ? value.text : "";
        });
}

void noSecret(const Context& context) {
    Trial trial(context);
    const uint8_t* const key = trial.session.key();
    if (key == nullptr) return note("the rule has no secret");
    // The key as hexadecimal digits and as bytes. A part of it is enough to tell.
    constexpr uint32_t kPart = 4;
    std::vector<std::string> parts;
    for (uint32_t at = 0; at + kPart <= kKeyBytes; at += kPart) {
        std::string digits, bytes;
        for (uint32_t i = at; i < at + kPart; ++i) {
            constexpr char kDigits[] = "0123456789abcdef";
            digits += {kDigits[key[i] / 16], kDigits[key[i] % 16]};
            bytes += text::toUtf8(std::wstring(1, static_cast<wchar_t>(key[i])));
        }
        parts.push_back(digits);
        if (key[at] != 0 && bytes.find('\0') == std::string::npos) parts.push_back(bytes);
    }
    for (const TestValue& value : trial.corpus) {
        for (const Form form : {Form::automatic, Form::wide}) {
            How how;
            how.form = form;
            const Outcome& outcome = trial.mask(value, how);
            for (const std::string& part : parts) {
                if (holds(outcome, part)) {
                    trial.findings.add("an error holds a part of the key, " + with(value, how));
                }
                // Eight digits of a result are a part of the key by chance only once in 10^6 runs.
                if (folded(outcome.text).find(part) != std::string::npos) {
                    trial.findings.add("a result holds a part of the key, " + with(value, how));
                }
            }
        }
    }
}

void successWithoutError(const Context& context) {
    forEachOutcome(
        context, {},
        [](Trial& trial, const TestValue& value, const How& how, const Outcome& outcome) {
            if (outcome.status == 0 && !outcome.errors.empty()) {
                trial.findings.add("mask returns 0 and captures an error, " + with(value, how));
            }
        });
}

void chainKept(const Context& context) {
    constexpr uint32_t kEarlier = 4242;
    Trial trial(context);
    for (const TestValue& value : trial.corpus) {
        const CtrlBlkI* const block = trial.session.request().call(false).context;
        if (ErrorCapture(block, kEarlier, 0, 1) != KORV_SUCCESS ||
            TokenCapture(block, L"earlier", WVARCHAR_SZ, KORV_TOKID_COLNAME, 0) != KORV_SUCCESS) {
            return notRun("out of memory");
        }
        const Outcome& outcome = trial.mask(value);
        const bool isKept = !outcome.errors.empty() &&
                            outcome.errors.front().firstCode == kEarlier &&
                            outcome.errors.front().tokens.size() == 1 &&
                            outcome.errors.front().tokens.front().text == L"earlier";
        if (!isKept) {
            trial.findings.add("mask removes or changes an earlier error, " + with(value));
        }
        if (outcome.status == 0 && outcome.errors.size() > 1) {
            trial.findings.add("mask returns 0 and captures an error, " + with(value));
        }
    }
}

// What the module prints is seen by korv-provider.
void silentMasking(const Context& context) {
    forEachOutcome(context, {}, [](Trial&, const TestValue&, const How&, const Outcome&) {});
}

}  // namespace

std::vector<NamedTest> errorTests() {
    return {{"error-captured", errorCaptured}, {"declared-codes", declaredCodes},
            {"valid-tokens", validTokens},     {"no-clear-value", noClearValue},
            {"no-secret", noSecret},           {"success-without-error", successWithoutError},
            {"chain-kept", chainKept},         {"silent-masking", silentMasking}};
}

}  // namespace kit
