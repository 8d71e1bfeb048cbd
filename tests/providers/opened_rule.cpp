// The records of a request as an engine builds them, and the checks that it makes of results.
#include "opened_rule.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <list>
#include <string_view>

#include "text/utf8_text.h"

namespace {

constexpr size_t kSpareCharacters = 2048;
constexpr size_t kGuardBytes = 64;
constexpr char kGuard = 0x5C;
// The key of every rule with a secret. An engine would derive one for each provider and method.
constexpr uint8_t kKey[32] = {3, 1, 4, 1, 5, 9, 2, 6, 5, 3, 5, 8, 9, 7, 9, 3,
                              2, 3, 8, 4, 6, 2, 6, 4, 3, 3, 8, 3, 2, 7, 9, 5};

// The elements between commas, without quotes.
std::vector<std::string> elementsOf(const std::string& text) {
    std::vector<std::string> elements = {""};
    bool quoted = false;
    for (size_t i = 0; i < text.size(); ++i) {
        if (quoted && text[i] == '\\') {
            elements.back() += text[++i];
        } else if (text[i] == '"') {
            quoted = !quoted;
        } else if (!quoted && text[i] == ',') {
            elements.emplace_back();
        } else if (quoted || text[i] != ' ' || !elements.back().empty()) {
            elements.back() += text[i];
        }
    }
    return elements;
}

const PrvOperand& describe(const PrvEntry& entry, const std::string& key) {
    for (uint32_t i = 0; i < entry.operandCount; ++i) {
        if (key == entry.operands[i].key) return entry.operands[i];
    }
    ADD_FAILURE() << entry.name << " has no operand " << key;
    return entry.operands[0];
}

// The method that the rule names, or with a secret the first keyed one. NULL without any.
const PrvMethod* methodOf(const PrvEntry& entry, const RuleText& rule) {
    for (uint32_t i = 0; i < entry.methodCount; ++i) {
        const PrvMethod& method = entry.methods[i];
        const bool isKeyed = (method.flags & PRV_METHOD_KEYED) != 0;
        if (rule.method.empty() ? isKeyed && rule.hasSecret : rule.method == method.name) {
            EXPECT_EQ(isKeyed, rule.hasSecret) << entry.name << ", method " << method.name;
            return &method;
        }
    }
    EXPECT_EQ(0u, entry.methodCount) << entry.name << " needs a method: '" << rule.method << "'";
    return nullptr;
}

// An operand record with the texts that CopyParamsStruct makes.
struct Operand : OprDefI {
    Operand(const PrvOperand& description, const std::string& value) : OprDefI{} {
        const std::wstring wide = text::toWide(value);
        TextDesc text = {};
        ParamDesc param = {};
        param.oprCode = description.code;
        param.valueKind = description.kind;
        if (value.empty() && (description.flags & PRV_OPERAND_OPTIONAL_VALUE) != 0) {
            param.valueKind = OPR_VALUE_NONE;
        }
        switch (param.valueKind) {
            case OPR_VALUE_INTEGER:
                param.value.number = static_cast<uint32_t>(std::stoi(value));
                break;
            case OPR_VALUE_WIDE:
                text.head.wideText = wide.c_str();
                param.valueLen = static_cast<int32_t>(wide.size() * sizeof(wchar_t));
                param.value.text = &text;
                break;
            case OPR_VALUE_NARROW:
                text.codePage = KORV_CODEPAGE_NOT_GIVEN;
                text.narrowText = value.c_str();
                param.valueLen = static_cast<int32_t>(value.size());
                param.value.text = &text;
                break;
            default:
                break;
        }
        EXPECT_EQ(0, CopyParamsStruct(&param, this, text::kUtf8CodePage, 0));
    }
    ~Operand() {
        std::free(wideValue);
        std::free(narrowValue);
    }
};

template <class Record>
Record* zeroed() {
    return static_cast<Record*>(std::calloc(1, sizeof(Record)));
}

}  // namespace

RuleText::RuleText(const std::string& text, const std::string& filesFolder) : folder(filesFolder) {
    const std::vector<std::string> elements = elementsOf(text);
    provider = elements[0];
    for (size_t i = 1; i < elements.size(); ++i) {
        const size_t separator = elements[i].find('=');
        Operand operand = {elements[i].substr(0, separator), ""};
        for (char& c : operand.key) c = static_cast<char>(toportwupper(c));
        if (separator != std::string::npos) operand.value = elements[i].substr(separator + 1);
        if (operand.key == "TYPE") {
            wideOnly = operand.value == "wide";
        } else if (operand.key == "METHOD") {
            for (const char c : operand.value) method += static_cast<char>(toportwlower(c));
        } else if (operand.key == "SECRET") {
            hasSecret = true;
        } else {
            operands.push_back(operand);
        }
    }
}

struct OpenedRule::Records {
    FieldDefI fields[2] = {};
    CtrlBlkI block = {};
    SvcDefI service = {};
    std::list<Operand> operands;  // addresses stay
    CtrlBlkX* blocks[2] = {};
    SvcDefX* services[2] = {};
    const PrvMethod* method;

    Records(const PrvEntry& entry, const RuleText& rule) : method(methodOf(entry, rule)) {
        const TextDesc name = {{nullptr}, KORV_CODEPAGE_NOT_GIVEN, "Col"};
        FieldDesc description = {};
        description.textMode = KORV_TEXT_NARROW;
        description.text = &name;
        description.textLen = 3;
        for (const Form form : {narrow, wide}) {
            description.dataType = form == narrow ? VARCHAR_SZ : WVARCHAR_SZ;
            EXPECT_EQ(0, CopyFieldStruct(&description, &fields[form], text::kUtf8CodePage, 0));
        }
        fields[narrow].link = &fields[wide];
        block.blkCode = 1;
        block.fieldDefs = fields;
        service.svcCode1 = static_cast<uint8_t>(GetProviderID(entry.name));
        for (const auto& [key, value] : rule.operands) {
            const PrvOperand& operand = describe(entry, key);
            const bool relative = (operand.flags & PRV_OPERAND_PATH) != 0 && value[0] != '/';
            OprDefI* const last = operands.empty() ? nullptr : &operands.back();
            operands.emplace_back(operand, relative ? rule.folder + "/" + value : value);
            (last == nullptr ? service.oprDefs : last->link) = &operands.back();
        }
        for (const Form form : {narrow, wide}) {
            select(form);
            blocks[form] = zeroed<CtrlBlkX>();
            services[form] = zeroed<SvcDefX>();
            EXPECT_EQ(0, KORVCnvCtrlBlkFromIToX(&block, blocks[form]));
            EXPECT_EQ(0, KORVCnvSvcDefFromIToX(blocks[form], &service, services[form]));
        }
        block.errorAnchor = zeroed<ErrorAnchor>();
    }

    ~Records() {
        TermErrors(block.errorAnchor);
        for (const Form form : {narrow, wide}) {
            CleanSvcDefX(services[form]);
            CleanCtrlBlkX(blocks[form]);
            std::free(fields[form].wideText);
            std::free(fields[form].narrowText);
        }
    }

    void select(Form form) {
        block.fieldRefs.fieldPos = form;
        block.fieldRefs.fieldDef = &fields[form];
    }

    PrvCall call(Form form, ValueRecord* value, ValueRecord* result) {
        select(form);
        PrvCall call = {};
        call.context = &block;
        call.block = blocks[form];
        call.service = services[form];
        call.value = value;
        call.result = result;
        if (method == nullptr) return call;
        call.method = method->name;
        if ((method->flags & PRV_METHOD_KEYED) != 0) {
            call.key = kKey;
            call.keyLength = sizeof kKey;
        }
        return call;
    }
};

// A value and its target, in memory that the address sanitizer sees the ends of.
struct OpenedRule::Buffers {
    Buffers(Form form, const std::string& text) : wide_(form == wide) {
        if (wide_) {
            const std::wstring characters = text::toWide(text);
            const auto* bytes = reinterpret_cast<const char*>(characters.c_str());
            source_.assign(bytes, bytes + (characters.size() + 1) * sizeof(wchar_t));
        } else {
            source_.assign(text.c_str(), text.c_str() + text.size() + 1);
        }
        original_ = source_;
        const size_t capacity = source_.size() + kSpareCharacters * unit();
        target_.assign(capacity + kGuardBytes, kGuard);
        value.capacity = static_cast<int32_t>(capacity);
        value.target = target_.data();
        value.data = source_.data();
        if (text.empty()) {
            value.data = nullptr;
            value.nullIndicator = 1;
        }
        result.length = -1;
    }

    // The result as UTF-8, checked as an engine does.
    std::string text() const {
        EXPECT_EQ(original_, source_) << "the provider wrote to its source";
        const char* guard = target_.data() + value.capacity;
        EXPECT_TRUE(std::all_of(guard, guard + kGuardBytes, [](char c) { return c == kGuard; }));
        if (result.nullIndicator == 1) return "NULL";
        EXPECT_TRUE(result.data == nullptr || result.data == value.target);
        const bool fits = result.length >= 0 && result.length <= value.capacity &&
                          static_cast<size_t>(result.length) % unit() == 0;
        EXPECT_TRUE(fits) << result.length;
        if (!fits) return "bad length";
        const auto bytes = static_cast<size_t>(result.length);
        if (!wide_) return std::string(target_.data(), bytes);
        std::wstring characters(bytes / sizeof(wchar_t), L'\0');
        std::memcpy(characters.data(), target_.data(), bytes);
        return text::toUtf8(characters);
    }

    ValueRecord value = {};
    ValueRecord result = {};

  private:
    size_t unit() const { return wide_ ? sizeof(wchar_t) : 1; }

    bool wide_;
    std::vector<char> source_;
    std::vector<char> original_;
    std::vector<char> target_;
};

OpenedRule::OpenedRule(const PrvEntry& entry, const RuleText& rule)
    : entry_(entry), records_(std::make_unique<Records>(entry, rule)) {
    const PrvCall call = records_->call(narrow, nullptr, nullptr);
    const int32_t status = entry_.open(&call, &state_);
    error_ = takeErrors();
    EXPECT_EQ(status == 0, error_.empty());
}

OpenedRule::~OpenedRule() {
    if (error_.empty()) entry_.close(state_);
}

std::string OpenedRule::takeErrors() {
    std::string errors;
    ErrorAnchor*& anchor = records_->block.errorAnchor;
    for (const ErrorRecord* record = anchor->head; record != nullptr; record = record->next) {
        EXPECT_EQ(records_->service.svcCode1, record->secondCode);
        errors += (errors.empty() ? "" : ", ") + std::to_string(record->firstCode);
        for (int i = 0; i < record->tokenSlotCount; ++i) {
            const TokenSlot& slot = record->tokenSlots[i];
            const std::string name = text::toUtf8(gTokenIds[slot.tokenId]).substr(11);
            const std::string value = slot.text == nullptr ? "?" : text::toUtf8(slot.text);
            if (i == 0) {
                EXPECT_EQ("COLNAME=Col", name + "=" + value);
            } else {
                errors += " " + name + "=" + value;
            }
        }
    }
    TermErrors(anchor);
    anchor = zeroed<ErrorAnchor>();
    return errors;
}

Outcome OpenedRule::mask(Form form, const std::string& value) {
    return run(entry_.mask, form, value);
}

Outcome OpenedRule::unmask(Form form, const std::string& masked) {
    return run(entry_.unmask, form, masked);
}

Outcome OpenedRule::run(int32_t (*function)(void*, const PrvCall*), Form form,
                        const std::string& value) {
    Buffers buffers(form, value);
    const PrvCall call = records_->call(form, &buffers.value, &buffers.result);
    const int32_t status = function(state_, &call);
    const std::string errors = takeErrors();
    EXPECT_EQ(status == 0, errors.empty());
    return errors.empty() ? buffers.text() : "error " + errors;
}

std::vector<Outcome> OpenedRule::maskBatch(Form form, const std::vector<std::string>& texts) {
    std::list<Buffers> buffers;
    std::vector<ValueRecord> values;
    std::vector<ValueRecord> results;
    for (const std::string& text : texts) {
        buffers.emplace_back(form, text);
        values.push_back(buffers.back().value);
        results.push_back(buffers.back().result);
    }
    std::vector<int32_t> statuses(texts.size());
    const PrvCall call = records_->call(form, values.data(), results.data());
    const auto count = static_cast<uint32_t>(texts.size());
    EXPECT_EQ(0, entry_.maskBatch(state_, &call, count, statuses.data()));
    EXPECT_EQ("", takeErrors()) << "maskBatch captures no errors";

    std::vector<Outcome> outcomes;
    for (Buffers& one : buffers) {
        const size_t i = outcomes.size();
        one.value = values[i];
        one.result = results[i];
        outcomes.push_back(statuses[i] == 0 ? one.text() : "error");
    }
    return outcomes;
}
