// What all providers have in common: their records, promises, sample rules, and what becomes of
// values and exceptions that no provider expects.
#include <new>
#include <set>
#include <stdexcept>

#include "masked_value.h"
#include "providers/provider_support.h"

namespace {

using ProviderEntryTest = MaskedValueTest;

// Their methods, those with a secret before the colon.
const struct {
    const char* name;
    const char* methods;
    bool canUnmask;
} kProviders[] = {
    {"CCN", "ff1: transpose", true},
    {"NID", "ff1: transpose", true},
    {"EML", "pseudonym ff1: transpose", true},
    {"AFF", "ff1: shuffle reverse number", true},
    {"HASH", "pick: seed", false},
    {"AGE", "range: move", false},
    {"LKP", "", false},
};

std::string methodsOf(const PrvEntry& entry) {
    std::string keyed;
    std::string others;
    for (uint32_t i = 0; i < entry.methodCount; ++i) {
        const PrvMethod& method = entry.methods[i];
        EXPECT_EQ(method.flags & PRV_METHOD_KEYED, method.flags);
        const bool isKeyed = method.flags != 0;
        // A rule with a secret and without a method gets the first one.
        EXPECT_TRUE(!isKeyed || others.empty()) << entry.name;
        std::string& list = isKeyed ? keyed : others;
        list += (list.empty() && isKeyed ? "" : " ") + std::string(method.name);
    }
    return keyed.empty() && others.empty() ? "" : keyed + ":" + others;
}

TEST_F(ProviderEntryTest, DescribesTheProvider) {
    for (const auto& [name, methods, canUnmask] : kProviders) {
        const PrvEntry& entry = loadProvider(name);
        EXPECT_EQ(3u, entry.interfaceVersion);
        EXPECT_STREQ(name, entry.name);
        EXPECT_TRUE(entry.open && entry.mask && entry.close && entry.maskBatch && entry.promises);
        EXPECT_EQ(canUnmask, entry.unmask != nullptr) << name;
        EXPECT_EQ(methods, methodsOf(entry)) << name;
        std::set<std::string> keys;
        std::set<int> codes;
        for (uint32_t i = 0; i < entry.operandCount; ++i) {
            const PrvOperand& operand = entry.operands[i];
            EXPECT_TRUE(keys.insert(operand.key).second) << name;
            EXPECT_TRUE(codes.insert(operand.code).second) << name;
            EXPECT_LE(operand.minimum, operand.maximum) << name;
        }
        for (const char* reserved : {"METHOD", "SCOPE", "SECRET", "UNIQUE"}) {
            EXPECT_FALSE(keys.contains(reserved)) << name;
        }
        std::set<uint32_t> errors;
        for (uint32_t i = 0; i < entry.errorCount; ++i) {
            EXPECT_TRUE(errors.insert(entry.errors[i].code).second) << name;
            EXPECT_LT(entry.errors[i].code, static_cast<uint32_t>(PRV_FIRST_ENGINE_CODE));
            const std::string text = entry.errors[i].text;
            EXPECT_TRUE(!text.empty() && text.back() != '.') << text;
        }
        for (uint32_t code = 100; code <= 108; ++code) EXPECT_TRUE(errors.contains(code)) << name;
        EXPECT_EQ(*errors.begin(), 1u) << name;
    }
}

// Equal values need equal results whether or not a rule refuses others.
TEST_F(ProviderEntryTest, OperandsThatOnlyCheckAreMarked) {
    std::set<std::string> checks;
    for (const auto& provider : kProviders) {
        const PrvEntry& entry = loadProvider(provider.name);
        for (uint32_t i = 0; i < entry.operandCount; ++i) {
            if ((entry.operands[i].flags & PRV_OPERAND_CHECK) == 0) continue;
            checks.insert(std::string(entry.name) + " " + entry.operands[i].key);
        }
    }
    EXPECT_EQ((std::set<std::string>{"AGE LIMIT", "CCN STRICT", "NID COUNTRY"}), checks);
}

TEST_F(ProviderEntryTest, SampleRulesCanBeOpened) {
    for (const auto& [name, methods, canUnmask] : kProviders) {
        const PrvEntry& entry = loadProvider(name);
        const bool needsFile = std::string(name) == "LKP";
        EXPECT_EQ(needsFile, entry.sampleRuleCount == 0) << name;
        bool isProtected = false;
        bool isDisguised = false;
        for (uint32_t i = 0; i < entry.sampleRuleCount; ++i) {
            const RuleText sample(entry.sampleRules[i], folder_);
            EXPECT_EQ(name, sample.provider);
            (sample.hasSecret ? isProtected : isDisguised) = true;
            if (sample.hasSecret && !kHasKeyedMethods) continue;
            EXPECT_EQ("accepted", ruleError(entry.sampleRules[i])) << entry.sampleRules[i];
        }
        EXPECT_EQ(!needsFile, isProtected && isDisguised) << name;
    }
    if (!kHasKeyedMethods) GTEST_SKIP() << "without libcrypto: rules with a secret are left out";
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
        {"CCN, method=transpose, key=17", length + format},
        {"CCN, method=transpose, key=17, strict", length + format},
        {"NID, method=transpose, key=29", length + format},
        {"EML, method=transpose, key=4711, prefix=1", length + format},
        {"EML, method=transpose, key=4711, domain=masked.example", 0},
        {"AFF, method=shuffle", oneToOne + length + format},
        {"AFF, method=reverse", oneToOne + length + format},
        {"AFF, method=number", length},
        {"AGE, method=move, days=1", oneToOne + length},
        {"AGE, method=move, days=1, months=1", length},
        {"AGE, method=move, years=1", length},
        {"AGE, method=move, days=1, format=DD.MM.YYYY|YYYY-MM-DD", length},
        {"AGE, method=move, days=1, format=DD MON YYYY", length},
        {"AGE, method=move, days=1, format=DD MONTH YYYY", 0},
        {"AGE, method=move, days=1, format=M/DD/YYYY", 0},
        {"AGE, method=move, days=1, format=YYYY-MM-DD|MM/D/YYYY", 0},
        {"LKP, file=list.txt", 0},
        {"HASH, method=seed, seed=autumn, list=a;b", 0},
    };
    for (const auto& c : cases) {
        rule(c.rule);
        EXPECT_EQ(c.promises, rule_->promises()) << c.rule;
    }
}

TEST_F(ProviderEntryTest, KeyedMethodsPromiseWhatIsTrueForEveryValue) {
    if (!kHasKeyedMethods) GTEST_SKIP() << "without libcrypto";
    const uint32_t oneToOne = PRV_PROMISE_ONE_TO_ONE;
    const uint32_t length = PRV_PROMISE_LENGTH_KEPT;
    const uint32_t format = PRV_PROMISE_FORMAT_KEPT;
    const uint32_t all = oneToOne + length + format + PRV_PROMISE_REVERSIBLE;
    const struct {
        const char* rule;
        uint32_t promises;
    } cases[] = {
        {"CCN, secret=test", all},
        {"CCN, secret=test, prefix=0, last=4, strict", all},
        {"NID, secret=test", all},
        {"NID, secret=test, letters", all},
        {"NID, secret=test, country=us", all},
        {"NID, secret=test, integer", all},
        {"NID, secret=test, integer=int4", all},
        {"AFF, secret=test", all},
        {"EML, secret=test, method=ff1", all},
        {"EML, secret=test", oneToOne + format},
        {"EML, secret=test, domain=keep, length=16", oneToOne + format},
        {"EML, secret=test, length=15", format},
        {"HASH, secret=test, list=a;b", 0},
        {"AGE, secret=test, range=-30..30", length},
        {"AGE, secret=test, range=1..1", length},
        {"AGE, secret=test, range=-30..30, format=D.M.YYYY", 0},
    };
    for (const auto& c : cases) {
        rule(c.rule);
        EXPECT_EQ(c.promises, rule_->promises()) << c.rule;
    }
}

TEST_F(ProviderEntryTest, UnmaskGivesTheValueBack) {
    if (!kHasKeyedMethods) GTEST_SKIP() << "without libcrypto";
    const struct {
        const char* rule;
        const char* value;
        bool isNarrow;
    } cases[] = {
        {"CCN, secret=test", "4556-7375-8689-9855", true},
        {"CCN, secret=test, prefix=0, last=4", "4556 7375 8689 9854", true},
        {"NID, secret=test", "078-05-1120", true},
        {"NID, secret=test", "– 7 –", false},
        {"NID, secret=test, prefix=1, last=2, letters", "AB-12 cd/34", true},
        {"NID, secret=test, integer", "-1203", true},
        {"NID, secret=test, integer=int8", "9223372036854775807", true},
        {"AFF, secret=test", "Flat 4b, 221 Baker Street", true},
        {"AFF, secret=test", "“Smith” № 4", false},
        {"EML, secret=test, method=ff1", "John.Doe-99@Post.Example", true},
        {"EML, secret=test, method=ff1", "john@Größe.example", false},
    };
    for (const auto& c : cases) {
        rule(c.rule);
        const std::string masked = mask(c.value);
        EXPECT_NE(c.value, masked) << c.rule;
        EXPECT_FALSE(masked.starts_with("error")) << masked;
        EXPECT_EQ(c.value, rule_->unmask(OpenedRule::wide, masked)) << c.rule;
        if (c.isNarrow) {
            EXPECT_EQ(c.value, rule_->unmask(OpenedRule::narrow, masked)) << c.rule;
        }
        EXPECT_EQ("NULL", rule_->unmask(OpenedRule::narrow, "")) << c.rule;
    }
}

// Code 107: the method needs the operand; code 108: it belongs to another method.
TEST_F(ProviderEntryTest, OperandsMustFitTheMethod) {
    const struct {
        const char* rule;
        const char* error;
    } cases[] = {
        {"CCN, method=transpose", "107 PARMKEY=KEY"},
        {"CCN, method=transpose, key=1, last=4", "108 PARMKEY=LAST"},
        {"CCN, secret=test, key=1", "108 PARMKEY=KEY"},
        {"CCN, secret=test, shift=1", "108 PARMKEY=SHIFT"},
        {"NID, method=transpose", "107 PARMKEY=KEY"},
        {"NID, method=transpose, key=1, prefix=0", "108 PARMKEY=PREFIX"},
        {"NID, method=transpose, key=1, last=0", "108 PARMKEY=LAST"},
        {"NID, method=transpose, key=1, letters", "108 PARMKEY=LETTERS"},
        {"NID, method=transpose, key=1, integer", "108 PARMKEY=INTEGER"},
        {"NID, secret=test, key=1", "108 PARMKEY=KEY"},
        {"NID, secret=test, shift=1", "108 PARMKEY=SHIFT"},
        {"NID, secret=test, integer, prefix=1", "108 PARMKEY=PREFIX"},
        {"NID, secret=test, integer, last=1", "108 PARMKEY=LAST"},
        {"NID, secret=test, integer, letters", "108 PARMKEY=LETTERS"},
        {"NID, secret=test, integer, country=us", "108 PARMKEY=COUNTRY"},
        {"EML, method=transpose", "107 PARMKEY=KEY"},
        {"EML, method=transpose, key=1, length=20", "108 PARMKEY=LENGTH"},
        {"EML, secret=test, key=1", "108 PARMKEY=KEY"},
        {"EML, secret=test, prefix=1", "108 PARMKEY=PREFIX"},
        {"EML, secret=test, case=keep", "108 PARMKEY=CASE"},
        {"EML, secret=test, method=ff1, length=20", "108 PARMKEY=LENGTH"},
        {"EML, secret=test, method=ff1, domain=mask", "6 PARMKEY=DOMAIN PARMVALUE=mask"},
        {"HASH, method=seed, list=a", "107 PARMKEY=SEED"},
        {"HASH, secret=test, list=a, seed=autumn", "108 PARMKEY=SEED"},
        {"AGE, method=move, days=1, range=1..2", "108 PARMKEY=RANGE"},
        {"AGE, secret=test", "107 PARMKEY=RANGE"},
        {"AGE, secret=test, range=1..2, days=1", "108 PARMKEY=DAYS"},
        {"AGE, secret=test, range=1..2, months=1", "108 PARMKEY=MONTHS"},
        {"AGE, secret=test, range=1..2, years=1", "108 PARMKEY=YEARS"},
        {"AGE, secret=test, range=1..2, limit=1", "108 PARMKEY=LIMIT"},
        {"AGE, secret=test, range=2..1", "7 PARMKEY=RANGE PARMVALUE=2..1"},
    };
    for (const auto& c : cases) {
        if (RuleText(c.rule, folder_).hasSecret && !kHasKeyedMethods) continue;
        EXPECT_EQ(c.error, ruleError(c.rule)) << c.rule;
    }
    if (!kHasKeyedMethods) GTEST_SKIP() << "without libcrypto: rules with a secret are left out";
}

// Why AFF does not promise more for numbers, and CCN not for strict ones.
TEST_F(ProviderEntryTest, DoesNotPromiseWhatHasExceptions) {
    rule("AFF, method=number");
    EXPECT_EQ(mask("0012"), mask("1200"));
    EXPECT_EQ("0011", mask("0110"));
    EXPECT_EQ("error 1 SRCLEN=4", mask("0011"));
    rule("NID, method=transpose, key=4");
    std::set<std::string> masked;
    for (int i = 10000; i < 20000; ++i) masked.insert(mask(std::to_string(i).substr(1)));
    EXPECT_GT(10000u, masked.size());
}

TEST_F(ProviderEntryTest, NullAndEmptyValuesOfVersion1BecomeNull) {
    writeFile("list.txt", "a = b\n");
    for (const char* text :
         {"CCN, method=transpose, key=17", "NID, method=transpose, key=29",
          "EML, method=transpose, key=1", "AFF, method=shuffle", "AGE, method=move, days=1",
          "HASH, method=seed, seed=autumn, list=a", "LKP, file=list.txt", "CCN, secret=test",
          "NID, secret=test", "EML, secret=test", "EML, secret=test, method=ff1",
          "AFF, secret=test", "AGE, secret=test, range=1..9", "HASH, secret=test, list=a"}) {
        if (RuleText(text, folder_).hasSecret && !kHasKeyedMethods) continue;
        rule(text);
        for (const OpenedRule::Form form : {OpenedRule::narrow, OpenedRule::wide}) {
            EXPECT_EQ("NULL", rule_->mask(form, "")) << text;
        }
    }
}

TEST_F(ProviderEntryTest, RefusesValuesOfMoreThan8000Characters) {
    rule("AFF, method=shuffle");
    const std::string longest = std::string(4000, 'a') + std::string(4000, 'b');
    EXPECT_EQ(std::string(4000, 'b') + std::string(4000, 'a'), mask(longest));
    EXPECT_EQ("error 100 SRCLEN=8001 EXPSRCLEN=8000", mask(longest + "c"));
    EXPECT_EQ("error 100 SRCLEN=8001 EXPSRCLEN=8000", mask(longest + "ü"));
}

// A provider that throws what its value or its rule says.
struct Throwing {
    explicit Throwing(const provider::Operands& operands) { throwIf(operands.wide(1)); }
    template <class Char>
    void mask(provider::Text<Char>& text) const {
        throwIf(std::wstring(text.begin(), text.end()));
        text.replaceFrom(0, text.view());
    }

    static void throwIf(const std::wstring& what) {
        if (what == L"memory") throw std::bad_alloc();
        if (what == L"runtime") throw std::runtime_error("secret");
        if (what == L"length") (void)std::string().at(1);
        if (what == L"number") throw 1;
        if (what == L"conversion") (void)provider::toWide("\xFF");
        if (what == L"own") throw provider::Error(7, {{KORV_TOKID_CHAR_POS, 1}});
    }
};
constexpr PrvOperand kOperands[] = {{"WHAT", 1, 0, OPR_VALUE_WIDE, 0, 0}};

TEST_F(ProviderEntryTest, OnlyAFailedAllocationIsReportedAsOutOfMemory) {
    PrvEntry entry = korv::provider::detail::Glue<Throwing>::entry();
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
