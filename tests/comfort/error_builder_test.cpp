// Errors of the C++ header: the builder captures what it is handed, and only what is released
// again.
#include <string>
#include <string_view>
#include <vector>

#include "errors/chain.h"
#include "korv/korv.hpp"

namespace {

class ErrorBuilders : public ChainTest {
  protected:
    void SetUp() override {
        ChainTest::SetUp();
        request.errorAnchor = anchor;
    }
    // The newest error's tokens: "identifier=text", "identifier" for a slot without text.
    std::vector<std::wstring> newest() const {
        std::vector<std::wstring> found;
        for (const TokenSlot& slot : korv::tokens(*anchor->tail)) {
            found.push_back(std::to_wstring(slot.tokenId));
            if (slot.text) found.back().append(L"=").append(korv::view(slot.text));
        }
        return found;
    }
    CtrlBlkI request{};
};

using Tokens = std::vector<std::wstring>;

TEST_F(ErrorBuilders, CaptureNumbersAndTexts) {
    const std::wstring wide = L"CARD \x20AC";
    const std::string narrow = "\xE9t\xE9";
    const korv::Status status = korv::ErrorBuilder(request, 12, 34, 8)
                                    .token(KORV_TOKID_SRCLEN, -20)
                                    .token(KORV_TOKID_COLLEN, 4000000000u)
                                    .token(KORV_TOKID_COLNAME, wide.c_str())
                                    .token(KORV_TOKID_TABLENAME, wide)
                                    .token(KORV_TOKID_MASK, narrow.c_str())
                                    .token(KORV_TOKID_KEY, narrow)
                                    .token(KORV_TOKID_DATATYPE, int16_t{VARCHAR_SZ})
                                    .token(KORV_TOKID_YEAR, 0)
                                    .status();
    EXPECT_EQ(korv::Status::success, status);
    EXPECT_EQ(1u, anchor->recordCount);
    EXPECT_EQ(12u, anchor->tail->firstCode);
    EXPECT_EQ(34u, anchor->tail->secondCode);
    EXPECT_EQ((Tokens{L"35=-20", L"81=4000000000", L"4=" + wide, L"79=" + wide, L"10=\u00E9t\u00E9",
                      L"82=\u00E9t\u00E9", L"1=" + std::to_wstring(VARCHAR_SZ), L"11=0"}),
              newest());
}

TEST_F(ErrorBuilders, CaptureViewsThatAreNotTerminated) {
    const std::wstring_view wide = L"CARDS";
    const std::string_view narrow = "NAMES";
    korv::ErrorBuilder builder(request, 1, 2, 4);
    builder.token(KORV_TOKID_COLNAME, wide.substr(0, 4));
    builder.token(KORV_TOKID_MASK, narrow.substr(0, 4));
    builder.token(KORV_TOKID_KEY, wide.substr(5)).token(KORV_TOKID_SEP, narrow.substr(5));
    EXPECT_EQ(korv::Status::success, builder.status());
    EXPECT_EQ((Tokens{L"4=CARD", L"10=NAME", L"82=", L"38="}), newest());
}

TEST_F(ErrorBuilders, CaptureNullAsTheLibraryDoes) {
    korv::ErrorBuilder builder(request, 1, 2, 4);
    builder.token(KORV_TOKID_COLNAME, static_cast<const wchar_t*>(nullptr));
    builder.token(KORV_TOKID_MASK, static_cast<const char*>(nullptr));
    builder.token(KORV_TOKID_KEY, std::wstring_view()).token(KORV_TOKID_SEP, std::string_view());
    EXPECT_EQ(korv::Status::success, builder.status());
    EXPECT_EQ((Tokens{L"4=<NULL>", L"10=<NULL>", L"82=<NULL>", L"38=<NULL>"}), newest());
}

// The library would keep the texts of such tokens without releasing them.
TEST_F(ErrorBuilders, RefuseTokensBeyondTheSlots) {
    for (const std::int16_t slots : {2, 1, 0, -1}) {
        korv::ErrorBuilder builder(request, 1, 2, slots);
        EXPECT_EQ(korv::Status::success, builder.status());
        for (int i = 0; i < slots; ++i) builder.token(KORV_TOKID_MASK, i);
        EXPECT_EQ(korv::Status::success, builder.status());
        builder.token(KORV_TOKID_KEY, L"one").token(KORV_TOKID_KEY, L"another");
        EXPECT_EQ(korv::Status::tokenNoSlot, builder.status());
        EXPECT_EQ(slots, anchor->tail->tokenSlotCount);
        EXPECT_EQ(0u,
                  slotOf(anchor->tail, slots > 0 ? static_cast<std::size_t>(slots) : 0).tokenId);
    }
}

TEST_F(ErrorBuilders, RefuseIdentifiersThatAreNone) {
    for (const std::uint32_t id : {0u, 91u, 0xFFFFFFFFu}) {
        korv::ErrorBuilder builder(request, 1, 2, 1);
        builder.token(id, L"text").token(KORV_TOKID_MASK, L"kept");
        EXPECT_EQ(korv::Status::tokenBadId, builder.status()) << id;
        EXPECT_EQ((Tokens{L"10=kept"}), newest());
    }
}

TEST_F(ErrorBuilders, LeaveEarlierErrorsAloneWhenThereIsNoMemoryForTheirs) {
    open(2);
    heap::failAt(1);
    korv::ErrorBuilder builder(request, 1, 2, 2);
    builder.token(KORV_TOKID_MASK, L"text");
    EXPECT_EQ(korv::Status::failure, builder.status());
    EXPECT_EQ(1u, chain().size());
    EXPECT_EQ((Tokens{L"0", L"0"}), newest());
}

TEST_F(ErrorBuilders, KeepTheFirstFailureAndLaterTokens) {
    heap::failAt(2);
    korv::ErrorBuilder builder(request, 1, 2, 2);
    builder.token(KORV_TOKID_MASK, L"lost").token(KORV_TOKID_KEY, L"kept");
    EXPECT_EQ((Tokens{L"10", L"82=kept"}), newest());
    builder.token(KORV_TOKID_SEP, L"too many");
    EXPECT_EQ(korv::Status::failure, builder.status());
}

TEST_F(ErrorBuilders, FailWithoutAnAnchor) {
    request.errorAnchor = nullptr;
    korv::ErrorBuilder builder(request, 1, 2, 1);
    builder.token(KORV_TOKID_MASK, L"text");
    EXPECT_EQ(korv::Status::failure, builder.status());
}

}  // namespace
