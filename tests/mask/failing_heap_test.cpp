// Memory: what a batch allocates, and what happens when each allocation fails in turn.
#include <dlfcn.h>
#include <sys/stat.h>

#include "c_interface.h"
#include "cxx_heap.h"
#include "folder.h"

namespace {

// Both heaps: that of C++, and malloc as the engine and the support library call it.
struct Heap {
    const char* name;
    void (*failAt)(unsigned);
    unsigned (*allocations)();
};
void PrintTo(const Heap& heap, std::ostream* out) {
    *out << heap.name;
}

unsigned allocations() {
    return heap::allocations() + cxx_heap::allocations();
}
void resetCounts() {
    heap::failAt(0);
    cxx_heap::failAt(0);
}

class FailingHeapTest : public EngineTest, public testing::WithParamInterface<Heap> {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        for (const char* name : {"append.so", "copy.so", "fails.so", "version1.so"}) {
            modules_.push_back(
                dlopen((std::string(KORV_BROKEN_PROVIDERS "/") + name).c_str(), RTLD_NOW));
        }
        for (const char* name : {"libkorvprv_aff.so", "libkorvprv_ccn.so"}) {
            modules_.push_back(dlopen((std::string(KORV_PROVIDERS "/") + name).c_str(), RTLD_NOW));
        }
    }
    void TearDown() override {
        resetCounts();
        for (void* module : modules_) dlclose(module);
        EngineTest::TearDown();
    }

    // Modules stay loaded, so that only the engine's own work is repeated.
    std::vector<void*> modules_;
};

// Settings that are made once, so that opening is all that allocates.
struct Job {
    explicit Job(const char* text, const char* file = nullptr) {
        settings.size = sizeof settings;
        settings.columnCount = std::size(names);
        settings.columns = names;
        settings.rules = text;
        settings.rulesFile = file;
        settings.folders = folders;
        settings.folderCount = std::size(folders);
        settings.secrets = &secret;
        settings.secretCount = 1;
    }

    const char* names[6] = {"A", "B", "C", "D", "E", "F"};
    const char* folders[2] = {KORV_PROVIDERS, KORV_BROKEN_PROVIDERS};
    const uint8_t bytes[16] = {1};
    const KorvMaskSecret secret = {"test", bytes, sizeof bytes};
    KorvMaskSettings settings = {};
};

const char* const kRules =
    "# columns\n\nA = FAILS, on-error=const, value=none\nB = APPEND, with=A\n"
    "\"C\" = CCN, method=transpose, key=12, strict\nD* = VERSION1, key=3\n@5 = COPY, type=wide\n"
#ifdef KORV_HAS_LIBCRYPTO
    "F = AFF, secret=test\n";
#else
    "F = COPY\n";
#endif

testing::AssertionResult saysMemory(const KorvMask* mask) {
    std::string text;
    for (uint64_t i = 0; i < KorvMaskRecordCount(mask); ++i) {
        text += KorvMaskGetRecord(mask, i)->message;
    }
    if (contains(text, "memory")) return testing::AssertionSuccess();
    return testing::AssertionFailure() << text;
}

void openWithEveryFailure(const Heap& heap, const Job& job) {
    KorvMask* mask = nullptr;
    ASSERT_EQ(KORV_MASK_SUCCESS, KorvMaskOpen(&job.settings, &mask));
    KorvMaskClose(mask);
    heap.failAt(0);
    KorvMaskOpen(&job.settings, &mask);
    const unsigned count = heap.allocations();
    KorvMaskClose(mask);
    ASSERT_GT(count, 0u);
    const size_t blocks = heap::liveBlocks(), objects = cxx_heap::liveBlocks();
    for (unsigned n = 1; n <= count; ++n) {
        heap.failAt(n);
        const int32_t status = KorvMaskOpen(&job.settings, &mask);
        heap.failAt(0);
        if (status == KORV_MASK_BAD_RULES || status == KORV_MASK_BAD_PROVIDER) {
            // A provider has said so itself.
            EXPECT_TRUE(saysMemory(mask)) << "allocation " << n << " of " << count;
        } else {
            EXPECT_EQ(KORV_MASK_NO_MEMORY, status) << "allocation " << n << " of " << count;
        }
        KorvMaskClose(mask);
        ASSERT_EQ(blocks, heap::liveBlocks()) << "allocation " << n;
        ASSERT_EQ(objects, cxx_heap::liveBlocks()) << "allocation " << n;
    }
    ASSERT_EQ(KORV_MASK_SUCCESS, KorvMaskOpen(&job.settings, &mask));
    KorvMaskClose(mask);
}

TEST_P(FailingHeapTest, OpeningSurvivesAFailureOfEachAllocation) {
    openWithEveryFailure(GetParam(), Job(kRules));
}

TEST_P(FailingHeapTest, ReadingAFileSurvivesAFailureOfEachAllocation) {
    const Folder folder;
    const std::string file = folder.write("rules.txt", kRules);
    openWithEveryFailure(GetParam(), Job(nullptr, file.c_str()));
}

TEST_P(FailingHeapTest, ReadingSecretsSurvivesAFailureOfEachAllocation) {
    const Folder folder;
    const std::string file =
        folder.write("secrets", "crm = 000102030405060708090a0b0c0d0e0f\n# one more\n");
    chmod(file.c_str(), 0600);
    Job job(kRules);
    job.settings.secretsFile = file.c_str();
    openWithEveryFailure(GetParam(), job);
}

// The list of faults may end early, but it stays a list of faults.
TEST_P(FailingHeapTest, WrongRulesSurviveAFailureOfEachAllocation) {
    const Job job("A = FAILS, refuse\nB = COPY\nC = COPY\nD = COPY, odd\nE = NONE\nF = COPY\n");
    const Heap heap = GetParam();
    KorvMask* mask = nullptr;
    heap.failAt(0);
    ASSERT_EQ(KORV_MASK_BAD_RULES, KorvMaskOpen(&job.settings, &mask));
    const unsigned count = heap.allocations();
    KorvMaskClose(mask);
    const size_t blocks = heap::liveBlocks(), objects = cxx_heap::liveBlocks();
    for (unsigned n = 1; n <= count; ++n) {
        heap.failAt(n);
        const int32_t status = KorvMaskOpen(&job.settings, &mask);
        heap.failAt(0);
        EXPECT_NE(KORV_MASK_SUCCESS, status) << "allocation " << n;
        KorvMaskClose(mask);
        ASSERT_EQ(blocks, heap::liveBlocks()) << "allocation " << n;
        ASSERT_EQ(objects, cxx_heap::liveBlocks()) << "allocation " << n;
    }
}

// A value is masked, or has failed and is replaced; nothing else may be in the result.
void expectNoOther(const Values& expected, const Mask& mask, unsigned n) {
    const Values found = unpack(mask.result->strings);
    for (size_t i = 0; i < expected.size(); ++i) {
        if (mask.result->states[i] == KORV_MASK_VALUE_FAILED) {
            EXPECT_TRUE(found[i] == "" || found[i] == "none") << "allocation " << n;
        } else {
            EXPECT_EQ(expected[i], found[i]) << "allocation " << n;
        }
    }
}

TEST_P(FailingHeapTest, ABatchSurvivesAFailureOfEachAllocation) {
    const Heap heap = GetParam();
    const Job job(kRules);
    const Values values = {"abc", "one", "äö", kNull, "4556737586899855", "two", "\xFF", "none"};
    const Values plain = {"1", "ä", kNull, "", "5", "6", "7", "8"};
    const Batch source(values), related(plain);
    for (uint32_t column = 0; column < std::size(job.names); ++column) {
        Values expected;
        const KorvMaskStrings* other =
            column == 1 ? static_cast<const KorvMaskStrings*>(related) : nullptr;
        unsigned failures = 0;
        for (unsigned n = 0;; ++n) {
            Mask mask(std::nullopt);
            KorvMaskClose(mask.handle);
            ASSERT_EQ(KORV_MASK_SUCCESS, KorvMaskOpen(&job.settings, &mask.handle));
            const size_t blocks = heap::liveBlocks();
            heap.failAt(n);
            mask.status = KorvMaskBatch(mask.handle, column, 1, source, other, &mask.result);
            const bool reached = n > 0 && heap.allocations() >= n;
            heap.failAt(0);
            if (mask.status != KORV_MASK_NO_MEMORY) {
                ASSERT_TRUE(mask.status == KORV_MASK_SUCCESS ||
                            mask.status == KORV_MASK_VALUES_FAILED)
                    << "allocation " << n;
                if (n == 0) expected = unpack(mask.result->strings);
                expectNoOther(expected, mask, n);
            } else {
                EXPECT_EQ(nullptr, mask.result);
            }
            failures += reached ? 1 : 0;
            // The handle works on as if nothing had happened.
            KorvMaskClearRecords(mask.handle);
            KorvMaskBatch(mask.handle, column, 1, source, other, &mask.result);
            ASSERT_NE(nullptr, mask.result) << "allocation " << n;
            EXPECT_EQ(expected, unpack(mask.result->strings)) << "allocation " << n;
            const KorvMaskStatistics& counts = *KorvMaskGetStatistics(mask.handle, column);
            EXPECT_EQ(counts.values, counts.masked + counts.failed);
            EXPECT_EQ(blocks, heap::liveBlocks()) << "allocation " << n;
            if (n > 0 && !reached) break;
        }
        if (column == 0) {
            EXPECT_GT(failures, 0u) << "values with errors allocate";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Heaps, FailingHeapTest,
                         testing::Values(Heap{"Objects", cxx_heap::failAt, cxx_heap::allocations},
                                         Heap{"Blocks", heap::failAt, heap::allocations}),
                         [](const testing::TestParamInfo<Heap>& info) { return info.param.name; });

using AllocationTest = EngineTest;

// Allocations of a batch of `count` values, after an equal one.
unsigned allocationsFor(const std::string& rule, const std::string& value, size_t count) {
    Mask mask(rule);
    const Batch source(Values(count, value));
    const KorvMaskResult* result = nullptr;
    for (int round = 0; round < 2; ++round) {
        resetCounts();
        EXPECT_EQ(KORV_MASK_SUCCESS, KorvMaskBatch(mask.handle, 0, 1, source, nullptr, &result))
            << rule << " " << value;
    }
    return allocations();
}

TEST_F(AllocationTest, NoValueAllocates) {
    for (const char* rule : {"COPY", "COPY, type=wide", "COUNTED", "COUNTED, one", "VERSION1",
                             "KEEP", "NULL", "CONST, value=x", "COPY, on-error=null"}) {
        for (const char* value : {"plain", "grün", ""}) {
            const std::string text = std::string("A = ") + rule;
            EXPECT_LE(allocationsFor(text, value, 10000), 16u) << rule << " " << value;
        }
    }
    EXPECT_LE(allocationsFor("A = CCN, method=transpose, key=17", "4556737586899855", 10000), 16u);
    EXPECT_LE(allocationsFor("A = NID, method=transpose, key=17", "123-45-6789", 10000), 16u);
    EXPECT_LE(allocationsFor("A = AFF, method=reverse", "Größe", 10000), 16u);
    if (!kHasSecrets) GTEST_SKIP() << "without libcrypto: rules with a secret are left out";
    for (const char* action : {"CCN", "NID", "AFF", "EML", "EML, method=ff1", "AGE, range=-9..9"}) {
        const std::string rule = "A = " + std::string(action) + ", secret=test";
        const std::string value = rule[4] == 'E'   ? "john.doe@post.example"
                                  : rule[5] == 'G' ? "2023-12-31"
                                                   : "4556737586899855";
        EXPECT_LE(allocationsFor(rule, value, 10000), 16u) << rule;
    }
}

// Opening and closing again and again keeps nothing.
TEST_F(AllocationTest, NothingIsKeptAfterClosing) {
    const Job job(kRules);
    const Batch source({"abc", "one", "äö", kNull, "two", "\xFF"});
    std::vector<size_t> blocks, objects;
    blocks.reserve(5);
    objects.reserve(5);
    for (int round = 0; round < 5; ++round) {
        KorvMask* mask = nullptr;
        const KorvMaskResult* result = nullptr;
        KorvMaskOpen(&job.settings, &mask);
        KorvMaskBatch(mask, 0, 1, source, nullptr, &result);
        KorvMaskBatch(mask, 1, 1, source, source, &result);
        KorvMaskClose(mask);
        blocks.push_back(heap::liveBlocks());
        objects.push_back(cxx_heap::liveBlocks());
    }
    EXPECT_EQ(blocks[1], blocks[4]);
    EXPECT_EQ(objects[1], objects[4]);
}

}  // namespace
