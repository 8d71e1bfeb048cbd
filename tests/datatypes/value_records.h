// Value records for the tests: every byte is a mark unless set, so that any other change shows.
#pragma once

#include <gtest/gtest.h>

#include <cstring>

#include "korv/datatypes.h"
#include "support/fenced.h"

// The one record at the end of a readable page.
class FencedRecord {
  public:
    FencedRecord() { reset(0, nullptr); }
    ~FencedRecord() { EXPECT_TRUE(record_.intact()); }

    void reset(int32_t length, const void* data) {
        std::memset(record_.data(), 0x77, sizeof(ValueRecord));
        record_[0].nullIndicator = 0;
        record_[0].length = length;
        record_[0].data = const_cast<void*>(data);
        keep();
    }
    // The record as it is now is what changedOnly compares with.
    void keep() { std::memcpy(&before_, record_.data(), sizeof before_); }

    // Whether the record differs from what was kept at most in `member` (null: in nothing).
    template <class Member>
    bool changedOnly(Member ValueRecord::*member) {
        before_.*member = record_[0].*member;
        return unchanged();
    }
    bool unchanged() { return std::memcmp(&before_, record_.data(), sizeof before_) == 0; }

    ValueRecord* operator->() { return record_.data(); }
    ValueRecord* get() { return record_.data(); }

  private:
    Fenced<ValueRecord> record_{std::size_t{1}, Fenced<ValueRecord>::Fence::behind};
    ValueRecord before_;
};
