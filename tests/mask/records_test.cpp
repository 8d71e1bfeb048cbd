// Error records of values: their order, their members, and what they never hold.
#include "c_interface.h"
#include "korv/provider.h"

namespace {

using RecordsTest = EngineTest;

std::string tokensOf(const KorvMaskRecord& record) {
    std::string text;
    for (uint32_t i = 0; i < record.tokenCount; ++i) {
        const KorvMaskToken& token = record.tokens[i];
        text += std::to_string(token.id) + " " + token.name + "=" + token.text + ";";
    }
    return text;
}

TEST_F(RecordsTest, AFailedValueHasARecordWithItsTokens) {
    Mask mask("B = COPY\n\nA = FAILS", {{"B", "A"}, 0, {KORV_BROKEN_PROVIDERS}});
    mask.batch({"good", "one"}, 1, 1'000'000'000'000);
    ASSERT_EQ(1u, mask.records().size());
    const KorvMaskRecord& record = *mask.records()[0];
    EXPECT_EQ(KORV_MASK_VALUES_FAILED, record.status);
    EXPECT_EQ(1u, record.code);
    EXPECT_EQ(1'000'000'000'001u, record.row);
    EXPECT_EQ(1u, record.column);
    EXPECT_EQ(1u, record.isFirst);
    EXPECT_STREQ("FAILS", record.provider);
    EXPECT_EQ("4 KORV_TOKID_COLNAME=A;35 KORV_TOKID_SRCLEN=7;36 KORV_TOKID_EXPSRCLEN=12;",
              tokensOf(record));
    EXPECT_TRUE(contains(record.message, "too few digits")) << record.message;
    EXPECT_TRUE(contains(record.message, "KORV_TOKID_SRCLEN=7")) << record.message;
    EXPECT_TRUE(contains(record.message, "KORV_TOKID_EXPSRCLEN=12")) << record.message;
}

TEST_F(RecordsTest, FurtherErrorsOfAValueFollowTheFirst) {
    Mask mask("A = FAILS");
    mask.batch({"two", "ä", "two"}, 0, 5);
    ASSERT_EQ((std::vector<uint32_t>{2, 3, 2, 3}), mask.codes());
    const auto records = mask.records();
    const uint64_t rows[] = {5, 5, 7, 7};
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(rows[i], records[i]->row);
        EXPECT_EQ(i % 2 == 0 ? 1u : 0u, records[i]->isFirst);
    }
    EXPECT_EQ("52 KORV_TOKID_CHAR_POS=9;", tokensOf(*records[0]));
    EXPECT_EQ("", tokensOf(*records[1]));
    EXPECT_TRUE(contains(records[1]->message, "the second error"));
}

TEST_F(RecordsTest, RecordsAreInTheOrderOfRowsWhoeverFindsThem) {
    // Wide and narrow values, values that are no text, errors of mask and of maskBatch.
    const Values values = {"one", "bad ä", "\xFF", "two", "bad", "zwö", "\xFF", "none", "bad ö"};
    for (const char* rule : {"A = FAILS", "A = BROKEN_BATCH_LENGTH", "A = BROKEN_BATCH_UTF8",
                             "A = BROKEN_NO_RECORD"}) {
        Mask mask(rule);
        mask.batch(values, 0, 10);
        uint64_t last = 0;
        ASSERT_FALSE(mask.records().empty());
        for (const KorvMaskRecord* record : mask.records()) {
            EXPECT_GE(record->row, last) << rule;
            EXPECT_EQ(record->row == last ? 0u : 1u, record->isFirst) << rule;
            last = record->row;
        }
    }
}

TEST_F(RecordsTest, AFailureWithoutAnErrorIsTheEngines) {
    Mask mask("A = FAILS");
    mask.batch({"none"});
    ASSERT_EQ(1u, mask.records().size());
    EXPECT_EQ(static_cast<uint32_t>(KORV_MASK_CODE_NO_RECORD), mask.records()[0]->code);
    EXPECT_STREQ("FAILS", mask.records()[0]->provider);
}

TEST_F(RecordsTest, ACodeWithoutATextIsReportedAsANumber) {
    Mask mask("A = FAILS");
    mask.batch({"unlisted"});
    ASSERT_EQ(1u, mask.records().size());
    EXPECT_EQ(5u, mask.records()[0]->code);
    EXPECT_TRUE(contains(mask.text(), "5")) << mask.text();
}

TEST_F(RecordsTest, TheClearValueIsWithheld) {
    for (const char* rule : {"A = FAILS", "A = FAILS, type=wide"}) {
        for (const char* value : {"secret 4556737586899855", "secret Jürgen 😀"}) {
            Mask mask(rule);
            mask.batch({value});
            ASSERT_EQ(1u, mask.records().size());
            EXPECT_EQ("5 KORV_TOKID_SRCDATA=(withheld);52 KORV_TOKID_CHAR_POS=4;",
                      tokensOf(*mask.records()[0]));
            EXPECT_FALSE(contains(mask.text(), value));
            EXPECT_FALSE(contains(mask.text(), std::string(value).substr(7)));
            EXPECT_TRUE(contains(mask.text(), "(withheld)")) << mask.text();
        }
    }
}

TEST_F(RecordsTest, NoMessageHoldsAValueThatIsNotText) {
    Mask mask("A = COPY");
    mask.batch({"secret\xFF", std::string("secret\0", 7)});
    EXPECT_EQ(2u, mask.records().size());
    EXPECT_FALSE(contains(mask.text(), "secret")) << mask.text();
}

// Slots that were never filled, and one whose value could not be captured.
TEST_F(RecordsTest, OnlyTokensWithATextAreHandedOut) {
    Mask mask("A = FAILS");
    mask.batch({"slots"});
    ASSERT_EQ(1u, mask.records().size());
    const std::string tokens = tokensOf(*mask.records()[0]);
    EXPECT_EQ(0u, tokens.find("52 KORV_TOKID_CHAR_POS=5;")) << tokens;
    EXPECT_LE(mask.records()[0]->tokenCount, 2u);
}

TEST_F(RecordsTest, AMessageIsOneLineOfText) {
    Mask mask("A = FAILS");
    mask.batch({"lines"});
    ASSERT_EQ(1u, mask.records().size());
    const std::string message = mask.records()[0]->message;
    for (const char c : message) {
        EXPECT_TRUE(static_cast<unsigned char>(c) >= ' ' && c != 0x7F) << message;
    }
    // The engine itself says what is UTF-8.
    Mask copy("A = COPY");
    EXPECT_EQ((Values{message}), copy.batch({message}));
    ASSERT_EQ(1u, mask.records()[0]->tokenCount);
    const std::string token = mask.records()[0]->tokens[0].text;
    EXPECT_EQ((Values{token}), copy.batch({token}));
}

TEST_F(RecordsTest, RecordsPileUpUntilTheyAreCleared) {
    Mask mask("A = FAILS");
    mask.batch({"one"}, 0, 1);
    const KorvMaskRecord* first = mask.records()[0];
    const char* message = first->message;
    const std::string text = message;
    mask.batch(Values(3000, "two"), 0, 2);
    EXPECT_EQ(6001u, KorvMaskRecordCount(mask.handle));
    EXPECT_EQ(first, KorvMaskGetRecord(mask.handle, 0));
    EXPECT_EQ(message, first->message);
    EXPECT_EQ(text, message);
    EXPECT_EQ(3001u, KorvMaskGetRecord(mask.handle, 6000)->row);
    EXPECT_EQ(nullptr, KorvMaskGetRecord(mask.handle, 6001));
    KorvMaskClearRecords(mask.handle);
    EXPECT_EQ(0u, KorvMaskRecordCount(mask.handle));
    EXPECT_EQ(nullptr, KorvMaskGetRecord(mask.handle, 0));
    mask.batch({"one"}, 0, 9);
    ASSERT_EQ(1u, mask.records().size());
    EXPECT_EQ(9u, mask.records()[0]->row);
}

TEST_F(RecordsTest, ASuccessLeavesNoRecord) {
    Mask mask("A = COPY");
    EXPECT_EQ(0u, KorvMaskRecordCount(mask.handle));
    mask.batch({"a", kNull, ""});
    EXPECT_EQ(0u, KorvMaskRecordCount(mask.handle));
}

TEST_F(RecordsTest, NoRecordHoldsTheRelatedValue) {
    Mask mask("A = APPEND, with=B, unchanged=error\nB = DROP",
              {{"A", "B"}, 0, {KORV_BROKEN_PROVIDERS}});
    const Values related = {"secret\xFF"};
    mask.batch({"a"}, 0, 1, &related);
    EXPECT_EQ(1u, mask.records().size());
    EXPECT_FALSE(contains(mask.text(), "secret")) << mask.text();
}

}  // namespace
