// Deep copies of field definitions.
#include <climits>

#include "ctrlblk/records.h"
#include "support/fenced.h"

namespace {

class Duplicate : public HeapTest {};

// A source without texts and the other members full of rubbish.
FieldDefI bare() {
    FieldDefI field = rubbish<FieldDefI>(11);
    field.wideText = nullptr;
    field.narrowText = nullptr;
    field.wideTextLen = 0;
    field.narrowTextLen = 0;
    return field;
}

// What the copy must hold besides its texts.
void expectCopied(const FieldDefI& source, const FieldDefI& copy) {
    expectFieldCarried(source, copy);
    expectSameHeader(source.header, copy.header);
    EXPECT_MEMBER(source, copy, fldExtra);
    EXPECT_EQ(nullptr, copy.link);
}

template <class Char>
void fill(Fenced<Char>& text, unsigned seed) {
    std::mt19937 random(seed);
    for (std::size_t i = 0; i < text.size(); ++i) text[i] = static_cast<Char>(random());
}

TEST_F(Duplicate, CopiesBothTextsOfAnyLength) {
    for (std::size_t narrow = 1; narrow <= 70; ++narrow) {
        const std::size_t wide = 71 - narrow;
        Fenced<char> narrowText(narrow);
        Fenced<wchar_t> wideText(wide);
        fill(narrowText, static_cast<unsigned>(narrow));
        fill(wideText, static_cast<unsigned>(wide));
        FieldDefI source = bare();
        source.narrowText = narrowText.data();
        source.narrowTextLen = static_cast<std::int32_t>(narrow);
        source.wideText = wideText.data();
        source.wideTextLen = static_cast<std::int32_t>(wide * 4);
        const FieldDefI before = source;
        FieldDefI copy = rubbish<FieldDefI>(12);
        ASSERT_EQ(0, DuplicateFieldDefI(&copy, &source));
        expectCopied(source, copy);
        expectSame(before, source);
        ASSERT_NE(source.narrowText, copy.narrowText);
        ASSERT_NE(source.wideText, copy.wideText);
        ASSERT_EQ(narrow, heap::sizeOf(copy.narrowText));
        ASSERT_EQ(wide * 4, heap::sizeOf(copy.wideText));
        EXPECT_EQ(0, std::memcmp(narrowText.data(), copy.narrowText, narrow));
        EXPECT_EQ(0, std::memcmp(wideText.data(), copy.wideText, wide * 4));
        EXPECT_TRUE(narrowText.intact());
        EXPECT_TRUE(wideText.intact());
        std::free(copy.narrowText);
        std::free(copy.wideText);
    }
}

// All bytes are copied and lie in the block, whatever its size is.
TEST_F(Duplicate, KeepsWideLengthsOfPartialUnitsInsideTheBlock) {
    const wchar_t text[] = L"0123456789abcdef";
    for (std::int32_t length = 1; length <= 64; ++length) {
        FieldDefI source = bare();
        source.wideText = const_cast<wchar_t*>(text);
        source.wideTextLen = length;
        FieldDefI copy = rubbish<FieldDefI>(12);
        ASSERT_EQ(0, DuplicateFieldDefI(&copy, &source));
        expectCopied(source, copy);
        ASSERT_NE(nullptr, copy.wideText) << length;
        ASSERT_LE(static_cast<std::size_t>(length), heap::sizeOf(copy.wideText));
        EXPECT_EQ(0, std::memcmp(text, copy.wideText, static_cast<std::size_t>(length)));
        std::free(copy.wideText);
    }
}

TEST_F(Duplicate, LeavesTextsWithoutLengthEmpty) {
    char narrow[] = "x";
    wchar_t wide[] = L"x";
    for (const std::int32_t length : {0, -1, -4, INT_MIN}) {
        FieldDefI source = bare();
        source.narrowText = narrow;
        source.wideText = wide;
        source.narrowTextLen = length;
        source.wideTextLen = length;
        FieldDefI copy = rubbish<FieldDefI>(12);
        ASSERT_EQ(0, DuplicateFieldDefI(&copy, &source));
        expectCopied(source, copy);
        EXPECT_EQ(nullptr, copy.narrowText) << length;
        EXPECT_EQ(nullptr, copy.wideText) << length;
    }
}

TEST_F(Duplicate, LeavesMissingTextsEmptyWhateverTheirLength) {
    FieldDefI source = bare();
    source.narrowTextLen = 5;
    source.wideTextLen = 8;
    FieldDefI copy = rubbish<FieldDefI>(12);
    ASSERT_EQ(0, DuplicateFieldDefI(&copy, &source));
    expectCopied(source, copy);
    EXPECT_EQ(nullptr, copy.narrowText);
    EXPECT_EQ(nullptr, copy.wideText);
}

TEST_F(Duplicate, CopiesOneTextWithoutTheOther) {
    char narrow[] = "one";
    wchar_t wide[] = L"one";
    FieldDefI source = bare();
    source.narrowText = narrow;
    source.narrowTextLen = sizeof narrow;
    FieldDefI copy = rubbish<FieldDefI>(12);
    ASSERT_EQ(0, DuplicateFieldDefI(&copy, &source));
    EXPECT_STREQ(narrow, copy.narrowText);
    EXPECT_EQ(nullptr, copy.wideText);
    std::free(copy.narrowText);

    source = bare();
    source.wideText = wide;
    source.wideTextLen = sizeof wide;
    ASSERT_EQ(0, DuplicateFieldDefI(&copy, &source));
    EXPECT_STREQ(wide, copy.wideText);
    EXPECT_EQ(nullptr, copy.narrowText);
    std::free(copy.wideText);
}

TEST_F(Duplicate, NeedsBothRecords) {
    const FieldDefI source = bare();
    FieldDefI copy = rubbish<FieldDefI>(12);
    const FieldDefI before = copy;
    EXPECT_EQ(KORV_FAILURE, DuplicateFieldDefI(&copy, nullptr));
    EXPECT_EQ(0, std::memcmp(&before, &copy, sizeof copy));
    EXPECT_EQ(KORV_FAILURE, DuplicateFieldDefI(nullptr, &source));
    EXPECT_EQ(KORV_FAILURE, DuplicateFieldDefI(nullptr, nullptr));
}

TEST_F(Duplicate, WithoutMemoryLeavesNoTexts) {
    char narrow[] = "two";
    wchar_t wide[] = L"two";
    struct Case {
        bool narrow, wide;
        unsigned failing;
        std::int32_t status;
    };
    for (const Case& c : {Case{true, true, 1, KORV_NO_MEMORY_NARROW_TEXT},
                          Case{true, true, 2, KORV_NO_MEMORY_WIDE_TEXT},
                          Case{true, false, 1, KORV_NO_MEMORY_NARROW_TEXT},
                          Case{false, true, 1, KORV_NO_MEMORY_WIDE_TEXT}}) {
        FieldDefI source = bare();
        source.narrowText = c.narrow ? narrow : nullptr;
        source.wideText = c.wide ? wide : nullptr;
        source.narrowTextLen = sizeof narrow;
        source.wideTextLen = sizeof wide;
        FieldDefI copy = rubbish<FieldDefI>(12);
        const std::size_t live = heap::liveBlocks();
        heap::failAt(c.failing);
        EXPECT_EQ(c.status, DuplicateFieldDefI(&copy, &source));
        EXPECT_EQ(c.failing, heap::allocations());
        heap::failAt(0);
        expectCopied(source, copy);
        EXPECT_EQ(nullptr, copy.narrowText);
        EXPECT_EQ(nullptr, copy.wideText);
        EXPECT_EQ(live, heap::liveBlocks());
    }
}

}  // namespace
