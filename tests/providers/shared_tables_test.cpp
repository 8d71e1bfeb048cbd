// Tables that are made of files: shared by the instances of a process, and read again when the file
// has changed.
#include <fcntl.h>
#include <sys/stat.h>

#include <atomic>
#include <thread>

#include "masked_value.h"

namespace {

class SharedTablesTest : public MaskedValueTest {
  protected:
    std::string path() const { return folder_ + "/table.txt"; }

    // Writes a file of the same size over the one that is there.
    void overwrite(const std::string& text, bool keepTime) {
        struct stat before;
        ASSERT_EQ(0, stat(path().c_str(), &before));
        writeFile("table.txt", text);
        ASSERT_EQ(static_cast<off_t>(text.size()), before.st_size);
        timespec times[] = {before.st_atim, before.st_mtim};
        if (!keepTime) times[1].tv_sec += 1;
        ASSERT_EQ(0, utimensat(AT_FDCWD, path().c_str(), times, 0));
    }

    static std::string maskBy(OpenedRule& rule, const std::string& value) {
        return rule.mask(OpenedRule::narrow, value);
    }
};

TEST_F(SharedTablesTest, AnInstanceUsesTheTableOfAnother) {
    for (const std::string text :
         {"LKP, file=table.txt", "HASH, method=seed, seed=autumn, file=table.txt"}) {
        writeFile("table.txt", "a = first\n");
        const auto first = openRule(text);
        ASSERT_EQ("", first->error());
        const std::string masked = maskBy(*first, "a");
        // This change stays unnoticed: the second instance would see it only if it read the file.
        overwrite("a = other\n", true);
        EXPECT_EQ(masked, maskBy(*openRule(text), "a"));
    }
}

TEST_F(SharedTablesTest, AChangedFileIsReadAgain) {
    for (const std::string text :
         {"LKP, file=table.txt", "HASH, method=seed, seed=autumn, file=table.txt"}) {
        writeFile("table.txt", "a = first\n");
        const auto first = openRule(text);
        const std::string masked = maskBy(*first, "a");
        overwrite("a = other\n", false);
        EXPECT_NE(masked, maskBy(*openRule(text), "a"));
        EXPECT_EQ(masked, maskBy(*first, "a"));

        writeFile("table.txt", "a = longer text\n");
        EXPECT_NE(masked, maskBy(*openRule(text), "a"));

        // Another file of the same size and time takes the place of the first one.
        writeFile("table.txt", "a = other\n");
        overwrite("a = first\n", false);
        const auto second = openRule(text);
        EXPECT_EQ(masked, maskBy(*second, "a"));
        ASSERT_EQ(0, std::rename(path().c_str(), (folder_ + "/kept.txt").c_str()));
        struct stat kept;
        ASSERT_EQ(0, stat((folder_ + "/kept.txt").c_str(), &kept));
        writeFile("table.txt", "a = other\n");
        const timespec times[] = {kept.st_atim, kept.st_mtim};
        ASSERT_EQ(0, utimensat(AT_FDCWD, path().c_str(), times, 0));
        EXPECT_NE(masked, maskBy(*openRule(text), "a"));
    }
}

TEST_F(SharedTablesTest, ATableIsReadAgainAfterItsLastInstance) {
    writeFile("table.txt", "a = first\n");
    EXPECT_EQ("first", maskBy(*openRule("LKP, file=table.txt"), "a"));
    overwrite("a = other\n", true);
    EXPECT_EQ("other", maskBy(*openRule("LKP, file=table.txt"), "a"));
}

TEST_F(SharedTablesTest, ABadFileIsReadAgain) {
    writeFile("table.txt", "no pair\n");
    EXPECT_EQ("2 PATH=" + path() + " ROW_COUNT=1", ruleError("LKP, file=table.txt"));
    EXPECT_EQ("2 PATH=" + path() + " ROW_COUNT=1", ruleError("LKP, file=table.txt"));
    overwrite("a = one\n", true);
    EXPECT_EQ("one", maskBy(*openRule("LKP, file=table.txt"), "a"));
}

// Each thread opens an instance of its own, all at the same time, and closes it again.
TEST_F(SharedTablesTest, ThreadsShareATable) {
    std::string file;
    for (int i = 0; i < 500; ++i) {
        file += "Key " + std::to_string(i) + " = Value " + std::to_string(i) + "\n";
    }
    writeFile("table.txt", file);
    std::atomic<int> wrong = 0;
    const auto work = [&] {
        for (int round = 0; round < 20; ++round) {
            const auto lookup = openRule("LKP, file=table.txt");
            const auto pick = openRule("HASH, method=seed, seed=autumn, file=table.txt");
            const std::string picked = maskBy(*pick, "x");
            for (int i = 0; i < 500; i += 7) {
                const std::string number = std::to_string(i);
                wrong += maskBy(*lookup, "KEY " + number) != "Value " + number;
                wrong += maskBy(*pick, "X") != picked;
            }
        }
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_EQ(0, wrong);
}

}  // namespace
