// Opening rules by the engine's own parts, and calling the provider with buffers whose every byte
// is watched.
#include "session.h"

#include <dlfcn.h>
#include <locale.h>

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <stdexcept>

#include "mask/mask_error.h"
#include "mask/method.h"
#include "mask/provider_tables.h"
#include "mask/secrets/keys.h"
#include "mask/text/utf8_text.h"
#include "watched_heap.h"

namespace kit {

namespace {

// Room for the longest values that are tried, as wide text.
constexpr size_t kRoom = 3 << 20;
// Watched bytes before and after the source and the target.
constexpr size_t kGuard = 64;
constexpr size_t kSpare = 1024;
constexpr int32_t kNotSet = INT32_MIN;
constexpr size_t kMostErrors = 1000;
constexpr int16_t kMostTokens = 100;
constexpr size_t kLongestToken = 100000;

constexpr uint8_t kTestSecret[32] = {
    0x6B, 0x21, 0x9C, 0xE4, 0x57, 0x0D, 0xB8, 0x3A, 0xF1, 0x46, 0x72, 0xAD, 0x1E, 0xC9, 0x85, 0x30,
    0xDB, 0x64, 0x0F, 0x93, 0x2C, 0xE7, 0x58, 0xBA, 0x41, 0x9D, 0x36, 0xF2, 0x7B, 0x08, 0xC5, 0x6E,
};

size_t unitOf(bool wide) {
    return wide ? sizeof(wchar_t) : sizeof(char);
}

bool isScalar(wchar_t c) {
    const auto scalar = static_cast<uint32_t>(c);
    return scalar != 0 && scalar < 0x110000 && (scalar < 0xD800 || scalar > 0xDFFF);
}

bool isFilled(const char* begin, const char* end, unsigned char fill) {
    return std::all_of(begin, end,
                       [fill](char c) { return static_cast<unsigned char>(c) == fill; });
}

SeenError seen(const ErrorRecord& record) {
    SeenError error = {record.firstCode, record.tokenSlotCount, {}};
    const int16_t count = std::min(record.tokenSlotCount, kMostTokens);
    for (int16_t i = 0; i < count; ++i) {
        const TokenSlot& slot = record.tokenSlots[i];
        SeenToken& token = error.tokens.emplace_back();
        token.id = slot.tokenId;
        token.hasText = slot.text != nullptr;
        if (token.hasText) token.text.assign(slot.text, ::wcsnlen(slot.text, kLongestToken));
    }
    return error;
}

bool isDeclared(const PrvEntry& entry, uint32_t code) {
    return std::any_of(entry.errors, entry.errors + entry.errorCount,
                       [code](const PrvErrorText& text) { return text.code == code; });
}

}  // namespace

std::unique_ptr<void, mask::CloseModule> loadModule(const std::string& path) {
    std::unique_ptr<void, mask::CloseModule> handle(::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (handle == nullptr) throw std::runtime_error(::dlerror());
    return handle;
}

PrvEntryFunction findEntry(void* handle) {
    return reinterpret_cast<PrvEntryFunction>(::dlsym(handle, PRV_ENTRY_SYMBOL));
}

bool Outcome::equals(const Outcome& other) const {
    const auto codes = [](const SeenError& a, const SeenError& b) {
        return a.firstCode == b.firstCode;
    };
    return isMasked() == other.isMasked() && isNull == other.isNull && text == other.text &&
           std::equal(errors.begin(), errors.end(), other.errors.begin(), other.errors.end(),
                      codes);
}

std::string recordsFault(const PrvEntry& entry, int32_t status,
                         const std::vector<SeenError>& errors) {
    if (status == 0) return errors.empty() ? "" : "returned 0 and captured an error";
    if (errors.empty()) return "returned " + std::to_string(status) + " and captured no error";
    for (const SeenError& error : errors) {
        const std::string name = "captured error " + std::to_string(error.firstCode);
        if (!isDeclared(entry, error.firstCode)) return name + ", which its table does not have";
    }
    return {};
}

bool isText(std::string_view text) {
    return text::validUtf8Length(text.data(), text.size()) == text.size() &&
           text.find('\0') == std::string_view::npos;
}

EngineLocale::EngineLocale() : locale_(::newlocale(LC_ALL_MASK, "C.UTF-8", nullptr)) {
    if (locale_ == nullptr) throw std::runtime_error("there is no locale C.UTF-8");
    before_ = ::uselocale(locale_);
}

EngineLocale::~EngineLocale() {
    ::uselocale(before_);
    ::freelocale(locale_);
}

std::string reasonNotToRun(const Settings& settings) {
    mask::Rules rules = mask::parseOneRule(settings.rule, "rule");
    const bool isKeyed = mask::takeOperand(rules.rules.front(), "SECRET").has_value();
    return isKeyed && !secrets::hasCryptography() ? "the helper is built without libcrypto, which "
                                                    "rules with a secret need"
                                                  : "";
}

Session::Session(const mask::ProviderModule& module, const Settings& settings)
    : module_(module),
      rules_(mask::parseOneRule(settings.rule, "rule")),
      source_(kRoom),
      target_(kRoom) {
    if (!settings.files.empty()) rules_.folder = settings.files + "/";
    rule_ = rules_.rules.front();
    if (mask::moduleName(rule_.action) != module.name) {
        rules_.fail(rule_, rule_.actionPosition, "the module has the provider " + module.name);
    }
    secrets::Secrets secrets;
    for (const mask::RuleOperand& operand : rule_.operands) {
        if (operand.key == "SECRET") secrets.add(operand.value, kTestSecret);
    }
    mask::Rule providers = rule_;
    const mask::MethodChoice choice =
        mask::chooseMethod(rules_, providers, module, secrets, false, keys_);
    const mask::RuleOperand* const related = mask::relatedColumn(providers, *module.entry);
    hasRelated_ = related != nullptr;
    rule_ = providers;
    const heap::Inside inside;
    request_ = std::make_unique<mask::Request>(rules_, rule_, module, choice, "COLUMN",
                                               hasRelated_ ? &related->value : nullptr);
}

uint32_t Session::promises() const {
    if (!module_.isVersion2() || entry().promises == nullptr) return 0;
    return entry().promises(state());
}

const Outcome& Session::mask(std::string_view text, const How& how) {
    const bool plain = text::isPlainAscii(text.data(), text.size());
    const bool wide = how.form == Form::automatic ? !plain : how.form == Form::wide;
    outcome_.threw = outcome_.isNull = outcome_.isSet = false;
    outcome_.resultBytes = 0;
    outcome_.text.clear();
    outcome_.fault.clear();
    outcome_.errors.clear();
    outcome_.messages.clear();
    fill(how, text, wide);
    call(how, wide);

    const char* const sourceEnd = sourceBegin_ + sourceBytes_;
    const size_t unit = unitOf(wide);
    const void* const expected = wide ? static_cast<const void*>(wideText_.c_str()) : text.data();
    outcome_.sourceIsIntact = std::memcmp(sourceBegin_, expected, sourceBytes_ - unit) == 0 &&
                              isFilled(sourceEnd - unit, sourceEnd, 0);
    char* const targetEnd = targetBegin_ + capacity_;
    outcome_.surroundingsAreIntact =
        isFilled(targetBegin_ - kGuard, targetBegin_, how.fill) &&
        isFilled(targetEnd, how.isFenced ? targetEnd : targetEnd + kGuard, how.fill);
    if (request_->hasErrors()) takeErrors(outcome_.errors, outcome_.messages);
    if (outcome_.status == 0 && !outcome_.threw) readResult(wide);
    return outcome_;
}

// Lays out source and target. Without a fence they are aligned as the engine aligns them.
void Session::fill(const How& how, std::string_view text, bool wide) {
    constexpr size_t kAlignment = 16;
    const auto place = [&](const FencedMemory& memory, size_t bytes) {
        if (bytes + 2 * kGuard + kAlignment > memory.size()) throw std::bad_alloc();
        char* at = memory.end() - bytes;
        if (how.isFenced) return at;
        at -= kGuard;
        return at - reinterpret_cast<uintptr_t>(at) % kAlignment;
    };
    const size_t unit = unitOf(wide);
    size_t characters = text.size();
    if (wide) {
        wideText_ = text::toWide(text);
        characters = wideText_.size();
    }
    sourceBytes_ = (characters + 1) * unit;
    sourceBegin_ = place(source_, sourceBytes_);
    const void* const from = wide ? static_cast<const void*>(wideText_.c_str()) : text.data();
    std::memcpy(sourceBegin_, from, sourceBytes_ - unit);
    std::memset(sourceBegin_ + sourceBytes_ - unit, 0, unit);
    if (!how.isFenced) std::memset(sourceBegin_ + sourceBytes_, how.fill, kGuard);

    // The engine counts the bytes of the UTF-8 text.
    capacity_ = how.capacity.value_or((text.size() + kSpare) * unit);
    targetBegin_ = place(target_, capacity_);
    std::memset(targetBegin_ - kGuard, how.fill, kGuard + capacity_);
    if (!how.isFenced) std::memset(targetBegin_ + capacity_, how.fill, kGuard);

    value_ = {};
    value_.nullIndicator = how.isNull ? 1 : 0;
    value_.data = how.isNull ? nullptr : sourceBegin_;
    value_.target = targetBegin_;
    value_.capacity = static_cast<int32_t>(capacity_);
    result_ = {};
    result_.length = kNotSet;
}

void Session::call(const How& how, bool wide) {
    PrvCall call = request_->call(wide);
    call.value = &value_;
    call.result = &result_;
    ValueRecord related = {};
    if (hasRelated_) {
        related.nullIndicator = how.related == nullptr ? 1 : 0;
        related.data = const_cast<char*>(how.related);
        related.length = how.related == nullptr ? 0 : static_cast<int32_t>(strlen(how.related));
        call.related = &related;
    }
    const MaskFunction function = how.unmask ? entry().unmask : entry().mask;
    try {
        const heap::Inside inside;
        outcome_.status = invoke ? invoke(function, state(), &call) : function(state(), &call);
    } catch (...) {
        outcome_.status = KORV_FAILURE;
        outcome_.threw = true;
    }
}

void Session::takeErrors(std::vector<SeenError>& errors, std::vector<std::string>& messages) {
    for (const ErrorRecord& record : korv::errors(*request_->call(false).context->errorAnchor)) {
        if (errors.size() == kMostErrors) break;
        errors.push_back(seen(record));
    }
    for (mask::CapturedError& error : request_->takeErrors({})) {
        messages.push_back(std::move(error.message));
    }
}

void Session::readResult(bool wide) {
    Outcome& out = outcome_;
    out.isNull = result_.nullIndicator == 1;
    out.isSet = out.isNull || result_.length != kNotSet;
    if (out.isNull) return;
    const int32_t length = result_.length;
    if (!out.isSet) {
        out.fault = "no result";
    } else if (result_.data != nullptr && result_.data != targetBegin_) {
        out.fault = "a result in another buffer than the target";
    } else if (length < 0 || static_cast<size_t>(length) > capacity_) {
        out.fault = "a length of " + std::to_string(length) + " for a capacity of " +
                    std::to_string(capacity_);
    } else if (static_cast<size_t>(length) % unitOf(wide) != 0) {
        out.fault = "a length of " + std::to_string(length) +
                    " bytes, which is not a whole number of wide characters";
    }
    if (!out.fault.empty()) return;
    out.resultBytes = static_cast<uint32_t>(length);
    if (!wide) {
        out.text.assign(targetBegin_, out.resultBytes);
        if (!isText(out.text)) out.fault = "text that is not UTF-8 or holds a zero byte";
        return;
    }
    std::wstring result(out.resultBytes / sizeof(wchar_t), L'\0');
    std::memcpy(result.data(), targetBegin_, out.resultBytes);
    if (!std::all_of(result.begin(), result.end(), isScalar)) {
        out.fault = "wide text with a zero, a surrogate or a number above U+10FFFF";
        return;
    }
    out.text = text::toUtf8(result);
}

}  // namespace kit
