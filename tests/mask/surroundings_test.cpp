// The engine leaves the process as it found it, and works alike in every locale.
#include <dirent.h>
#include <dlfcn.h>
#include <locale.h>
#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <set>

#include "c_interface.h"
#include "folder.h"
#include "text/locales.h"

extern char** environ;

// With LOCPATH in the environment, glibc's newlocale() does not free its list of folders.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:argz_add_sep\n";
}

namespace {

using LocaleTest = EngineTest;
using SurroundingsTest = EngineTest;

const char* const kRules =
    "id = NID, method=transpose, key=5\nstrasse = CCN, method=transpose, key=1, "
    "on-error=null\nCITY = AFF, method=REVERSE\n"
    "N* = FAILS\nREPORT = REPORT, type=wide\nWIDE = COPY, type=wide\nCONST = CONST, value=ı\n";

// All that happens to values, and all that is said about wrong rules.
std::string work() {
    std::string text;
    Mask mask(kRules, {{"ID", "Strasse", "city", "NÏCE", "Report", "wide", "const"},
                       0,
                       {KORV_PROVIDERS, KORV_BROKEN_PROVIDERS}});
    EXPECT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
    for (uint32_t column = 0; KorvMaskGetColumn(mask.handle, column) != nullptr; ++column) {
        for (const Value& value : mask.batch({"123-45-6789", "locale", "İstanbul ıI", "one 1,5",
                                              kNull, "lines", "4556737586899855", "\xFF"},
                                             column)) {
            text += value.value_or("NULL") + "\n";
        }
        text += mask.states() + "\n";
    }
    text += mask.text();
    for (const char* rule : {"A = FAILS, refuse", "i = CCN, method=transpose, key=12345678901",
                             "ı = COPY", "A = CCNI", "\"i\" = COPY", "A = ECHO, number=1,5"}) {
        text += Mask(rule, {{"I"}, 0, {KORV_PROVIDERS, KORV_BROKEN_PROVIDERS}}).text();
    }
    return text;
}

// Works, and compares the locales of the thread and of the process before and after.
std::string workInThisLocale() {
    const locale_t thread = uselocale(static_cast<locale_t>(nullptr));
    const std::string process = setlocale(LC_ALL, nullptr);
    const std::string text = work();
    EXPECT_EQ(thread, uselocale(static_cast<locale_t>(nullptr)));
    EXPECT_EQ(process, setlocale(LC_ALL, nullptr));
    return text;
}

TEST_F(LocaleTest, EveryLocaleGivesTheSame) {
    const std::string expected = workInThisLocale();
    EXPECT_TRUE(contains(expected, "UTF-8 49 ., UTF-8 49 .")) << expected;
    for (const char* name : locales::kAll) {
        const locales::Global locale(name);
        EXPECT_EQ(expected, workInThisLocale()) << name;
    }
    for (const char* name : locales::kAll) {
        const locale_t locale = locales::open(name);
        const locale_t before = uselocale(locale);
        EXPECT_EQ(expected, workInThisLocale()) << name;
        uselocale(before);
        freelocale(locale);
    }
}

TEST_F(LocaleTest, AllFunctionsOfAProviderRunInTheLocaleOfTheEngine) {
    void* module = dlopen(KORV_BROKEN_PROVIDERS "/report.so", RTLD_NOW);
    ASSERT_NE(nullptr, module) << dlerror();
    {
        const locales::Global locale(locales::kTurkish);
        Mask("A = REPORT").batch({"value"});
    }
    EXPECT_STREQ("UTF-8 49 .", static_cast<char*>(dlsym(module, "KorvTestCloseLocale")));
    dlclose(module);
}

// What a provider does to the locale of the thread ends with the call.
TEST_F(LocaleTest, AProviderCannotChangeTheLocaleOfTheThread) {
    const locales::Global process(locales::kGerman);
    const locale_t turkish = locales::open(locales::kWideTurkish);
    const locale_t before = uselocale(turkish);
    {
        Mask mask("A = BROKEN_LOCALE\nB = REPORT", {{"A", "B"}, 0, {KORV_BROKEN_PROVIDERS}});
        EXPECT_EQ((Values{"a", "ä"}), mask.batch({"a", "ä"}));
        EXPECT_EQ(turkish, uselocale(static_cast<locale_t>(nullptr)));
        EXPECT_EQ((Values{"UTF-8 49 ., UTF-8 49 ."}), mask.batch({"locale"}, 1));
    }
    EXPECT_EQ(turkish, uselocale(before));
    freelocale(turkish);
}

TEST_F(LocaleTest, ACallThatFailsRestoresTheLocaleToo) {
    const locale_t turkish = locales::open(locales::kWideTurkish);
    const locale_t before = uselocale(turkish);
    {
        Mask wrong("A = FAILS, refuse"), aborting("A = FAILS, on-error=abort"),
            overrun("A = BROKEN_OVERRUN");
        EXPECT_EQ(turkish, uselocale(static_cast<locale_t>(nullptr)));
        aborting.batch({"one"});
        EXPECT_EQ(turkish, uselocale(static_cast<locale_t>(nullptr)));
        overrun.batch({"bad"});
        EXPECT_EQ(turkish, uselocale(static_cast<locale_t>(nullptr)));
    }
    EXPECT_EQ(turkish, uselocale(before));
    freelocale(turkish);
}

std::set<std::string> entriesOf(const char* folder) {
    std::set<std::string> names;
    DIR* open = opendir(folder);
    while (const dirent* entry = readdir(open)) names.insert(entry->d_name);
    closedir(open);
    return names;
}

// What a process shares with its libraries, as text.
std::string surroundings() {
    std::string text;
    for (char** entry = environ; *entry != nullptr; ++entry) text += std::string(*entry) + "\n";
    const mode_t mask = umask(0);
    umask(mask);
    char folder[4096];
    text += "umask " + std::to_string(mask) + " in " + getcwd(folder, sizeof folder) + "\nsignals";
    sigset_t blocked;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    for (int number = 1; number < NSIG; ++number) {
        struct sigaction action = {};
        if (sigaction(number, nullptr, &action) != 0) continue;
        const auto handler = reinterpret_cast<uintptr_t>(action.sa_handler);
        text += " " + std::to_string(handler) + "/" + std::to_string(action.sa_flags) + "/" +
                std::to_string(sigismember(&blocked, number));
    }
    text += "\nthreads " + std::to_string(entriesOf("/proc/self/task").size()) + ", descriptors";
    for (const std::string& name : entriesOf("/proc/self/fd")) text += " " + name;
    return text;
}

TEST_F(SurroundingsTest, TheProcessStaysAsItWas) {
    const Folder folder;
    setenv("LC_ALL", "tr_TR.UTF-8", 1);
    const mode_t mask = umask(0123);
    work();  // what the C library opens once
    const std::string before = surroundings();
    work();
    {
        Setting setting;
        setting.rulesFile = folder.write("rules.txt", "A = COPY\n");
        Mask open(std::nullopt, setting);
        open.batch({"a"});
        EXPECT_EQ(before, surroundings()) << "while a handle is open";
        Setting all;
        all.flags = KORV_MASK_ALL_PROVIDERS;
        all.columns.clear();
        all.folders = {KORV_PROVIDERS};
        const Mask listing(std::nullopt, all);
        EXPECT_EQ(before, surroundings());
    }
    EXPECT_EQ(before, surroundings());
    umask(mask);
    unsetenv("LC_ALL");
}

TEST_F(SurroundingsTest, NothingIsPrinted) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    work();
    Mask("A = BROKEN_LENGTH").batch({"bad"});
    Mask("A = BROKEN_OVERRUN").batch({"bad"});
    Mask("A = BROKEN_NAME_OTHER").text();
    Mask("A = NONE").text();
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

}  // namespace
