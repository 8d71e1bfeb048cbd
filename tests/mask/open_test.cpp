// KorvMaskOpen: what it takes, what it refuses, and what is left of a handle that did not open.
#include <cerrno>
#include <cstddef>
#include <cstring>

#include "c_interface.h"
#include "folder.h"

namespace {

using OpenTest = EngineTest;

const char* const kName[] = {"A"};
const char* const kFolder[] = {KORV_BROKEN_PROVIDERS};

KorvMaskSettings working() {
    KorvMaskSettings settings = {};
    settings.size = sizeof settings;
    settings.columnCount = 1;
    settings.columns = kName;
    settings.rules = "A = COPY";
    settings.folders = kFolder;
    settings.folderCount = 1;
    return settings;
}

int32_t open(const KorvMaskSettings& settings) {
    KorvMask* mask = reinterpret_cast<KorvMask*>(1);
    const int32_t status = KorvMaskOpen(&settings, &mask);
    if (status == KORV_MASK_BAD_ARGUMENT) {
        EXPECT_EQ(nullptr, mask);
    } else {
        EXPECT_NE(nullptr, mask);
        KorvMaskClose(mask);
    }
    return status;
}

TEST_F(OpenTest, TheLibraryImplementsTheHeadersVersion) {
    EXPECT_EQ(static_cast<uint32_t>(KORV_MASK_VERSION), KorvMaskVersion());
}

TEST_F(OpenTest, TheArgumentsMustBeThere) {
    KorvMask* mask = reinterpret_cast<KorvMask*>(1);
    EXPECT_EQ(KORV_MASK_BAD_ARGUMENT, KorvMaskOpen(nullptr, &mask));
    EXPECT_EQ(nullptr, mask);
    const KorvMaskSettings settings = working();
    EXPECT_EQ(KORV_MASK_BAD_ARGUMENT, KorvMaskOpen(&settings, nullptr));
    EXPECT_EQ(KORV_MASK_BAD_ARGUMENT, KorvMaskOpen(nullptr, nullptr));
    EXPECT_EQ(KORV_MASK_SUCCESS, open(settings));
}

// Words of the settings as they were in version 1.
constexpr size_t kVersion1Words = offsetof(KorvMaskSettings, secrets) / sizeof(size_t);

// Of settings of a smaller size nothing but the size is read: the rest may not be there.
TEST_F(OpenTest, ASizeBelowTheFirstVersionIsRefused) {
    const KorvMaskSettings settings = working();
    for (const size_t words : {size_t{1}, size_t{2}, kVersion1Words - 1}) {
        Fenced<size_t> memory(words);
        std::memcpy(memory.data(), &settings, words * sizeof(size_t));
        memory[0] = words * sizeof(size_t);
        const auto* part = reinterpret_cast<const KorvMaskSettings*>(memory.data());
        KorvMask* mask = reinterpret_cast<KorvMask*>(1);
        EXPECT_EQ(KORV_MASK_BAD_ARGUMENT, KorvMaskOpen(part, &mask)) << words;
        EXPECT_EQ(nullptr, mask);
    }
    for (const size_t size : {size_t{0}, size_t{1}, sizeof(size_t) + 1}) {
        KorvMaskSettings other = settings;
        other.size = size;
        EXPECT_EQ(KORV_MASK_BAD_ARGUMENT, open(other)) << size;
    }
}

// A caller that was built for version 1 has no members of version 2 to read.
TEST_F(OpenTest, SettingsOfVersion1AreTaken) {
    const KorvMaskSettings settings = working();
    Fenced<size_t> memory(kVersion1Words);
    std::memcpy(memory.data(), &settings, kVersion1Words * sizeof(size_t));
    memory[0] = kVersion1Words * sizeof(size_t);
    EXPECT_EQ(KORV_MASK_SUCCESS, open(*reinterpret_cast<const KorvMaskSettings*>(memory.data())));
}

// Members of a later version follow the ones that this library knows.
TEST_F(OpenTest, SettingsOfALaterVersionAreTakenForWhatIsKnownOfThem) {
    struct {
        KorvMaskSettings known;
        void* further[4];
    } later = {working(), {&later, &later, &later, &later}};
    later.known.size = sizeof later;
    EXPECT_EQ(KORV_MASK_SUCCESS, open(later.known));
}

TEST_F(OpenTest, PointersMustBeThereWhereACountSaysSo) {
    KorvMaskSettings settings = working();
    settings.columns = nullptr;
    EXPECT_EQ(KORV_MASK_BAD_ARGUMENT, open(settings));
    settings = working();
    settings.folders = nullptr;
    EXPECT_EQ(KORV_MASK_BAD_ARGUMENT, open(settings));
    settings = working();
    settings.rules = nullptr;
    EXPECT_EQ(KORV_MASK_BAD_ARGUMENT, open(settings));
    const char* const nothing[] = {nullptr};
    settings = working();
    settings.columns = nothing;
    EXPECT_EQ(KORV_MASK_BAD_ARGUMENT, open(settings));
    settings = working();
    settings.folders = nothing;
    EXPECT_EQ(KORV_MASK_BAD_ARGUMENT, open(settings));
    settings = working();
    settings.fileFolderCount = 1;
    EXPECT_EQ(KORV_MASK_BAD_ARGUMENT, open(settings));
    settings.fileFolders = nothing;
    EXPECT_EQ(KORV_MASK_BAD_ARGUMENT, open(settings));
}

TEST_F(OpenTest, ClosingNothingDoesNothing) {
    KorvMaskClose(nullptr);
}

TEST_F(OpenTest, RulesComeFromAFile) {
    const Folder folder;
    Setting setting;
    setting.rulesFile = folder.write("my rules.txt", "# one rule\n\nA = ECHO, number=4\n");
    Mask mask(std::nullopt, setting);
    ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
    EXPECT_EQ(3u, KorvMaskGetColumn(mask.handle, 0)->rulesLine);
    EXPECT_EQ((Values{"NUMBER=4;"}), mask.batch({"value"}));
}

TEST_F(OpenTest, AMissingRulesFileIsNamedWithTheReason) {
    const Folder folder;
    Setting setting;
    setting.rulesFile = folder.path() + "/missing.txt";
    const Mask mask(std::nullopt, setting);
    EXPECT_EQ(KORV_MASK_BAD_RULES, mask.opened);
    ASSERT_EQ(1u, mask.messages().size());
    EXPECT_TRUE(contains(mask.text(), *setting.rulesFile)) << mask.text();
    EXPECT_TRUE(contains(mask.text(), std::strerror(ENOENT))) << mask.text();
}

TEST_F(OpenTest, AFolderIsNoRulesFile) {
    const Folder folder;
    Setting setting;
    setting.rulesFile = folder.path();
    const Mask mask(std::nullopt, setting);
    EXPECT_EQ(KORV_MASK_BAD_RULES, mask.opened);
    ASSERT_EQ(1u, mask.messages().size());
    EXPECT_TRUE(contains(mask.text(), folder.path())) << mask.text();
}

// The name "rules" stands for rules without a file; the other file need not exist.
TEST_F(OpenTest, MessagesNameTheRulesAndThePlace) {
    const struct {
        std::optional<std::string> file;
        const char* name;
    } cases[] = {{std::nullopt, "rules"}, {"not/there.txt", "not/there.txt"}};
    for (const auto& c : cases) {
        Setting setting;
        setting.rulesFile = c.file;
        const Mask mask("# comment\nA = COPY, odd=1", setting);
        EXPECT_EQ(KORV_MASK_BAD_RULES, mask.opened);
        ASSERT_EQ(1u, mask.records().size());
        const KorvMaskRecord& record = *mask.records()[0];
        EXPECT_EQ(std::string(c.name) + ":2:11: COPY has no operand ODD", record.message);
        EXPECT_EQ(KORV_MASK_BAD_RULES, record.status);
        EXPECT_EQ(0u, record.code);
        EXPECT_EQ(KORV_MASK_NO_ROW, record.row);
        EXPECT_EQ(2u, record.rulesLine);
        EXPECT_EQ(11u, record.rulesPosition);
        EXPECT_EQ(0u, record.tokenCount);
    }
}

TEST_F(OpenTest, EveryFaultHasARecordUpToTwenty) {
    const Mask two("A = COPY, odd=1\nB = COPY, even=2", {{"A", "B"}, 0, {KORV_BROKEN_PROVIDERS}});
    EXPECT_EQ(KORV_MASK_BAD_RULES, two.opened);
    EXPECT_EQ(2u, two.records().size()) << two.text();

    std::string rules;
    for (int i = 0; i < 30; ++i) rules += "no rule at all\n";
    const Mask many(rules);
    EXPECT_EQ(KORV_MASK_BAD_RULES, many.opened);
    EXPECT_EQ(20u, many.records().size());
    for (const KorvMaskRecord* record : many.records()) {
        EXPECT_EQ(KORV_MASK_BAD_RULES, record->status);
        EXPECT_FALSE(contains(record->message, "\n"));
    }
}

TEST_F(OpenTest, AHandleThatDidNotOpenHasRecordsAndNothingElse) {
    Mask mask("A = COPY\nB = COPY");
    EXPECT_EQ(KORV_MASK_BAD_RULES, mask.opened);
    ASSERT_NE(nullptr, mask.handle);
    EXPECT_EQ(1u, KorvMaskRecordCount(mask.handle));
    EXPECT_EQ(nullptr, KorvMaskGetRecord(mask.handle, 1));
    EXPECT_EQ(nullptr, KorvMaskGetColumn(mask.handle, 0));
    EXPECT_EQ(nullptr, KorvMaskGetStatistics(mask.handle, 0));
    mask.batch({"value"});
    EXPECT_EQ(KORV_MASK_BAD_ARGUMENT, mask.status);
    KorvMaskClearRecords(mask.handle);
    EXPECT_EQ(0u, KorvMaskRecordCount(mask.handle));
}

// A rule that its provider refuses: the provider's text and tokens are in the record.
TEST_F(OpenTest, AProviderCanRefuseARule) {
    const Mask mask("\nA = FAILS, refuse");
    EXPECT_EQ(KORV_MASK_BAD_RULES, mask.opened);
    ASSERT_EQ(1u, mask.records().size()) << mask.text();
    const KorvMaskRecord& record = *mask.records()[0];
    EXPECT_EQ(2u, record.rulesLine);
    EXPECT_EQ(5u, record.rulesPosition);
    EXPECT_TRUE(contains(record.message, "FAILS")) << record.message;
    EXPECT_TRUE(contains(record.message, "a rule that is refused")) << record.message;
    EXPECT_TRUE(contains(record.message, "KORV_TOKID_METHOD=refuse")) << record.message;
    EXPECT_EQ(0u, std::string(record.message).find("rules:2:5: ")) << record.message;
}

TEST_F(OpenTest, NamesThatAreNotTextDoNoHarm) {
    for (const char* name : {"\xFF", "\xED\xA0\x80", ""}) {
        const Mask mask("@1 = COPY\nZ = COPY", {{name}, 0, {KORV_BROKEN_PROVIDERS}});
        EXPECT_NE(KORV_MASK_SUCCESS, mask.opened);
        if (mask.handle == nullptr) continue;
        EXPECT_FALSE(mask.messages().empty());
        EXPECT_FALSE(contains(mask.text(), "\xFF")) << "a message that is not UTF-8";
    }
}

TEST_F(OpenTest, TheSettingsAreReadDuringTheCallOnly) {
    const auto name = std::make_unique<std::string>("A");
    const auto folder = std::make_unique<std::string>(KORV_BROKEN_PROVIDERS);
    const auto rules = std::make_unique<std::string>("A = ECHO, narrow=kept");
    const auto file = std::make_unique<std::string>("a/b");
    const char* names[] = {name->c_str()};
    const char* folders[] = {folder->c_str()};
    KorvMaskSettings settings = working();
    settings.columns = names;
    settings.folders = folders;
    settings.rules = rules->c_str();
    settings.rulesFile = file->c_str();
    Mask mask("A = COPY");
    KorvMaskClose(mask.handle);
    ASSERT_EQ(KORV_MASK_SUCCESS, KorvMaskOpen(&settings, &mask.handle));
    settings = {};
    names[0] = folders[0] = nullptr;
    for (std::string* text : {name.get(), folder.get(), rules.get(), file.get()}) {
        text->assign(text->size(), '#');
    }
    EXPECT_EQ((Values{"NARROW=kept;"}), mask.batch({"value"}));
    EXPECT_STREQ("A", KorvMaskGetColumn(mask.handle, 0)->name);
}

}  // namespace
