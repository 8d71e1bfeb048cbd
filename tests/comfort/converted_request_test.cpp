// Converted requests of the C++ header: both records at once, or none.
#include <array>
#include <utility>
#include <vector>

#include "ctrlblk/records.h"
#include "korv/korv.hpp"

namespace {

class ConvertedRequests : public HeapTest {
  protected:
    ConvertedRequests() {
        operands_[0].link = &operands_[1];
        operands_[1].oprCode = 7;
        service_.svcCode1 = 3;
        service_.oprDefs = &operands_[0];
    }
    static std::size_t live() { return heap::liveBlocks(); }

    // Of the library's blocks a conversion takes two fields, one chained reference, two operands.
    static constexpr std::size_t kBlocks = 5;
    Request source_{2, {1, 0}};
    std::array<OprDefI, 2> operands_{};
    SvcDefI service_{};
};

TEST_F(ConvertedRequests, HoldBothRecordsUntilTheyGo) {
    const std::size_t before = live();
    {
        korv::Request request;
        EXPECT_EQ(nullptr, request.block());
        EXPECT_EQ(nullptr, request.service());
        ASSERT_EQ(korv::Status::success, korv::Request::convert(source_.block, service_, request));
        EXPECT_EQ(before + kBlocks, live());

        expectHeader(request.block()->header, "BLKX", sizeof(CtrlBlkX));
        EXPECT_EQ(1, request.block()->fieldRefs.fieldPos);
        EXPECT_EQ(request.block()->fieldDefs->link, request.block()->fieldRefs.fieldDef);
        expectHeader(request.service()->header, "SVCX", sizeof(SvcDefX));
        EXPECT_EQ(3, request.service()->svcCode1);
        EXPECT_EQ(7, request.service()->oprDefs->link->oprCode);
        EXPECT_EQ(request.block()->fieldDefs, request.service()->fieldDefs);
        EXPECT_EQ(request.block(), std::as_const(request).block());
        EXPECT_EQ(request.service(), std::as_const(request).service());
    }
    EXPECT_EQ(before, live());
}

TEST_F(ConvertedRequests, ReleaseAnEarlierRequest) {
    korv::Request request;
    ASSERT_EQ(korv::Status::success, korv::Request::convert(source_.block, service_, request));
    const std::size_t before = live();
    ASSERT_EQ(korv::Status::success, korv::Request::convert(source_.block, service_, request));
    EXPECT_EQ(before, live());
}

// Whatever the request held before.
TEST_F(ConvertedRequests, AreEmptyAfterAFailureAtAnyAllocation) {
    using korv::Status;
    const std::array<Status, kBlocks> expected = {Status::noMemoryField, Status::noMemoryField,
                                                  Status::noMemoryReference,
                                                  Status::noMemoryOperand, Status::noMemoryOperand};
    const std::size_t before = live();
    for (unsigned failing = 1; failing <= kBlocks; ++failing) {
        korv::Request request;
        ASSERT_EQ(Status::success, korv::Request::convert(source_.block, service_, request));
        heap::failAt(failing);
        EXPECT_EQ(expected[failing - 1], korv::Request::convert(source_.block, service_, request));
        heap::failAt(0);
        EXPECT_EQ(nullptr, request.block());
        EXPECT_EQ(nullptr, request.service());
        EXPECT_EQ(before, live());
    }
}

TEST_F(ConvertedRequests, AreEmptyAfterAMove) {
    korv::Request first;
    ASSERT_EQ(korv::Status::success, korv::Request::convert(source_.block, service_, first));
    const CtrlBlkX* const block = first.block();
    const SvcDefX* const service = first.service();
    korv::Request second = std::move(first);
    EXPECT_EQ(nullptr, first.block());  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(nullptr, first.service());
    EXPECT_EQ(block, second.block());
    EXPECT_EQ(service, second.service());
}

}  // namespace
