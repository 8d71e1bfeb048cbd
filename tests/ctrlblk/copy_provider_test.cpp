// Provider records filled from provider descriptions: codes, and texts in either width.
#include "ctrlblk/records.h"
#include "support/fenced.h"

namespace {

constexpr std::uint32_t kUtf8 = 1208;

class CopyProvider : public HeapTest {};

void expectCodes(const PrvDesc& source, const PrvRecord& before, const PrvRecord& target) {
    EXPECT_MEMBER(source, target, prvCode1);
    EXPECT_MEMBER(source, target, prvCode2);
    EXPECT_MEMBER(source, target, prvAttr1);
    EXPECT_EQ(source.prvAttr2 & 0xFFFF, target.prvAttr2);
    EXPECT_MEMBER(before, target, reserved1);
    EXPECT_MEMBER(before, target, text1Cap);
    EXPECT_MEMBER(before, target, text2Cap);
    EXPECT_MEMBER(before, target, texts);
}

std::wstring letters(std::size_t count, wchar_t first) {
    std::wstring text;
    for (std::size_t i = 0; i < count; ++i) text += static_cast<wchar_t>(first + i);
    return text;
}

// What the first `room` characters of a buffer hold after a copy: the text, cut or padded with
// zeros.
std::wstring cutOrPadded(const std::wstring& text, std::size_t room) {
    std::wstring result = text.substr(0, room);
    result.resize(room, L'\0');
    return result;
}

TEST_F(CopyProvider, CopiesWideTextsCutOrPaddedToTheCapacity) {
    for (std::size_t room = 0; room <= 20; ++room) {
        for (std::size_t length = 0; length <= 70; length += length < 24 ? 1 : 23) {
            const std::wstring text1 = letters(length, 0x4E00);
            const std::wstring text2 = letters(70 - length, 0x1F600);
            Fenced<wchar_t> source1{std::wstring_view(text1)};
            Fenced<wchar_t> source2{std::wstring_view(text2)};
            Fenced<wchar_t> buffer1(room);
            Fenced<wchar_t> buffer2(20 - room);
            void* buffers[] = {buffer1.data(), buffer2.data()};
            PrvDesc source = rubbish<PrvDesc>(51);
            source.text1 = source1.data();
            source.text2 = source2.data();
            PrvRecord target = rubbish<PrvRecord>(52);
            target.texts = buffers;
            target.text1Cap = static_cast<std::uint32_t>(room * 4);
            target.text2Cap = static_cast<std::uint32_t>((20 - room) * 4);
            const PrvRecord before = target;
            ASSERT_EQ(0, CopyPrvStruct(&target, &source, kUtf8, 0, 'W'));
            expectCodes(source, before, target);
            ASSERT_EQ(cutOrPadded(text1, room), std::wstring(buffer1.data(), room));
            ASSERT_EQ(cutOrPadded(text2, 20 - room), std::wstring(buffer2.data(), 20 - room));
            ASSERT_TRUE(buffer1.intact());
            ASSERT_TRUE(buffer2.intact());
        }
    }
}

TEST_F(CopyProvider, CountsWholeCharactersOfTheCapacity) {
    for (std::uint32_t capacity = 0; capacity <= 20; ++capacity) {
        wchar_t buffer1[5], buffer2[5], untouched[5];
        for (auto* buffer : {buffer1, buffer2, untouched})
            std::memset(buffer, 0x5C, sizeof buffer1);
        void* buffers[] = {buffer1, buffer2};
        PrvDesc source{};
        source.text1 = L"abcdefgh";
        source.text2 = L"stuvwxyz";
        PrvRecord target{};
        target.texts = buffers;
        target.text1Cap = capacity;
        target.text2Cap = 20 - capacity;
        ASSERT_EQ(0, CopyPrvStruct(&target, &source, kUtf8, 0, 'W'));
        const std::size_t first = capacity / 4;
        const std::size_t second = (20 - capacity) / 4;
        EXPECT_EQ(std::wstring(L"abcdefgh", first), std::wstring(buffer1, first));
        EXPECT_EQ(std::wstring(L"stuvwxyz", second), std::wstring(buffer2, second));
        EXPECT_EQ(std::wstring(untouched, 5 - first), std::wstring(buffer1 + first, 5 - first));
        EXPECT_EQ(std::wstring(untouched, 5 - second), std::wstring(buffer2 + second, 5 - second));
    }
}

TEST_F(CopyProvider, TakesEveryModeButOneForWide) {
    for (int mode = 0; mode <= 255; ++mode) {
        if (mode == 'M') continue;
        wchar_t buffer1[4], buffer2[4];
        void* buffers[] = {buffer1, buffer2};
        PrvDesc source{};
        source.text1 = L"one";
        source.text2 = L"two";
        PrvRecord target{};
        target.texts = buffers;
        target.text1Cap = target.text2Cap = 16;
        ASSERT_EQ(0, CopyPrvStruct(&target, &source, kUtf8, 0, static_cast<std::uint8_t>(mode)));
        EXPECT_STREQ(L"one", buffer1) << mode;
        EXPECT_STREQ(L"two", buffer2) << mode;
    }
}

TEST_F(CopyProvider, NarrowsTheTexts) {
    Fenced<char> buffer1(5);
    Fenced<char> buffer2(6);
    void* buffers[] = {buffer1.data(), buffer2.data()};
    PrvDesc source = rubbish<PrvDesc>(51);
    source.prvAttr2 = 0xABCD1234;
    source.text1 = L"Zo\u00EB";
    source.text1Len = 3;
    source.text2 = L"\u20ACuro";
    source.text2Len = 3;
    PrvRecord target = rubbish<PrvRecord>(52);
    target.texts = buffers;
    target.text1Cap = 5;
    target.text2Cap = 6;
    const PrvRecord before = target;
    ASSERT_EQ(0, CopyPrvStruct(&target, &source, kUtf8, 0, 'M'));
    expectCodes(source, before, target);
    EXPECT_EQ(0x1234, target.prvAttr2);
    EXPECT_STREQ("Zo\xC3\xAB", buffer1.data());
    EXPECT_STREQ("\xE2\x82\xACur", buffer2.data());
    EXPECT_TRUE(buffer1.intact());
    EXPECT_TRUE(buffer2.intact());
}

TEST_F(CopyProvider, ReportsATextThatDoesNotFitWhenNarrowed) {
    char buffer1[8], buffer2[8] = "before";
    void* buffers[] = {buffer1, buffer2};
    PrvDesc source = rubbish<PrvDesc>(51);
    source.text1 = L"four";
    source.text2 = L"five5";
    source.text1Len = 4;
    source.text2Len = 5;
    PrvRecord target = rubbish<PrvRecord>(52);
    target.texts = buffers;
    target.text1Cap = 4;
    target.text2Cap = 8;
    const PrvRecord before = target;
    EXPECT_GT(CopyPrvStruct(&target, &source, kUtf8, 0, 'M'), 0);
    expectCodes(source, before, target);
    EXPECT_STREQ("before", buffer2);
    target.text1Cap = 5;
    target.text2Cap = 5;
    EXPECT_GT(CopyPrvStruct(&target, &source, kUtf8, 0, 'M'), 0);
    EXPECT_STREQ("four", buffer1);
}

}  // namespace
