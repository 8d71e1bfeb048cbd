// Handles in several threads at once: each gives what it gives alone.
#include <thread>

#include "c_interface.h"
#include "folder.h"

namespace {

const Setting& setting() {
    static const Setting made = {{"CARD", "ID", "MAIL", "NAME", "CITY", "NOTE", "OLD", "BAD"},
                                 0,
                                 {KORV_PROVIDERS, KORV_BROKEN_PROVIDERS}};
    return made;
}

std::string rules(const std::string& cities) {
    return "CARD = CCN, method=transpose, key=17\nID = NID, method=transpose, key=5, "
           "on-error=null\nMAIL = EML, method=transpose, key=3\n"
           "NAME = AFF, method=reverse\nCITY = LKP, \"file=" +
           cities +
           "\", default=Other\n"
           "NOTE = APPEND, with=NAME\nOLD = VERSION1, key=6\nBAD = BROKEN_BATCH_LENGTH\n";
}

Values valuesOf(uint32_t column, int batch) {
    static const char* const stems[] = {"4556737586899855",
                                        "123-45-6789",
                                        "ann@example.org",
                                        "Jürgen",
                                        "Bern",
                                        "note",
                                        "value",
                                        "good"};
    Values values = {kNull, "", "ö", "\xFF"};
    for (int i = 0; i < 60; ++i) {
        values.emplace_back(stems[column] + (i % 3 == 0 ? std::to_string(batch * 60 + i) : ""));
    }
    return values;
}

// The work of a thread: several handles, one after the other, several batches each.
std::string work(const std::string& text) {
    std::string outcome;
    for (int round = 0; round < 5; ++round) {
        Mask mask(text, setting());
        EXPECT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
        for (int batch = 0; batch < 10; ++batch) {
            for (uint32_t column = 0; column < setting().columns.size(); ++column) {
                const Values related = valuesOf(3, batch);
                Values safe = related;
                safe[3] = "plain";
                const bool reads = KorvMaskGetColumn(mask.handle, column)->related == 3;
                for (const Value& value :
                     mask.batch(valuesOf(column, batch), column, 1, reads ? &safe : nullptr)) {
                    outcome += value.value_or("NULL") + "\n";
                }
                outcome += mask.states() + "\n";
            }
        }
        outcome += mask.text();
    }
    return outcome;
}

TEST(ThreadsTest, HandlesInThreadsGiveWhatTheyGiveAlone) {
    const Folder folder;
    const std::string text = rules(folder.write("cities.txt", "Bern = Basel\n"));
    const std::string expected = work(text);
    EXPECT_TRUE(contains(expected, "Basel"));
    std::string outcomes[6];
    {
        std::vector<std::jthread> threads;
        for (std::string& outcome : outcomes) {
            threads.emplace_back([&] { outcome = work(text); });
        }
    }
    for (const std::string& outcome : outcomes) EXPECT_TRUE(expected == outcome);
}

// A handle may wander from one thread to another between calls.
TEST(ThreadsTest, AHandleIsBoundToNoThread) {
    Mask mask("A = FAILS");
    for (int i = 0; i < 5; ++i) {
        const std::jthread thread([&] {
            EXPECT_EQ((Values{"xa", "", "xä"}), mask.batch({"a", "one", "ä"}));
        });
    }
    EXPECT_EQ(5u, KorvMaskRecordCount(mask.handle));
}

}  // namespace
