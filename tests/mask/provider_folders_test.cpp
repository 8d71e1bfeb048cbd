// Where providers are found, which of them are listed, and whose files are refused.
#include <sys/stat.h>
#include <unistd.h>

#include <map>

#include "c_interface.h"
#include "folder.h"
#include "korv/provider.h"

namespace {

using ProviderFoldersTest = EngineTest;

Setting foldersOf(const std::vector<std::string>& folders) {
    return {{"A"}, 0, folders};
}

// What the provider WHICH says that it is, or what is wrong with it.
std::string which(const std::vector<std::string>& folders) {
    Mask mask("A = WHICH", foldersOf(folders));
    if (mask.opened == KORV_MASK_SUCCESS) return mask.batch({"value"}).at(0).value_or("NULL");
    EXPECT_EQ(KORV_MASK_BAD_PROVIDER, mask.opened);
    EXPECT_EQ(1u, mask.records().size()) << mask.text();
    EXPECT_EQ(5u, mask.records().at(0)->rulesPosition);
    EXPECT_TRUE(contains(mask.text(), "which.so")) << mask.text();
    return "refused";
}

TEST_F(ProviderFoldersTest, FoldersAreSearchedInOrder) {
    const Folder empty, first, second;
    first.addModule("first/which.so", "which.so");
    second.addModule("second/which.so", "which.so");
    EXPECT_EQ("first", which({first}));
    EXPECT_EQ("first", which({empty, first, second}));
    EXPECT_EQ("second", which({second, empty, first}));
    EXPECT_EQ("first", which({first.path() + "/", second}));
}

TEST_F(ProviderFoldersTest, ALongNameInAFolderComesBeforeAShortOne) {
    const Folder both, early;
    both.addModule("second/which.so", "which.so");
    both.addModule("third/libkorvprv_which.so", "libkorvprv_which.so");
    EXPECT_EQ("third", which({both}));
    early.addModule("first/which.so", "which.so");
    EXPECT_EQ("first", which({early, both}));
}

TEST_F(ProviderFoldersTest, AFolderThatIsNotThereIsPassedOver) {
    const Folder folder;
    folder.addModule("first/which.so", "which.so");
    EXPECT_EQ("first", which({folder.path() + "/missing", folder}));
}

TEST_F(ProviderFoldersTest, AProviderThatIsNotThereIsNamedWithTheFolders) {
    const Folder one, two;
    const Mask mask("A = NONE", foldersOf({one, two}));
    EXPECT_EQ(KORV_MASK_BAD_RULES, mask.opened);
    ASSERT_EQ(1u, mask.records().size());
    EXPECT_EQ(0u, mask.text().find("rules:1:5: ")) << mask.text();
    for (const std::string& part : {std::string("NONE"), one.path(), two.path()}) {
        EXPECT_TRUE(contains(mask.text(), part)) << part;
    }
}

TEST_F(ProviderFoldersTest, WithoutFoldersTheOneBesideTheLibraryIsUsed) {
    Mask mask("A = NID, method=transpose, key=1", foldersOf({}));
    ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
    struct stat found, expected;
    ASSERT_EQ(0, stat(KorvMaskGetColumn(mask.handle, 0)->module, &found));
    ASSERT_EQ(0, stat(KORV_PROVIDERS "/libkorvprv_nid.so", &expected));
    EXPECT_EQ(expected.st_ino, found.st_ino);
}

// Also for root, who may write everything.
TEST_F(ProviderFoldersTest, AModuleThatOthersMayWriteIsRefused) {
    const Folder folder;
    const std::string file = folder.addModule("first/which.so", "which.so");
    EXPECT_EQ("first", which({folder}));
    chmod(file.c_str(), 0757);
    EXPECT_EQ("refused", which({folder}));
    // The next folder does not step in: the user asked for this one first.
    const Folder second;
    second.addModule("second/which.so", "which.so");
    EXPECT_EQ("refused", which({folder, second}));
    chmod(file.c_str(), 0755);
    EXPECT_EQ("first", which({folder}));
}

TEST_F(ProviderFoldersTest, AModuleInAFolderThatOthersMayWriteIsRefused) {
    const Folder folder;
    folder.addModule("first/which.so", "which.so");
    chmod(folder.path().c_str(), 0757);
    EXPECT_EQ("refused", which({folder}));
    chmod(folder.path().c_str(), 0755);
    EXPECT_EQ("first", which({folder}));
}

// The file counts, not the link that leads to it.
TEST_F(ProviderFoldersTest, AModuleBehindALinkIsCheckedItself) {
    const Folder folder, elsewhere;
    const std::string file = elsewhere.addModule("first/which.so", "real.so");
    ASSERT_EQ(0, symlink(file.c_str(), (folder.path() + "/which.so").c_str()));
    EXPECT_EQ("first", which({folder}));
    chmod(file.c_str(), 0757);
    EXPECT_EQ("refused", which({folder}));
}

TEST_F(ProviderFoldersTest, WhatIsNoModuleIsRefused) {
    const Folder folder;
    const std::string file = folder.write("which.so", "no module\n");
    EXPECT_EQ("refused", which({folder}));
    unlink(file.c_str());
    folder.write("which.so", "");
    EXPECT_EQ("refused", which({folder}));
    unlink(file.c_str());
    ASSERT_EQ(0, mkdir(file.c_str(), 0755));
    EXPECT_EQ("refused", which({folder}));
}

TEST_F(ProviderFoldersTest, OnlyTheProvidersOfTheRulesAreListed) {
    const Mask mask("A = REPORT\nB = COPY\nC = COPY",
                    {{"A", "B", "C"}, 0, {KORV_BROKEN_PROVIDERS}});
    ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
    const KorvMaskProvider* copy = KorvMaskGetProvider(mask.handle, 0);
    const KorvMaskProvider* report = KorvMaskGetProvider(mask.handle, 1);
    ASSERT_TRUE(copy != nullptr && report != nullptr);
    EXPECT_STREQ("COPY", copy->name);
    EXPECT_STREQ(KORV_BROKEN_PROVIDERS "/copy.so", copy->module);
    EXPECT_STREQ("REPORT", report->name);
    ASSERT_NE(nullptr, report->entry);
    EXPECT_EQ(3u, report->entry->interfaceVersion);
    ASSERT_EQ(1u, report->entry->sampleRuleCount);
    EXPECT_STREQ("REPORT", report->entry->sampleRules[0]);
    EXPECT_EQ(nullptr, KorvMaskGetProvider(mask.handle, 2));
}

std::map<std::string, std::string> allProviders(const std::vector<std::string>& folders,
                                                const std::optional<std::string>& rules) {
    Setting setting = foldersOf(folders);
    setting.flags = KORV_MASK_ALL_PROVIDERS;
    if (!rules) setting.columns.clear();
    const Mask mask(rules, setting);
    EXPECT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
    std::map<std::string, std::string> found;
    std::string last;
    for (uint32_t i = 0;; ++i) {
        const KorvMaskProvider* provider = KorvMaskGetProvider(mask.handle, i);
        if (provider == nullptr) return found;
        EXPECT_LT(last, provider->name) << "not sorted";
        EXPECT_STREQ(provider->name, provider->entry->name);
        last = provider->name;
        found[last] = provider->module;
    }
}

TEST_F(ProviderFoldersTest, AllProvidersAreListedOnceWithoutRules) {
    const Folder first, second;
    const std::string which = first.addModule("first/which.so", "which.so");
    const std::string copy = first.addModule("copy.so", "libkorvprv_copy.so");
    first.write("README", "no module");
    second.addModule("second/which.so", "which.so");
    const std::string fails = second.addModule("fails.so", "fails.so");
    const std::map<std::string, std::string> expected = {
        {"COPY", copy}, {"FAILS", fails}, {"WHICH", which}};
    EXPECT_EQ(expected, allProviders({first, second}, std::nullopt));
    EXPECT_EQ(expected, allProviders({first, second}, "A = COPY"));
}

TEST_F(ProviderFoldersTest, TheProductsProvidersAreListed) {
    const auto found = allProviders({KORV_PROVIDERS}, std::nullopt);
    for (const char* name : {"AFF", "AGE", "CCN", "EML", "HASH", "LKP", "NID"}) {
        EXPECT_EQ(1u, found.count(name)) << name;
    }
}

}  // namespace
