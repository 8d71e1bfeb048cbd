// The text of the progress bar.
#include "progress.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace {

const std::string kHalf(20, '#');
const std::string kEmptyHalf(20, '.');

TEST(Progress, DrawsTheShareThatIsDone) {
    EXPECT_EQ("[" + kEmptyHalf + kEmptyHalf + "] 0 %", tool::progressText(0, 200));
    EXPECT_EQ("[" + kHalf + kEmptyHalf + "] 50 %", tool::progressText(100, 200));
    EXPECT_EQ("[" + kHalf + kHalf + "] 100 %", tool::progressText(200, 200));
}

TEST(Progress, DrawsSharesOfTerabytes) {
    EXPECT_EQ("[" + kHalf + kEmptyHalf + "] 50 %",
              tool::progressText(UINT64_C(1) << 42, UINT64_C(1) << 43));
}

TEST(Progress, AFileThatHasGrownIsFull) {
    EXPECT_EQ("[" + kHalf + kHalf + "] 100 %", tool::progressText(300, 200));
}

TEST(Progress, CountsMegabytesOfAnUnknownLength) {
    EXPECT_EQ("12 MB", tool::progressText(12999999, 0));
}

}  // namespace
