// Modules that contradict their interface are refused when they are loaded, and never called.
#include "c_interface.h"

namespace {

// The fault, and a word that its message must have, so that its author finds it.
struct Refused {
    const char* provider;
    const char* word;
};

void PrintTo(const Refused& refused, std::ostream* out) {
    *out << refused.provider;
}

class RefusedProvidersTest : public EngineTest, public testing::WithParamInterface<Refused> {};

TEST_P(RefusedProvidersTest, IsNotLoaded) {
    const std::string name = std::string("BROKEN_") + GetParam().provider;
    const Mask mask("# rules\n A = " + name);
    EXPECT_EQ(KORV_MASK_BAD_PROVIDER, mask.opened);
    ASSERT_EQ(1u, mask.records().size()) << mask.text();
    const KorvMaskRecord& record = *mask.records()[0];
    EXPECT_EQ(KORV_MASK_BAD_PROVIDER, record.status);
    EXPECT_EQ(0u, std::string(record.message).find("rules:2:6: ")) << record.message;
    EXPECT_EQ(2u, record.rulesLine);
    EXPECT_EQ(6u, record.rulesPosition);
    EXPECT_TRUE(contains(record.message, GetParam().word)) << record.message;
    // Its module is named in full.
    std::string module = name;
    for (char& c : module) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    EXPECT_TRUE(contains(record.message, KORV_BROKEN_PROVIDERS "/" + module + ".so"))
        << record.message;
}

INSTANTIATE_TEST_SUITE_P(
    Faults, RefusedProvidersTest,
    testing::Values(Refused{"CODE_TWICE", "code 1"}, Refused{"ENTRY_NULL", ""},
                    Refused{"ERRORS_NULL", "error"}, Refused{"ERROR_HIGH", "9000"},
                    Refused{"ERROR_TEXT_NULL", "2"}, Refused{"ERROR_TWICE", "1"},
                    Refused{"ERROR_ZERO", "0"}, Refused{"KEY_DIGIT", "operand key"},
                    Refused{"KEY_EMPTY", "operand key"}, Refused{"KEY_HYPHEN", "operand key"},
                    Refused{"KEY_LOWER", "operand key"}, Refused{"KEY_METHOD", "METHOD"},
                    Refused{"KEY_SCOPE", "SCOPE"}, Refused{"KEY_SECRET", "SECRET"},
                    Refused{"KEY_UNIQUE", "UNIQUE"}, Refused{"KEY_NULL", "operand key"},
                    Refused{"KEY_TWICE", "FIRST"}, Refused{"KEY_TYPE", "TYPE"},
                    Refused{"KEY_UNCHANGED", "UNCHANGED"}, Refused{"KIND", "SECOND"},
                    Refused{"KIND_NEGATIVE", "SECOND"}, Refused{"METHOD_CAPITAL", "method"},
                    Refused{"METHOD_DIGIT", "method"}, Refused{"METHOD_EMPTY", "method"},
                    Refused{"METHOD_HYPHEN", "method"}, Refused{"METHOD_NULL", "method"},
                    Refused{"METHOD_TWICE", "first"}, Refused{"METHODS_NULL", "methods"},
                    Refused{"NAME_LOWER", "name"}, Refused{"NAME_NULL", "name"},
                    Refused{"NAME_OTHER", "COPY"}, Refused{"NO_CLOSE", "close"},
                    Refused{"NO_MASK", "mask"}, Refused{"NO_OPEN", "open"},
                    Refused{"NO_SYMBOL", "KorvProviderEntry"}, Refused{"OPERANDS_NULL", "operand"},
                    Refused{"REVERSED_BOUNDS", "FIRST"}, Refused{"SAMPLES_NULL", "sample"},
                    Refused{"TWO_COLUMNS", "column"}, Refused{"VERSION_0", "version 0"},
                    Refused{"VERSION_99", "version 99"}),
    [](const testing::TestParamInfo<Refused>& info) { return info.param.provider; });

// Rules have no such name either.
TEST(RefusedNamesTest, ATooLongNameIsNoProviders) {
    const Mask mask("A = BROKEN_NAME_OF_32_CHARACTERS_OR_MORE");
    EXPECT_TRUE(mask.opened == KORV_MASK_BAD_RULES || mask.opened == KORV_MASK_BAD_PROVIDER);
    ASSERT_EQ(1u, mask.records().size());
    EXPECT_EQ(5u, mask.records()[0]->rulesPosition);
}

}  // namespace
