// Files that rules name when they may be in certain folders only.
#include <unistd.h>

#include <filesystem>

#include "c_interface.h"
#include "folder.h"

namespace {

const char* const kLines = "Paris = Lyon\n";

class FileFoldersTest : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        std::filesystem::create_directory(inner());
        first_.write("cities.txt", kLines);
        second_.write("towns.txt", kLines);
        second_.write("cities.txt", "Paris = Nice\n");
        first_.write("inner/streets.txt", kLines);
        outside_.write("secrets.txt", kLines);
    }

    std::string inner() const { return first_.path() + "/inner"; }

    // What becomes of "Paris", or the message.
    std::string lookUp(const std::string& name) {
        Setting setting;
        setting.rulesFile = outside_.path() + "/rules.txt";
        setting.fileFolders = {"/no/such/folder", first_, second_};
        Mask mask("A = LKP, \"file=" + name + '"', setting);
        if (mask.opened != KORV_MASK_SUCCESS) {
            EXPECT_EQ(KORV_MASK_BAD_RULES, mask.opened);
            return mask.text();
        }
        return mask.batch({"Paris"}).at(0).value_or("NULL");
    }

    std::string refused() const {
        return outside_.path() +
               "/rules.txt:1:10: operand FILE names a file that is not in the folders for such "
               "files\n";
    }

    Folder first_;
    Folder second_;
    Folder outside_;
};

TEST_F(FileFoldersTest, TheFoldersAreSearchedInOrder) {
    EXPECT_EQ("Lyon", lookUp("cities.txt"));
    EXPECT_EQ("Lyon", lookUp("towns.txt"));
    EXPECT_EQ("Lyon", lookUp("inner/streets.txt"));
    EXPECT_EQ("Lyon", lookUp("./inner/../cities.txt"));
    EXPECT_EQ("Lyon", lookUp(second_.path() + "/towns.txt"));
}

TEST_F(FileFoldersTest, FilesElsewhereAreRefusedLikeMissingOnes) {
    EXPECT_EQ(refused(), lookUp("secrets.txt"));
    EXPECT_EQ(refused(), lookUp("none.txt"));
    EXPECT_EQ(refused(), lookUp(outside_.path() + "/secrets.txt"));
    EXPECT_EQ(refused(), lookUp("../" + std::filesystem::path(outside_.path()).filename().string() +
                                "/secrets.txt"));
    EXPECT_EQ(refused(), lookUp("/etc/passwd"));
    EXPECT_EQ(refused(), lookUp(first_.path()));
    // A folder whose name only begins like an allowed one.
    std::filesystem::create_directory(first_.path() + "2");
    const std::string neighbour = first_.path() + "2/cities.txt";
    std::filesystem::copy_file(first_.path() + "/cities.txt", neighbour);
    EXPECT_EQ(refused(), lookUp(neighbour));
    std::filesystem::remove_all(first_.path() + "2");
}

TEST_F(FileFoldersTest, LinksDoNotLeadOut) {
    const std::string link = first_.path() + "/link.txt";
    ASSERT_EQ(0, symlink((outside_.path() + "/secrets.txt").c_str(), link.c_str()));
    EXPECT_EQ(refused(), lookUp("link.txt"));
    const std::string folder = first_.path() + "/folder";
    ASSERT_EQ(0, symlink(outside_.path().c_str(), folder.c_str()));
    EXPECT_EQ(refused(), lookUp("folder/secrets.txt"));
    const std::string within = first_.path() + "/within.txt";
    ASSERT_EQ(0, symlink("cities.txt", within.c_str()));
    EXPECT_EQ("Lyon", lookUp("within.txt"));
}

TEST_F(FileFoldersTest, TheColumnTellsTheFileThatIsRead) {
    Setting setting;
    setting.fileFolders = {first_};
    Mask mask("A = LKP, file=./cities.txt", setting);
    ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened);
    const KorvMaskColumn* const column = KorvMaskGetColumn(mask.handle, 0);
    ASSERT_EQ(1u, column->fileCount);
    const std::string file = std::filesystem::canonical(first_.path()).string() + "/cities.txt";
    EXPECT_EQ(file, column->files[0]);
}

}  // namespace
