// Numbers name code pages: known characters of each, and what is text in none of them.
#include <string>

#include "datacnv/outcome.h"

namespace {

using std::string_literals::operator""s;

// Written from the published code charts.
struct Known {
    const char* name;
    uint32_t number;
    std::string narrow;
    std::wstring wide;
};

void PrintTo(const Known& known, std::ostream* out) {
    *out << known.name;
}

const Known kKnown[] = {
    {"Utf8", 1208, "A\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", L"A\x00E4\x20AC\U0001F600"},
    {"Utf8OfWindows", 65001, "\xC3\xA4", L"\x00E4"},
    {"Latin1", 819, "A\xE4\xFF\x80", L"A\x00E4\x00FF\x0080"},
    {"Latin1OfWindows", 28591, "\xE4", L"\x00E4"},
    {"Latin2", 28592, "\xA3\xB3", L"\x0141\x0142"},
    {"Latin9", 28605, "\xA4\xBD", L"\x20AC\x0153"},
    {"Ascii", 367, "Az", L"Az"},
    {"AsciiOfWindows", 20127, "Az", L"Az"},
    {"Utf16", 1200, "A\0\xAC\x20\x3D\xD8\x00\xDE"s, L"A\x20AC\U0001F600"},
    {"Utf16BigEndian", 1201, "\0A\x20\xAC\xD8\x3D\xDE\x00"s, L"A\x20AC\U0001F600"},
    {"Utf16MarkIsACharacter", 1200,
     "\xFF\xFE"
     "A\0"s,
     L"\xFEFF"
     L"A"},
    {"Utf16BigEndianMarkIsACharacter", 1201, "\xFE\xFF\0A"s,
     L"\xFEFF"
     L"A"},
    {"Utf32", 12000, "\x00\xF6\x01\0"s, L"\U0001F600"},
    {"Utf32BigEndian", 12001, "\0\x01\xF6\x00"s, L"\U0001F600"},
    {"Windows", 1252, "\x80\x9C\x99\xE4", L"\x20AC\x0153\x2122\x00E4"},
    {"WindowsEastern", 1250, "\x8A\xB9", L"\x0160\x0105"},
    {"Multilingual", 850, "\x84\x81\x9C\xD5", L"\x00E4\x00FC\x00A3\x0131"},
    {"UnitedStates", 437, "\x84\xE3\xFB", L"\x00E4\x03C0\x221A"},
    {"Ebcdic", 37, "\xC1\xF1\x5F\x4A\xBA", L"A1\x00AC\x00A2["},
    {"EbcdicInternational", 500, "\xC1\x4A\x5A", L"A[]"},
    {"EbcdicOpenSystems", 1047, "\xC1\xAD\xBD\x5F\xB0", L"A[]^\x00AC"},
    {"EbcdicGerman", 273, "\xC0\xD0\x4A", L"\x00E4\x00FC\x00C4"},
    {"Japanese", 943, "A\x82\xA0\x93\xFA\xB1", L"A\x3042\x65E5\xFF71"},
    {"JapaneseWindows", 932, "\x82\xA0\x93\xFA", L"\x3042\x65E5"},
    {"JapaneseUnix", 51932, "\xA4\xA2", L"\x3042"},
    {"Chinese", 54936, "\xD6\xD0\x94\x39\xFC\x36", L"\x4E2D\U0001F600"},
    {"ChineseOfIbm", 1392, "\xD6\xD0", L"\x4E2D"},
    {"Korean", 949, "\xB0\xA1", L"\xAC00"},
};

class KnownPage : public testing::TestWithParam<Known> {};

TEST_P(KnownPage, Widens) {
    const CnvOptions options = codePage(GetParam().number);
    expectText(GetParam().wide, fixedText(GetParam().narrow, &options));
}

TEST_P(KnownPage, Narrows) {
    const CnvOptions options = codePage(GetParam().number);
    expectText(GetParam().narrow, narrowed(GetParam().wide, &options));
}

TEST_P(KnownPage, EmptyTextStaysEmpty) {
    const CnvOptions options = codePage(GetParam().number);
    expectText(std::wstring(), fixedText("", &options));
    expectText(std::string(), narrowed(L"", &options));
}

INSTANTIATE_TEST_SUITE_P(All, KnownPage, testing::ValuesIn(kKnown),
                         [](const auto& page) { return std::string(page.param.name); });

TEST(CodePages, PagesWithShiftsReturnToTheirStart) {
    const CnvOptions options = codePage(939);
    const std::string text = "\xC1\x0E\x44\x81\x0F";  // A, shift out, hiragana a, shift in
    expectText(std::wstring(L"A\x3042"), fixedText(text, &options));
    expectText(text, narrowed(L"A\x3042", &options));
}

TEST(CodePages, TheFirstFaultIsTheOneReported) {
    const CnvOptions options = codePage(1252);
    EXPECT_EQ(CNV_TARGET_TOO_SMALL, statusAt<wchar_t>(8, fixedText("ab\x81", &options)));
    EXPECT_EQ(CNV_MALFORMED_SOURCE, statusAt<wchar_t>(8, fixedText("a\x81"
                                                                   "b",
                                                                   &options)));
}

// A letter waits in the converter for an accent that may follow.
TEST(CodePages, AHeldBackCharacterIsNotLost) {
    const CnvOptions options = codePage(1258);
    expectText(std::wstring(L"xa"), fixedText("xa", &options));
    expectText(std::wstring(L"x\x00E1"), fixedText("xa\xEC", &options));
}

TEST(CodePages, UnknownNumbersAreToldApartFromBadText) {
    for (uint32_t number : {0u, 1u, 99999u, 4294967295u, 0x80000000u, 28590u, 28602u, 28606u}) {
        const CnvOptions options = codePage(number);
        expectFailure<wchar_t>(CNV_UNKNOWN_CODE_PAGE, 4, fixedText("a", &options));
        expectFailure<wchar_t>(CNV_UNKNOWN_CODE_PAGE, 4, fixedText("", &options));
        expectFailure<char>(CNV_UNKNOWN_CODE_PAGE, 4, narrowed(L"a", &options));
        expectFailure<char>(CNV_UNKNOWN_CODE_PAGE, 4, narrowed(L"", &options));
    }
}

TEST(CodePages, BytesThatThePageLacksAreMalformed) {
    const struct {
        uint32_t number;
        const char* text;
    } rows[] = {{1252, "a\x81"}, {367, "a\x80"}, {943, "a\x82\x20"}, {54936, "a\xFF\xFF"}};
    for (const auto& row : rows) {
        const CnvOptions options = codePage(row.number);
        expectFailure<wchar_t>(CNV_MALFORMED_SOURCE, 4, fixedText(row.text, &options));
    }
}

TEST(CodePages, TextCutInsideACharacterIsMalformed) {
    const struct {
        uint32_t number;
        std::string text;
    } rows[] = {{943, "a\x82"},
                {932, "\x93"},
                {54936, "a\x94\x39\xFC"},
                {1200, "A"},
                {1200, "\x3D\xD8"},
                {1200,
                 "\x3D\xD8"
                 "A\0"s},
                {1201, "\xDE\x00"s},
                {12000, "\x00\xF6\x01"s},
                {51932, "\xA4"}};
    for (const auto& row : rows) {
        const CnvOptions options = codePage(row.number);
        expectFailure<wchar_t>(CNV_MALFORMED_SOURCE, 4, fixedText(row.text, &options));
    }
}

TEST(CodePages, EveryBytePageSurvivesThereAndBack) {
    for (uint32_t number : {37u, 437u, 850u, 1047u, 1250u, 1252u, 28592u}) {
        const CnvOptions options = codePage(number);
        int characters = 0;
        for (int byte = 1; byte < 256; ++byte) {
            const char source = static_cast<char>(byte);
            const uint32_t length = 1;
            wchar_t wide[2];
            char back[2];
            uint32_t outLen = 0;
            if (KORVCnvCharToWVarcharSz(&source, &length, wide, sizeof wide, &outLen, &options)) {
                continue;
            }
            ++characters;
            ASSERT_EQ(1u, outLen);
            ASSERT_EQ(CNV_SUCCESS, KORVCnvWVarcharSzToVarcharSz(wide, &length, back, sizeof back,
                                                                &outLen, &options));
            ASSERT_EQ(source, back[0]) << number;
        }
        EXPECT_LE(245, characters) << number;
    }
}

}  // namespace
