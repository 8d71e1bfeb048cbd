// What all providers have in common: their records, promises, sample rules, and what becomes of
// values and exceptions that no provider expects.
#include <new>
#include <set>
#include <stdexcept>

#include "masked_value.h"
#include "providers/provider_support.h"

namespace {

using ProviderEntryTest = MaskedValueTest;

constexpr const char* kProviders[] = {"CCN", "NID", "EML", "AFF", "HASH", "AGE", "LKP"};

TEST_F(ProviderEntryTest, DescribesTheProvider) {
    for (const char* name : kProviders) {
        const PrvEntry& entry = loadProvider(name);
        EXPECT_EQ(2u, entry.interfaceVersion);
        EXPECT_STREQ(name, entry.name);
        EXPECT_TRUE(entry.open && entry.mask && entry.close && entry.maskBatch && entry.promises);
        EXPECT_FALSE(entry.unmask) << name;
        std::set<std::string> keys;
        std::set<int> codes;
        for (uint32_t i = 0; i < entry.operandCount; ++i) {
            EXPECT_TRUE(keys.insert(entry.operands[i].key).second) << name;
            EXPECT_TRUE(codes.insert(entry.operands[i].code).second) << name;
            EXPECT_LE(entry.operands[i].minimum, entry.operands[i].maximum) << name;
        }
        std::set<uint32_t> errors;
        for (uint32_t i = 0; i < entry.errorCount; ++i) {
            EXPECT_TRUE(errors.insert(entry.errors[i].code).second) << name;
            EXPECT_LT(entry.errors[i].code, static_cast<uint32_t>(PRV_FIRST_ENGINE_CODE));
            const std::string text = entry.errors[i].text;
            EXPECT_TRUE(!text.empty() && text.back() != '.') << text;
        }
        for (uint32_t code = 100; code <= 106; ++code) EXPECT_TRUE(errors.contains(code)) << name;
        EXPECT_EQ(*errors.begin(), 1u) << name;
    }
}

TEST_F(ProviderEntryTest, SampleRulesCanBeOpened) {
    for (const char* name : kProviders) {
        const PrvEntry& entry = loadProvider(name);
        const bool needsFile = std::string(name) == "LKP";
        EXPECT_EQ(needsFile, entry.sampleRuleCount == 0) << name;
        for (uint32_t i = 0; i < entry.sampleRuleCount; ++i) {
            EXPECT_EQ(name, RuleText(entry.sampleRules[i], folder_).provider);
            EXPECT_EQ("accepted", ruleError(entry.sampleRules[i])) << entry.sampleRules[i];
        }
    }
}

TEST_F(ProviderEntryTest, PromisesWhatIsTrueForEveryValue) {
    writeFile("list.txt", "a = b\n");
    const uint32_t oneToOne = PRV_PROMISE_ONE_TO_ONE;
    const uint32_t length = PRV_PROMISE_LENGTH_KEPT;
    const uint32_t format = PRV_PROMISE_FORMAT_KEPT;
    const struct {
        const char* rule;
        uint32_t promises;
    } cases[] = {
        {"CCN, key=17", length + format},
        {"CCN, key=17, strict", length + format},
        {"NID, key=29", length + format},
        {"EML, key=4711, prefix=1", length + format},
        {"EML, key=4711, domain=masked.example", 0},
        {"AFF", oneToOne + length + format},
        {"AFF, method=reverse", oneToOne + length + format},
        {"AFF, method=number", length},
        {"AGE, days=1", oneToOne + length},
        {"AGE, days=1, months=1", length},
        {"AGE, years=1", length},
        {"AGE, days=1, format=DD.MM.YYYY|YYYY-MM-DD", length},
        {"AGE, days=1, format=DD MON YYYY", length},
        {"AGE, days=1, format=DD MONTH YYYY", 0},
        {"AGE, days=1, format=M/DD/YYYY", 0},
        {"AGE, days=1, format=YYYY-MM-DD|MM/D/YYYY", 0},
        {"LKP, file=list.txt", 0},
        {"HASH, seed=autumn, list=a;b", 0},
    };
    for (const auto& c : cases) {
        rule(c.rule);
        EXPECT_EQ(c.promises, rule_->promises()) << c.rule;
    }
}

// Why AFF does not promise more for numbers, and CCN not for strict ones.
TEST_F(ProviderEntryTest, DoesNotPromiseWhatHasExceptions) {
    rule("AFF, method=number");
    EXPECT_EQ(mask("0012"), mask("1200"));
    EXPECT_EQ("0011", mask("0110"));
    EXPECT_EQ("error 1 SRCLEN=4", mask("0011"));
    rule("NID, key=4");
    std::set<std::string> masked;
    for (int i = 10000; i < 20000; ++i) masked.insert(mask(std::to_string(i).substr(1)));
    EXPECT_GT(10000u, masked.size());
}

TEST_F(ProviderEntryTest, NullAndEmptyValuesOfVersion1BecomeNull) {
    writeFile("list.txt", "a = b\n");
    for (const char* text : {"CCN, key=17", "NID, key=29", "EML, key=1", "AFF", "AGE, days=1",
                             "HASH, seed=autumn, list=a", "LKP, file=list.txt"}) {
        rule(text);
        for (const OpenedRule::Form form : {OpenedRule::narrow, OpenedRule::wide}) {
            EXPECT_EQ("NULL", rule_->mask(form, "")) << text;
        }
    }
}

TEST_F(ProviderEntryTest, RefusesValuesOfMoreThan8000Characters) {
    rule("AFF");
    const std::string longest = std::string(4000, 'a') + std::string(4000, 'b');
    EXPECT_EQ(std::string(4000, 'b') + std::string(4000, 'a'), mask(longest));
    EXPECT_EQ("error 100 SRCLEN=8001 EXPSRCLEN=8000", mask(longest + "c"));
    EXPECT_EQ("error 100 SRCLEN=8001 EXPSRCLEN=8000", mask(longest + "ü"));
}

// A provider that throws what its value or its rule says.
struct Throwing {
    explicit Throwing(const provider::Operands& operands) { throwIf(operands.wide(1)); }
    template <typename Char>
    void mask(provider::Text<Char>& text) const {
        throwIf(std::wstring(text.begin(), text.end()));
        text.replaceFrom(0, text.view());
    }

    static void throwIf(const std::wstring& what) {
        if (what == L"memory") throw std::bad_alloc();
        if (what == L"runtime") throw std::runtime_error("secret");
        if (what == L"length") (void)std::string().at(1);
        if (what == L"number") throw 1;
        if (what == L"conversion") throw text::ConversionError(1);
        if (what == L"own") throw provider::Error(7, {{KORV_TOKID_CHAR_POS, 1}});
    }
};
constexpr PrvOperand kOperands[] = {{"WHAT", 1, 0, OPR_VALUE_WIDE, 0, 0}};

TEST_F(ProviderEntryTest, OnlyAFailedAllocationIsReportedAsOutOfMemory) {
    PrvEntry entry = provider::Glue<Throwing>::entry();
    entry.name = "CCN";
    entry.operands = kOperands;
    entry.operandCount = 1;
    EXPECT_EQ(nullptr, entry.sampleRules);
    const struct {
        const char* what;
        const char* error;
    } cases[] = {{"memory", "103"},     {"runtime", "106"},    {"length", "106"},
                 {"number", "106"},     {"conversion", "105"}, {"own", "7 CHAR_POS=1"},
                 {"something else", ""}};
    for (const auto& c : cases) {
        const OpenedRule opened(entry, RuleText("CCN, what=" + std::string(c.what), folder_));
        EXPECT_EQ(c.error, opened.error()) << c.what;
    }
    rule_ = std::make_unique<OpenedRule>(entry, RuleText("CCN", folder_));
    EXPECT_EQ(0u, rule_->promises());
    for (const auto& c : cases) {
        const std::string error = c.error;
        EXPECT_EQ(error.empty() ? c.what : "error " + error, mask(c.what));
    }
    rule_.reset();
}

}  // namespace
