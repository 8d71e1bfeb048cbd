// Methods, secrets and scopes of rules: which are taken, what a provider gets of them, and which
// are refused with which message.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <set>

#include "c_interface.h"
#include "folder.h"
#include "korv/provider.h"

namespace {

#define SKIP_WITHOUT_SECRETS() \
    if (!kHasSecrets) GTEST_SKIP() << "without libcrypto"

// A setting with flags.
Setting flagged(uint32_t flags) {
    Setting setting;
    setting.flags = flags;
    return setting;
}

// What a rule makes of a value, or why it is refused.
std::string masked(const std::string& rule, const Setting& setting = Setting()) {
    Mask mask("A = " + rule, setting);
    if (mask.opened != KORV_MASK_SUCCESS) {
        EXPECT_EQ(KORV_MASK_BAD_RULES, mask.opened) << rule;
        EXPECT_EQ(1u, mask.records().size()) << mask.text();
        return mask.text();
    }
    return mask.batch({"value"}).at(0).value_or("NULL");
}

class MethodsTest : public EngineTest {};
class SecretsTest : public EngineTest {};
class SecretsFileTest : public EngineTest {};

TEST_F(MethodsTest, ARuleNeedsASecretOrAMethod) {
    EXPECT_EQ(
        "rules:1:5: KEYED needs a secret or a method: add secret=NAME to protect the values, or "
        "method=plain or other for data that was masked so before\n",
        masked("KEYED"));
    EXPECT_EQ(
        "rules:1:5: KEYED_ONLY needs a secret or a method: add secret=NAME to protect the values\n",
        masked("KEYED_ONLY, unique"));
    const std::string plain = masked("PLAIN_ONLY, check=1");
    EXPECT_EQ(0u, plain.find("rules:1:5: PLAIN_ONLY needs ")) << plain;
    EXPECT_TRUE(contains(plain, "method=plain or other")) << plain;
}

TEST_F(MethodsTest, AMethodIsOneOfTheProviders) {
    EXPECT_EQ("plain none", masked("KEYED, method=plain"));
    EXPECT_EQ("other none", masked("KEYED, Method = OTHER"));
    EXPECT_EQ("rules:1:12: operand METHOD of KEYED must be first, second, plain or other\n",
              masked("KEYED, method=third, secret=test"));
    EXPECT_EQ("rules:1:17: operand METHOD of KEYED_ONLY must be first or second\n",
              masked("KEYED_ONLY, method=plain"));
    EXPECT_EQ("rules:1:12: operand METHOD of KEYED must be first, second, plain or other\n",
              masked("KEYED, method"));
}

TEST_F(MethodsTest, ADisguiseHasNoSecret) {
    EXPECT_EQ("rules:1:26: method plain has no secret; leave out SECRET\n",
              masked("KEYED, method=plain, secret=test"));
    if (kHasSecrets) {
        EXPECT_EQ("rules:1:25: operand SCOPE has more than 500 bytes\n",
                  Mask("A = KEYED, secret=test, scope=" + std::string(501, 's')).text());
        EXPECT_EQ("", Mask("A = KEYED, secret=test, scope=" + std::string(500, 's')).text());
    }
    EXPECT_EQ("rules:1:26: method other has no secret; leave out SCOPE\n",
              masked("KEYED, method=other, scope=a"));
    // A provider without keyed methods has no use for a secret.
    EXPECT_TRUE(contains(masked("PLAIN_ONLY, secret=test"), "PLAIN_ONLY needs "));
}

TEST_F(MethodsTest, AKeyedMethodNeedsASecret) {
    EXPECT_EQ("rules:1:5: method second needs secret=NAME\n", masked("KEYED, method=second"));
    EXPECT_EQ("rules:1:5: method first needs secret=NAME\n",
              masked("KEYED, method=first, scope=a"));
    EXPECT_TRUE(contains(masked("KEYED, scope=a"), "KEYED needs a secret or a method"));
}

TEST_F(MethodsTest, ProvidersWithoutMethodsTakeNone) {
    EXPECT_EQ("value", masked("COPY"));
    EXPECT_EQ("rules:1:11: COPY has no operand METHOD\n", masked("COPY, method=plain"));
    EXPECT_EQ("rules:1:11: COPY has no operand SECRET\n", masked("COPY, secret=test"));
    EXPECT_EQ("rules:1:11: COPY has no operand SCOPE\n", masked("COPY, scope=a"));
    for (const char* action : {"KEEP", "DROP", "NULL"}) {
        EXPECT_EQ("rules:1:11: " + std::string(action) + " does not take the operand SECRET\n",
                  masked(std::string(action) + ", secret=test"));
    }
}

// Modules of version 2 may have operands with these keys.
TEST_F(MethodsTest, OperandsOfAnEarlierVersionStayThose) {
    EXPECT_EQ("METHOD=m;SECRET=No Name;SCOPE=s;UNIQUE=;",
              masked("VERSION2, method=m, secret=No Name, scope=s, unique"));
    EXPECT_EQ("SECRET=test;", masked("VERSION2, secret=test", flagged(KORV_MASK_STRICT)));
    // Nor do those of version 1 get what is new.
    EXPECT_EQ("eulav", masked("VERSION1"));
    EXPECT_TRUE(contains(masked("VERSION1, secret=test"), "VERSION1 has no operand SECRET"));
    EXPECT_TRUE(contains(masked("VERSION1, unique"), "UNIQUE is demanded"));
}

TEST_F(MethodsTest, AnOperandMayStandAlone) {
    EXPECT_EQ("plain none", masked("KEYED, method=plain, maybe"));
    EXPECT_EQ("plain none", masked("KEYED, method=plain, maybe=x"));
    EXPECT_EQ("rules:1:26: operand PART needs a value\n", masked("KEYED, method=plain, part"));
}

TEST_F(MethodsTest, StrictRefusesDisguises) {
    EXPECT_EQ("rules:1:5: method plain is a disguise, which --strict refuses\n",
              masked("KEYED, method=plain", flagged(KORV_MASK_STRICT)));
    EXPECT_EQ("value", masked("COPY", flagged(KORV_MASK_STRICT)));
    EXPECT_EQ("value", masked("KEEP", flagged(KORV_MASK_STRICT)));
    EXPECT_EQ("x", masked("CONST, value=x", flagged(KORV_MASK_STRICT)));
    SKIP_WITHOUT_SECRETS();
    EXPECT_TRUE(
        masked("KEYED, secret=test", flagged(KORV_MASK_STRICT)).starts_with("first ffa4b73d"));
}

TEST_F(MethodsTest, UniqueNeedsThePromise) {
    const std::string refused =
        "rules:1:5: UNIQUE is demanded, and KEYED does not promise with these operands that "
        "different values have different results\n";
    EXPECT_EQ(refused, masked("KEYED, method=plain, unique"));
    EXPECT_EQ(refused, masked("KEYED, method=plain, unique, promise=14"));
    EXPECT_EQ("plain none", masked("KEYED, method=plain, unique, promise=1"));
    EXPECT_EQ("plain none", masked("KEYED, method=plain, Unique, promise=15"));
    EXPECT_EQ("rules:1:26: operand UNIQUE takes no value\n",
              masked("KEYED, method=plain, unique=1"));
    EXPECT_TRUE(contains(masked("COPY, unique"), "UNIQUE is demanded"));
    EXPECT_TRUE(masked("REPORT, unique").starts_with("open without values"));
    EXPECT_TRUE(contains(masked("KEEP, unique"), "KEEP does not take the operand UNIQUE"));
    EXPECT_TRUE(contains(masked("CCN, method=transpose, key=1, unique"), "UNIQUE is demanded"));
}

TEST_F(MethodsTest, UnmaskNeedsThePromise) {
    const Setting unmask = flagged(KORV_MASK_UNMASK);
    EXPECT_EQ("clear", masked("KEYED, method=plain, promise=8", unmask));
    EXPECT_EQ("value", masked("KEEP", unmask));
    const std::string message = " cannot be reversed with these operands\n";
    EXPECT_EQ("rules:1:5: KEYED" + message, masked("KEYED, method=plain", unmask));
    EXPECT_EQ("rules:1:5: KEYED" + message, masked("KEYED, method=plain, promise=7", unmask));
    EXPECT_EQ("rules:1:5: COPY" + message, masked("COPY", unmask));
    EXPECT_EQ("rules:1:5: VERSION1" + message, masked("VERSION1", unmask));
    // The promise is no help without the function.
    EXPECT_EQ("rules:1:5: KEYED_ONE_WAY" + message,
              masked("KEYED_ONE_WAY, method=plain, promise=8", unmask));
    for (const char* rule : {"DROP", "NULL", "CONST, value=x"}) {
        const std::string text = masked(rule, unmask);
        EXPECT_TRUE(contains(text, "cannot be reversed; write KEEP")) << text;
    }
}

TEST_F(MethodsTest, UnmaskReversesBatches) {
    SKIP_WITHOUT_SECRETS();
    const Values clear = {"Smith 42", kNull, "Smith 42", "x", "“7” – b"};
    for (const char* rule : {"A = AFF, secret=test", "A = AFF, secret=test, type=wide"}) {
        Mask mask(rule);
        const Values hidden = mask.batch(clear);
        EXPECT_EQ("MNMMM", mask.states());
        EXPECT_EQ(hidden[0], hidden[2]);
        for (const uint32_t verify : {0u, uint32_t{KORV_MASK_VERIFY_PROVIDERS}}) {
            Mask unmask(rule, flagged(KORV_MASK_UNMASK | verify));
            ASSERT_EQ(KORV_MASK_SUCCESS, unmask.opened) << unmask.text();
            EXPECT_EQ(clear, unmask.batch(hidden)) << rule;
        }
    }
    // What cannot be unmasked fails like what cannot be masked.
    Mask unmask("A = AFF, secret=test", flagged(KORV_MASK_UNMASK));
    EXPECT_EQ((Values{"", kNull}), unmask.batch({"é", kNull}));
    EXPECT_EQ("FN", unmask.states());
}

// The key follows from secret, scope, provider and method, by HKDF; from nothing else.
TEST_F(SecretsTest, AProviderGetsTheKeyOfItsMethod) {
    SKIP_WITHOUT_SECRETS();
    const std::string key = "ffa4b73d7b6193108de8272ca792f67982bd98d667950b6be0625ed58cb5fa92";
    EXPECT_EQ("first " + key, masked("KEYED, secret=test"));
    EXPECT_EQ("first " + key, masked("KEYED, method=first, secret=test, part=x, check=1"));
    EXPECT_EQ("first " + key, masked("KEYED, secret=test, type=wide, on-error=null"));
    EXPECT_EQ("second 84bc5ef9e78b68316e5ec76ab81652aa64c787fbc1fc73c3b0b4b6fdd2ca81c6",
              masked("KEYED, scope=s1, secret=test, method=second"));
    const std::string others[] = {
        masked("KEYED, secret=test, method=second").substr(7),
        masked("KEYED, secret=test, scope=s").substr(6),
        masked("KEYED, secret=test, scope=test").substr(6),
        masked("KEYED_ONLY, secret=test").substr(6),
    };
    for (const std::string& other : others) {
        EXPECT_EQ(key.size(), other.size());
        EXPECT_NE(key, other);
    }
}

TEST_F(SecretsTest, NamesHaveSmallLettersDigitsAndUnderscores) {
    const std::string message =
        "rules:1:12: operand SECRET is a name of lower-case letters, digits and underscores, a "
        "letter first; the secret itself belongs into a file\n";
    for (const std::string name :
         {"Crm", "1a", "a-b", "_a", "ä", "a b", "0123456789ABCDEF", "MDEyMzQ1Njc4OWFiY2RlZg=="}) {
        EXPECT_EQ(message, masked("KEYED, secret=" + name));
    }
    EXPECT_EQ(message, masked("KEYED, secret"));
    EXPECT_EQ(message, masked("KEYED, secret=" + std::string(65, 'a')));
}

TEST_F(SecretsTest, AScopeIsAnyText) {
    EXPECT_EQ("rules:1:25: operand SCOPE needs a value\n", masked("KEYED, secret=test, scope"));
    SKIP_WITHOUT_SECRETS();
    std::set<std::string> keys;
    const std::string scopes[] = {"a", "A", "ä", "a b", "a-b", "1", std::string(300, 'x')};
    for (const std::string& scope : scopes) {
        const Mask mask("A = KEYED, secret=test, scope=" + scope);
        ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
        EXPECT_EQ(scope, KorvMaskGetColumn(mask.handle, 0)->scope);
        keys.insert(masked("KEYED, secret=test, scope=" + scope));
    }
    EXPECT_EQ(std::size(scopes), keys.size());
}

TEST_F(SecretsTest, AnUnknownSecretIsNamed) {
    if (kHasSecrets) {
        EXPECT_EQ("rules:1:12: there is no secret crm among those that are given\n",
                  masked("KEYED, secret=crm"));
    } else {
        EXPECT_TRUE(contains(masked("KEYED, secret=test"), "libcrypto"));
        EXPECT_TRUE(contains(masked("KEYED, secret=crm"), "libcrypto"));
    }
}

TEST_F(SecretsTest, SettingsWithBadSecretsAreBadArguments) {
    const uint8_t bytes[65] = {};
    const std::string longest(64, 'x');
    const std::string tooLong(65, 'x');
    const struct {
        KorvMaskSecret secret;
        int32_t status;
    } cases[] = {
        {{"a", bytes, 16}, KORV_MASK_SUCCESS},
        {{longest.c_str(), bytes, 64}, KORV_MASK_SUCCESS},
        {{"a", bytes, 15}, KORV_MASK_BAD_ARGUMENT},
        {{"a", bytes, 65}, KORV_MASK_BAD_ARGUMENT},
        {{"a", bytes, 0}, KORV_MASK_BAD_ARGUMENT},
        {{"a", nullptr, 16}, KORV_MASK_BAD_ARGUMENT},
        {{nullptr, bytes, 16}, KORV_MASK_BAD_ARGUMENT},
        {{"", bytes, 16}, KORV_MASK_BAD_ARGUMENT},
        {{"A", bytes, 16}, KORV_MASK_BAD_ARGUMENT},
        {{"a-b", bytes, 16}, KORV_MASK_BAD_ARGUMENT},
        {{tooLong.c_str(), bytes, 16}, KORV_MASK_BAD_ARGUMENT},
    };
    const char* const names[] = {"A"};
    KorvMaskSettings settings = {};
    settings.size = sizeof settings;
    settings.columns = names;
    settings.columnCount = 1;
    settings.rules = "A = KEEP";
    KorvMask* mask = nullptr;
    for (const auto& c : cases) {
        settings.secrets = &c.secret;
        settings.secretCount = 1;
        EXPECT_EQ(c.status, KorvMaskOpen(&settings, &mask))
            << (c.secret.name == nullptr ? "NULL" : c.secret.name) << " " << c.secret.length;
        KorvMaskClose(mask);
    }
    settings.secrets = nullptr;
    EXPECT_EQ(KORV_MASK_BAD_ARGUMENT, KorvMaskOpen(&settings, &mask));
    settings.secretCount = 0;
    EXPECT_EQ(KORV_MASK_SUCCESS, KorvMaskOpen(&settings, &mask));
    KorvMaskClose(mask);

    const KorvMaskSecret twice[] = {{"a", bytes, 16}, {"b", bytes, 16}, {"a", bytes, 16}};
    settings.secrets = twice;
    settings.secretCount = 3;
    EXPECT_EQ(KORV_MASK_BAD_RULES, KorvMaskOpen(&settings, &mask));
    ASSERT_EQ(1u, KorvMaskRecordCount(mask));
    EXPECT_STREQ("the secret a is given twice", KorvMaskGetRecord(mask, 0)->message);
    KorvMaskClose(mask);
}

TEST_F(SecretsTest, TheCallersCopyIsReadDuringTheCallOnly) {
    SKIP_WITHOUT_SECRETS();
    uint8_t bytes[32];
    for (uint8_t i = 0; i < 32; ++i) bytes[i] = i;
    char name[] = "mine";
    const KorvMaskSecret secret = {name, bytes, sizeof bytes};
    const char* const columns[] = {"A"};
    const char* const folders[] = {KORV_PROVIDERS, KORV_BROKEN_PROVIDERS};
    KorvMaskSettings settings = {};
    settings.size = sizeof settings;
    settings.columns = columns;
    settings.columnCount = 1;
    settings.rules = "A = AFF, secret=mine";
    settings.folders = folders;
    settings.folderCount = 2;
    settings.secrets = &secret;
    settings.secretCount = 1;
    Mask early("A = KEEP"), late("A = KEEP");
    for (Mask* mask : {&early, &late}) {
        KorvMaskClose(mask->handle);
        ASSERT_EQ(KORV_MASK_SUCCESS, KorvMaskOpen(&settings, &mask->handle));
    }
    const Values expected = early.batch({"some value"});
    std::fill_n(bytes, sizeof bytes, uint8_t{0xEE});
    name[0] = 'X';
    EXPECT_EQ(expected, late.batch({"some value"}));
    EXPECT_STREQ("mine", KorvMaskGetColumn(late.handle, 0)->secret);
}

TEST_F(SecretsTest, ColumnsAreDescribed) {
    const Mask plain("A = KEEP\nB = COPY\nC = KEYED, method=other\nD = DROP",
                     {{"A", "B", "C", "D"}, 0, {KORV_BROKEN_PROVIDERS}});
    ASSERT_EQ(KORV_MASK_SUCCESS, plain.opened) << plain.text();
    for (uint32_t i = 0; i < 4; ++i) {
        const KorvMaskColumn* column = KorvMaskGetColumn(plain.handle, i);
        EXPECT_STREQ(i == 2 ? "other" : nullptr, column->method);
        EXPECT_EQ(i == 2 ? 1u : 0u, column->isDisguise);
        EXPECT_EQ(nullptr, column->secret);
        EXPECT_EQ(nullptr, column->fingerprint);
        EXPECT_STREQ("", column->scope);
        EXPECT_STREQ(i == 2 ? "other" : "", column->mapping);
    }
    SKIP_WITHOUT_SECRETS();
    Setting setting = {{"A", "B"}, 0, {KORV_BROKEN_PROVIDERS}};
    setting.secrets["more"] = std::string(16, 'x');
    const Mask keyed("A = KEYED, secret=test\nB = KEYED, secret=more, method=second, scope=s_1",
                     setting);
    ASSERT_EQ(KORV_MASK_SUCCESS, keyed.opened) << keyed.text();
    const KorvMaskColumn* column = KorvMaskGetColumn(keyed.handle, 0);
    EXPECT_STREQ("first", column->method);
    EXPECT_EQ(0u, column->isDisguise);
    EXPECT_STREQ("test", column->secret);
    EXPECT_STREQ("5fa14a9f", column->fingerprint);
    EXPECT_STREQ("", column->scope);
    column = KorvMaskGetColumn(keyed.handle, 1);
    EXPECT_STREQ("second", column->method);
    EXPECT_STREQ("more", column->secret);
    EXPECT_STREQ("s_1", column->scope);
    EXPECT_EQ(8u, std::string(column->fingerprint).size());
    EXPECT_STRNE("5fa14a9f", column->fingerprint);
}

// Operands that only refuse values are left out, and the order of operands does not matter.
TEST_F(SecretsTest, TheMappingHasWhatResultsDependOn) {
    const auto mapping = [](const std::string& operands) {
        const Mask mask("A = KEYED, method=plain" + operands);
        EXPECT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
        return std::string(KorvMaskGetColumn(mask.handle, 0)->mapping);
    };
    const std::string alone = mapping("");
    EXPECT_EQ(alone, mapping(", check=1"));
    EXPECT_EQ(alone, mapping(", on-error=null, type=wide, unchanged=error"));
    EXPECT_EQ(mapping(", part=x, maybe"), mapping(", maybe, check=2, part=x"));
    EXPECT_EQ(mapping(", promise=1"), mapping(", unique, promise=1"));
    const std::string different[] = {alone, mapping(", part=x"), mapping(", part=y"),
                                     mapping(", maybe=x"), mapping(", part=x, maybe=x")};
    for (size_t i = 0; i < std::size(different); ++i) {
        for (size_t k = 0; k < i; ++k) EXPECT_NE(different[k], different[i]);
    }
    EXPECT_NE(alone, KorvMaskGetColumn(Mask("A = KEYED, method=other").handle, 0)->mapping);
}

// Everything that is wrong with secrets is said together with the other faults of the rules.
TEST_F(SecretsTest, FaultsAreCollected) {
    const Mask mask("A = KEYED\nB = KEYED, method=none\nC = KEYED, secret=Bad\nD = COPY, odd=1",
                    {{"A", "B", "C", "D"}, 0, {KORV_BROKEN_PROVIDERS}});
    EXPECT_EQ(KORV_MASK_BAD_RULES, mask.opened);
    EXPECT_EQ(4u, mask.records().size()) << mask.text();
}

// A fixed secret of 32 bytes, in both forms, and its fingerprint.
const char* const kHex = "303132333435363738396162636465666768696A6b6c6d6e6f70717273747576";
const char* const kBase64 = "MDEyMzQ1Njc4OWFiY2RlZmdoaWprbG1ub3BxcnN0dXY=";
const char* const kPrint = "5fa14a9f";

std::string writeSecrets(const Folder& folder, const std::string& text, mode_t mode = 0600) {
    const std::string file = folder.write("secrets.txt", text);
    EXPECT_EQ(0, chmod(file.c_str(), mode));
    return file;
}

Setting withFile(const std::string& file) {
    Setting setting;
    setting.secrets.clear();
    setting.secretsFile = file;
    return setting;
}

// The fingerprint of the secret `name` of a file, or what is wrong with the file.
std::string fingerprint(const std::string& file, const std::string& name = "crm") {
    const Mask mask("A = KEYED, secret=" + name, withFile(file));
    if (mask.opened != KORV_MASK_SUCCESS) return mask.text();
    return KorvMaskGetColumn(mask.handle, 0)->fingerprint;
}

// What is wrong with a file, without its name.
std::string fault(const std::string& file) {
    const Mask mask("A = KEEP", withFile(file));
    EXPECT_EQ(KORV_MASK_BAD_RULES, mask.opened);
    EXPECT_EQ(1u, mask.records().size()) << mask.text();
    std::string text = mask.text();
    EXPECT_EQ(0u, text.find(file)) << text;
    text.erase(0, file.size());
    return text.substr(0, text.size() - 1);
}

TEST_F(SecretsFileTest, FormsOfAFile) {
    SKIP_WITHOUT_SECRETS();
    const Folder folder;
    const std::string hex = kHex;
    const std::string base64 = kBase64;
    for (const std::string& text :
         {"crm = " + hex, "crm = " + hex + "\n", "crm=" + base64 + "\n",
          " \tcrm\t =\t" + base64 + " \t\r\n", "# a comment\n\n  # crm = x\r\n \r\ncrm = " + hex,
          "other_2 = 000102030405060708090a0b0c0d0e0f\ncrm = " + hex + "\n\n"}) {
        EXPECT_EQ(kPrint, fingerprint(writeSecrets(folder, text))) << text;
    }
    const std::string both = "crm = " + hex + "\nx = " + base64;
    EXPECT_EQ(kPrint, fingerprint(writeSecrets(folder, both), "x"));
    EXPECT_TRUE(contains(fingerprint(writeSecrets(folder, "")), "there is no secret crm"));
    EXPECT_TRUE(contains(fingerprint(writeSecrets(folder, "# nothing\n")), "no secret crm"));
}

TEST_F(SecretsFileTest, LengthsOfSecrets) {
    const Folder folder;
    const std::string message =
        ":2: the secret crm must be 16 to 64 bytes, in hexadecimal digits or padded base64";
    for (const size_t bytes : {0, 1, 15, 65, 100, 5000}) {
        const std::string text = "# x\ncrm = " + std::string(2 * bytes, 'a');
        EXPECT_EQ(message, fault(writeSecrets(folder, text))) << bytes;
    }
    for (const char* value :
         {"MDEyMzQ1Njc4OWFiY2Rl", "MDEyMzQ1Njc4OWFiY2RlZg", "MDEyMzQ1Njc4OWFiY2RlZg=",
          "MDEyMzQ1Njc4OWFiY2RlZh==", "MDEyMzQ1Njc4OWFiY2RlZg===", "MDEyMzQ1Njc4OWFi-2RlZg==",
          "0123456789abcdef0123456789abcde", "0123456789abcdef0123456789abcde-",
          "01234567 89abcdef 01234567 89abcdef", "correct horse battery staple",
          "\"0123456789abcdef0123456789abcdef\"", "0x0123456789abcdef0123456789abcdef"}) {
        EXPECT_EQ(message, fault(writeSecrets(folder, "\ncrm = " + std::string(value)))) << value;
    }
    SKIP_WITHOUT_SECRETS();
    for (const size_t bytes : {16, 17, 63, 64}) {
        const std::string text = "crm = " + std::string(2 * bytes, 'a');
        EXPECT_EQ(8u, fingerprint(writeSecrets(folder, text)).size()) << bytes;
    }
}

TEST_F(SecretsFileTest, MalformedLines) {
    const Folder folder;
    const std::string message =
        ":1: a line has the form name = value; a name has lower-case letters, digits and "
        "underscores, a letter first";
    const std::string hex = kHex;
    for (const std::string& line :
         {hex, std::string(kBase64), "Crm = " + hex, "c-m = " + hex, "1 = " + hex, " = " + hex,
          "= " + hex, hex + " = crm", "ä = " + hex, std::string("crm"), "crm " + hex,
          std::string(65, 'a') + " = " + hex,
          "\xEF\xBB\xBF"
          "crm = " +
              hex,
          std::string("c\0m = ", 6) + hex, std::string("\xFF\xFE")}) {
        EXPECT_EQ(message, fault(writeSecrets(folder, line + "\n"))) << line;
    }
}

TEST_F(SecretsFileTest, NamesAreGivenOnce) {
    const Folder folder;
    const std::string line = "crm = " + std::string(kHex) + "\n";
    EXPECT_EQ(":3: the secret crm is given twice",
              fault(writeSecrets(folder, line + "\ncrm = " + kBase64)));
    Setting both = withFile(writeSecrets(folder, line));
    both.secrets["crm"] = std::string(16, 'x');
    const Mask mask("A = KEEP", both);
    EXPECT_EQ(KORV_MASK_BAD_RULES, mask.opened);
    EXPECT_EQ(*both.secretsFile + ":1: the secret crm is given twice\n", mask.text());
}

TEST_F(SecretsFileTest, SecretsOfBothPlacesAreUsed) {
    SKIP_WITHOUT_SECRETS();
    const Folder folder;
    Setting both = {{"A", "B"}, 0, {KORV_BROKEN_PROVIDERS}};
    both.secretsFile = writeSecrets(folder, "crm = " + std::string(kHex) + "\n");
    const Mask mask("A = KEYED, secret=test\nB = KEYED, secret=crm", both);
    ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
    EXPECT_STREQ(kPrint, KorvMaskGetColumn(mask.handle, 0)->fingerprint);
    EXPECT_STREQ(kPrint, KorvMaskGetColumn(mask.handle, 1)->fingerprint);
}

TEST_F(SecretsFileTest, NobodyElseMayHaveAccess) {
    const Folder folder;
    const std::string text = "crm = " + std::string(kHex) + "\n";
    for (const mode_t mode : {0640, 0604, 0620, 0602, 0610, 0601, 0644, 0777}) {
        EXPECT_EQ(": other users have access to the secrets; run chmod 600 on the file",
                  fault(writeSecrets(folder, text, mode)))
            << mode;
        unlink((folder.path() + "/secrets.txt").c_str());
    }
    for (const mode_t mode : {0600, 0400, 0700}) {
        const Mask mask("A = KEEP", withFile(writeSecrets(folder, text, mode)));
        EXPECT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
        unlink((folder.path() + "/secrets.txt").c_str());
    }
}

TEST_F(SecretsFileTest, AFileOfAnotherUserIsRefused) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
    const Folder folder;
    const std::string file = writeSecrets(folder, "crm = " + std::string(kHex) + "\n");
    ASSERT_EQ(0, chown(file.c_str(), 65534, 65534));
    EXPECT_EQ(": the file with the secrets belongs to another user", fault(file));
    // Root's own file is good for another user, and so is one of his own.
    for (const uid_t owner : {uid_t{0}, uid_t{65534}}) {
        ASSERT_EQ(0, chown(file.c_str(), owner, 0));
        ASSERT_EQ(0, chmod(folder.path().c_str(), 0755));
        ASSERT_EQ(0, seteuid(65534));
        const Mask mask("A = KEEP", withFile(file));
        ASSERT_EQ(0, seteuid(0));
        // Only its owner can read a file of mode 0600.
        const std::string denied = file + ": cannot open the secrets: Permission denied\n";
        EXPECT_EQ(owner == 0 ? denied : "", mask.text());
    }
}

// The file counts, not the link that leads to it.
TEST_F(SecretsFileTest, LinksAreFollowed) {
    const Folder folder;
    const std::string file = writeSecrets(folder, "crm = " + std::string(kHex) + "\n");
    const std::string link = folder.path() + "/link";
    ASSERT_EQ(0, symlink("secrets.txt", link.c_str()));
    const Mask mask("A = KEEP", withFile(link));
    EXPECT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
    ASSERT_EQ(0, chmod(file.c_str(), 0640));
    EXPECT_EQ(": other users have access to the secrets; run chmod 600 on the file", fault(link));
    ASSERT_EQ(0, unlink(file.c_str()));
    EXPECT_EQ(": cannot open the secrets: No such file or directory", fault(link));
}

TEST_F(SecretsFileTest, OnlyRegularFilesAreRead) {
    const Folder folder;
    const std::string regular = ": secrets are read from a regular file only";
    EXPECT_EQ(regular, fault(folder.path()));
    EXPECT_EQ(regular, fault("/dev/null"));
    // It has no writer: opening it must not wait.
    const std::string fifo = folder.path() + "/fifo";
    ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
    EXPECT_EQ(regular, fault(fifo));
    EXPECT_EQ(": cannot open the secrets: No such file or directory",
              fault(folder.path() + "/missing"));
    EXPECT_EQ(": cannot open the secrets: Not a directory", fault("/dev/null/x"));
}

TEST_F(SecretsFileTest, AFileOfMoreThan1MiBIsNotRead) {
    const Folder folder;
    const std::string file = writeSecrets(folder, "");
    ASSERT_EQ(0, truncate(file.c_str(), (1 << 20) + 1));
    EXPECT_EQ(": larger than 1 MiB", fault(file));
    std::string comments(1 << 20, '#');
    const Mask mask("A = KEEP", withFile(writeSecrets(folder, comments)));
    EXPECT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
}

// Not even a piece of a value, wherever it stands in the file.
TEST_F(SecretsFileTest, NoMessageHoldsASecret) {
    const Folder folder;
    const std::string hex = kHex;
    for (const std::string& text :
         {hex, "crm = " + hex + "g", "crm = " + hex + hex + hex, "crm = " + hex + "\ncrm = " + hex,
          hex + " = " + hex, "Crm = " + hex, "crm " + hex, "crm = x" + hex}) {
        const std::string message = fault(writeSecrets(folder, text));
        for (size_t i = 0; i + 8 <= hex.size(); ++i) {
            EXPECT_FALSE(contains(message, hex.substr(i, 8))) << message;
        }
    }
}

TEST_F(SecretsFileTest, TheFileIsReadWithoutRulesAsWell) {
    const Folder folder;
    Setting all = withFile(writeSecrets(folder, "nothing\n"));
    all.flags = KORV_MASK_ALL_PROVIDERS;
    all.columns.clear();
    all.folders = {KORV_PROVIDERS};
    EXPECT_EQ(KORV_MASK_BAD_RULES, Mask(std::nullopt, all).opened);
    all.secretsFile = writeSecrets(folder, "crm = " + std::string(kHex));
    EXPECT_EQ(KORV_MASK_SUCCESS, Mask(std::nullopt, all).opened);
}

}  // namespace
