// Trimming: what is collected, what is copied back, and how the source is left cut.
#include <cstdint>
#include <cwchar>
#include <random>
#include <string>
#include <vector>

#include "korv/text.h"
#include "reference/text.h"
#include "text/places.h"

namespace {

class Trim : public testing::Test {
  protected:
    static constexpr std::size_t room = 128;

    void expectTrimmed(const std::wstring& text, const std::wstring& delimiters, uint8_t mode) {
        const std::vector<wchar_t> original(text.c_str(), text.c_str() + text.size() + 1);
        std::vector<wchar_t> left = original;
        std::vector<wchar_t> buffer(original.size());
        uint32_t expectedLength = 77;
        reference::trim(left.data(), &expectedLength, delimiters.c_str(), buffer.data(), mode);
        const std::wstring collected = buffer.data();

        const std::size_t bytes = original.size() * sizeof(wchar_t);
        wchar_t* source = source_.data() + room - original.size();
        wchar_t* work = work_.data() + room - original.size();
        wchar_t* set = delimiters_.data() + room - delimiters.size() - 1;
        std::memcpy(source, original.data(), bytes);
        std::memset(work_.data(), work_.canary, room * sizeof(wchar_t));
        const wchar_t untouched = work_[0];
        std::memcpy(set, delimiters.c_str(), (delimiters.size() + 1) * sizeof(wchar_t));
        uint32_t length = 77;
        SCOPED_TRACE(testing::Message()
                     << '<' << text << "> without <" << delimiters << "> mode " << int(mode));
        ASSERT_EQ(0, TrimSourceW(source, &length, set, work, mode));
        ASSERT_EQ(expectedLength, length);
        ASSERT_EQ(0, work[collected.size()]);
        ASSERT_TRUE(collected == work);
        ASSERT_EQ(0, std::memcmp(left.data(), source, bytes)) << "source";
        for (wchar_t* p = work_.data(); p < work; ++p) ASSERT_EQ(untouched, *p);
        ASSERT_EQ(delimiters, set);
    }

    Fenced<wchar_t> source_ = Fenced<wchar_t>(room);
    Fenced<wchar_t> work_ = Fenced<wchar_t>(room);
    Fenced<wchar_t> delimiters_ = Fenced<wchar_t>(room);
};

TEST_F(Trim, ModeOneCopiesTheResultBack) {
    wchar_t source[] = L"--ab-c--d-";
    wchar_t work[16];
    uint32_t length = 77;
    EXPECT_EQ(0, TrimSourceW(source, &length, L"-", work, 1));
    EXPECT_STREQ(L"abcd", source);
    EXPECT_STREQ(L"abcd", work);
    EXPECT_EQ(4u, length);
}

TEST_F(Trim, OtherModesLeaveTheSourceCut) {
    for (int mode = 0; mode < 256; ++mode) {
        if (mode == 1) continue;
        wchar_t source[] = L"--ab-c--d-";
        wchar_t work[16];
        uint32_t length = 77;
        EXPECT_EQ(0, TrimSourceW(source, &length, L"-", work, static_cast<uint8_t>(mode)));
        EXPECT_EQ(std::wstring(L"--ab\0c\0-d\0", 11), std::wstring(source, 11));
        EXPECT_STREQ(L"abcd", work);
        EXPECT_EQ(77u, length);
        EXPECT_EQ(0, TrimSourceW(source, nullptr, L"-", work, static_cast<uint8_t>(mode)));
    }
}

TEST_F(Trim, EmptySourceIsRefused) {
    wchar_t work[] = L"untouched";
    uint32_t length = 77;
    EXPECT_EQ(KORV_FAILURE, TrimSourceW(nullptr, &length, L"-", work, 1));
    EXPECT_EQ(KORV_FAILURE, TrimSourceW(nullptr, &length, L"-", work, 0));
    EXPECT_STREQ(L"untouched", work);
    EXPECT_EQ(77u, length);
}

TEST_F(Trim, NothingIsLeftOfDelimitersAlone) {
    for (const wchar_t* text : {L"", L"-", L"----", L"-+-"}) {
        expectTrimmed(text, L"-+", 1);
        expectTrimmed(text, L"-+", 0);
    }
}

TEST_F(Trim, EveryShortTextIsTrimmedAsTheSystemsTokeniserDoes) {
    forEachText<wchar_t>(L"- a\xE9", 7, [&](const std::wstring& text) {
        for (const wchar_t* delimiters : {L"", L"-", L"- ", L" -\xE9"}) {
            for (const uint8_t mode : {0, 1, 2}) {
                expectTrimmed(text, delimiters, mode);
                if (HasFatalFailure()) return;
            }
        }
    });
    EXPECT_TRUE(source_.intact());
    EXPECT_TRUE(work_.intact());
}

TEST_F(Trim, TextsAreTrimmedAtEveryLengthWithSetsOfEverySize) {
    std::mt19937 random(6);
    const auto draw = [&](unsigned kind) {
        const wchar_t far[] = {0x10FFFF, INT32_MIN + 'a', -1, 0x161, 0x10061, 'a', 1, INT32_MAX};
        return kind == 0 ? static_cast<wchar_t>('a' + random() % 26) : far[random() % 8];
    };
    for (std::size_t length = 0; length <= 70; ++length) {
        for (std::size_t size = 0; size <= 20; ++size) {
            std::wstring text(length, L' '), delimiters(size, L' ');
            const unsigned kind = random() % 2;
            for (wchar_t& c : text) c = draw(kind);
            for (wchar_t& c : delimiters) c = draw(kind);
            expectTrimmed(text, delimiters, 1);
            expectTrimmed(text, delimiters, 0);
            if (HasFatalFailure()) return;
        }
    }
}

TEST_F(Trim, ASingleDelimiterIsFoundAtEveryPosition) {
    for (std::size_t length = 1; length <= 70; ++length) {
        for (std::size_t at = 0; at < length; ++at) {
            std::wstring text(length, L'x');
            text[at] = L';';
            expectTrimmed(text, L";", 0);
            expectTrimmed(text, L",;", 1);
            if (HasFatalFailure()) return;
        }
    }
}

}  // namespace
