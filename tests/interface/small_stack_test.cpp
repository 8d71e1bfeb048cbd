// Every exported function is content with the smallest stack that a thread can have: 16 KiB.
#include <gtest/gtest.h>
#include <limits.h>
#include <pthread.h>

#include "interface/every_export.h"

namespace {

// Below the stack are unreadable pages, more of them than one frame can skip.
constexpr std::size_t kGuard = 64 * 1024;

struct Call {
    const void* function;
    const uint32_t* words;
    uint32_t result;
};

void* run(void* argument) {
    auto& call = *static_cast<Call*>(argument);
    const uint32_t* w = call.words;
    const auto function =
        reinterpret_cast<uint32_t (*)(uint32_t, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t,
                                      uint32_t)>(const_cast<void*>(call.function));
    call.result = function(w[0], w[1], w[2], w[3], w[4], w[5], w[6]);
    return nullptr;
}

// Each call has a thread of its own.
uint32_t callOnSmallStack(const void* function, const Words& words) {
    Call call = {function, words, 0};
    pthread_attr_t attributes;
    pthread_t thread;
    EXPECT_EQ(0, pthread_attr_init(&attributes));
    EXPECT_EQ(0, pthread_attr_setstacksize(&attributes, PTHREAD_STACK_MIN));
    EXPECT_EQ(0, pthread_attr_setguardsize(&attributes, kGuard));
    EXPECT_EQ(0, pthread_create(&thread, &attributes, run, &call));
    EXPECT_EQ(0, pthread_join(thread, nullptr));
    EXPECT_EQ(0, pthread_attr_destroy(&attributes));
    return call.result;
}

TEST(SmallStack, IsEnoughForEveryFunction) {
    ASSERT_EQ(16384, PTHREAD_STACK_MIN);
    enterEveryExport(Entry(callOnSmallStack));
}

}  // namespace
