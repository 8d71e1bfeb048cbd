// What becomes of the answers of iconv, which this program defines in place of the system's: that
// one hardly ever gives some of them.
#include <iconv.h>

#include <cerrno>
#include <string>

#include "datacnv/outcome.h"

namespace {

int openError = 0;       // the error of opening, or 0
std::size_t result = 0;  // the answer of a conversion, which converts nothing
int conversionError = 0;
int descriptors = 0;  // opened and not closed

}  // namespace

extern "C" {

iconv_t iconv_open(const char*, const char*) {
    errno = openError;
    if (openError) return reinterpret_cast<iconv_t>(-1);
    ++descriptors;
    return &descriptors;
}
std::size_t iconv(iconv_t, char** source, std::size_t*, char**, std::size_t*) {
    errno = conversionError;
    return source ? result : 0;
}
int iconv_close(iconv_t) {
    --descriptors;
    return 0;
}
}

namespace {

class IconvAnswers : public testing::Test {
  protected:
    static constexpr auto refused = static_cast<std::size_t>(-1);

    void TearDown() override { EXPECT_EQ(0, descriptors); }

    void answer(int open, std::size_t conversion, int error) {
        openError = open;
        result = conversion;
        conversionError = error;
    }
    void expectStatus(int32_t widening, int32_t narrowing) {
        expectFailure<wchar_t>(widening, 3, fixedText("abc", &options_));
        expectFailure<char>(narrowing, 3, narrowed(L"abc", &options_));
    }

    const CnvOptions options_ = codePage(1252);
};

TEST_F(IconvAnswers, AnUnknownConversionIsAnUnknownCodePage) {
    answer(EINVAL, 0, 0);
    expectStatus(CNV_UNKNOWN_CODE_PAGE, CNV_UNKNOWN_CODE_PAGE);
}

TEST_F(IconvAnswers, NeitherMemoryNorHandlesToOpenAConversion) {
    for (const int error : {ENOMEM, EMFILE, ENFILE}) {
        answer(error, 0, 0);
        expectStatus(CNV_NO_MEMORY, CNV_NO_MEMORY);
    }
}

TEST_F(IconvAnswers, ACharacterReplacedByAnotherIsRefused) {
    answer(0, 1, 0);
    expectStatus(CNV_MALFORMED_SOURCE, CNV_UNCONVERTIBLE);
}

TEST_F(IconvAnswers, TextThatIsNotTakenIsRefused) {
    for (const int error : {EILSEQ, EINVAL}) {
        answer(0, refused, error);
        expectStatus(CNV_MALFORMED_SOURCE, CNV_UNCONVERTIBLE);
    }
}

// A character may need more room than is left without having taken any of it.
TEST_F(IconvAnswers, AFullTargetIsTooSmall) {
    answer(0, refused, E2BIG);
    expectStatus(CNV_TARGET_TOO_SMALL, CNV_TARGET_TOO_SMALL);
}

TEST_F(IconvAnswers, ASuccessIsTakenAtItsWord) {
    answer(0, 0, E2BIG);
    Fenced<wchar_t> wide(4);
    uint32_t length = kUntouched;
    EXPECT_EQ(CNV_SUCCESS, fixedText("abc", &options_)(wide.data(), 16, &length));
    EXPECT_EQ(0u, length);
    EXPECT_EQ(0, wide[0]);
}

}  // namespace
