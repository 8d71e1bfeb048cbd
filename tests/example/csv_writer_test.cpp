// The CSV writer and the output file: quoting, every buffer size, and no file before the end.
#include "host/csv_writer.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "host/host_error.h"

namespace {

namespace fs = std::filesystem;

class CsvWriterTest : public testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = testing::TempDir() + "csv_writer_XXXXXX";
        folder_ = mkdtemp(pattern.data());
    }
    void TearDown() override { fs::remove_all(folder_); }

    std::string path() const { return folder_ + "/out.csv"; }
    size_t filesInFolder() const {
        return static_cast<size_t>(std::distance(fs::directory_iterator(folder_), {}));
    }
    std::string contents() const {
        std::ostringstream text;
        text << std::ifstream(path(), std::ios::binary).rdbuf();
        return text.str();
    }

    std::string folder_;
};

TEST_F(CsvWriterTest, QuotesWhatMustBeQuoted) {
    const struct {
        const char* text;
        bool quote;
        const char* expected;
    } cases[] = {
        {"", false, ""},         {"", true, "\"\""},        {"a b", false, "a b"},
        {"a", true, "\"a\""},    {"a,b", false, "\"a,b\""}, {"a\nb", false, "\"a\nb\""},
        {"\r", false, "\"\r\""}, {"\"", false, "\"\"\"\""}, {"a\"b\"", true, "\"a\"\"b\"\"\""},
    };
    std::string expected;
    for (size_t size = 1; size < 12; ++size) {
        host::OutputFile file(path());
        host::CsvWriter writer(file, size);
        expected.clear();
        for (const auto& c : cases) {
            writer.appendField(c.text, c.quote);
            writer.append("|");
            expected += std::string(c.expected) + "|";
        }
        writer.flush();
        file.commit();
        ASSERT_EQ(expected, contents()) << "buffer of " << size;
    }
}

TEST_F(CsvWriterTest, FileAppearsOnlyWhenCommitted) {
    {
        host::OutputFile file(path());
        file.write("text", 4);
        EXPECT_FALSE(fs::exists(path()));
        EXPECT_EQ(1u, filesInFolder());
    }
    EXPECT_EQ(0u, filesInFolder()) << "the temporary file is left";

    host::OutputFile file(path());
    file.write("text", 4);
    file.commit();
    EXPECT_EQ("text", contents());
    EXPECT_EQ(1u, filesInFolder());
}

TEST_F(CsvWriterTest, AnOldFileStaysUntilCommitAndKeepsItsMode) {
    std::ofstream(path()) << "old";
    ASSERT_EQ(0, chmod(path().c_str(), 0640));
    { host::OutputFile abandoned(path()); }
    EXPECT_EQ("old", contents());
    host::OutputFile file(path());
    file.write("new", 3);
    file.commit();
    EXPECT_EQ("new", contents());
    EXPECT_EQ(fs::perms(0640), fs::status(path()).permissions());
}

TEST_F(CsvWriterTest, FailuresNameTheFile) {
    const std::string missing = folder_ + "/none/out.csv";
    try {
        host::OutputFile file(missing);
        FAIL() << "opened";
    } catch (const host::HostError& error) {
        EXPECT_EQ(missing + ": No such file or directory", std::string(error.what()));
    }
    host::OutputFile full("/dev/full");
    EXPECT_THROW(full.write("x", 1), host::HostError);
}

}  // namespace
