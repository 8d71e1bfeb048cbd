// The text of the progress bar.
#include "host/progress.h"

#include <gtest/gtest.h>

namespace {

const std::string kHalf(20, '#');
const std::string kEmptyHalf(20, '.');

TEST(Progress, DrawsTheShareThatIsDone) {
    EXPECT_EQ("[" + kEmptyHalf + kEmptyHalf + "] 0 %", host::progressText(0, 200));
    EXPECT_EQ("[" + kHalf + kEmptyHalf + "] 50 %", host::progressText(100, 200));
    EXPECT_EQ("[" + kHalf + kHalf + "] 100 %", host::progressText(200, 200));
}

TEST(Progress, AFileThatHasGrownIsFull) {
    EXPECT_EQ("[" + kHalf + kHalf + "] 100 %", host::progressText(300, 200));
}

TEST(Progress, CountsMegabytesOfAnUnknownLength) {
    EXPECT_EQ("12 MB", host::progressText(12999999, 0));
}

}  // namespace
