// Every exported function works when entered with a stack that is aligned to 4 bytes only.
#include <gtest/gtest.h>

#include "interface/every_export.h"

namespace {

// Calls a function with `words` as its arguments and the stack pointer `offset` bytes below a
// multiple of 16 at the call. Compilers promise an offset of 0.
[[gnu::noinline]] uint32_t callAt(const void* function, const Words& words, uint32_t offset) {
    uint32_t result = reinterpret_cast<uint32_t>(function);
    const uint32_t* from = words;
    asm volatile(
        "movl %%esp, %%ebx\n\t"
        "andl $-16, %%esp\n\t"
        "subl $64, %%esp\n\t"
        "subl %%edx, %%esp\n\t"
        "movl %%esp, %%edi\n\t"
        "movl $16, %%ecx\n\t"
        "cld\n\t"
        "rep movsl\n\t"
        "call *%%eax\n\t"
        "movl %%ebx, %%esp"
        : "+a"(result), "+d"(offset), "+S"(from)
        :
        : "ebx", "ecx", "edi", "memory", "cc"
#ifdef __SSE2__
          ,
          "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "xmm7"
#endif
    );
    return result;
}

Entry entryAt(uint32_t offset) {
    return Entry([offset](const void* function, const Words& words) {
        return callAt(function, words, offset);
    });
}

// The stack pointer that the caller had when it called.
extern "C" uint32_t stackAtCall();
asm(".text\n"
    ".type stackAtCall, @function\n"
    "stackAtCall:\n\t"
    "leal 4(%esp), %eax\n\t"
    "ret\n"
    ".size stackAtCall, . - stackAtCall\n");

class StackOffset : public testing::TestWithParam<uint32_t> {};

TEST_P(StackOffset, EveryFunctionWorks) {
    enterEveryExport(entryAt(GetParam()));
}

TEST_P(StackOffset, TheStackStandsAtTheOffset) {
    const Entry call = entryAt(GetParam());
    EXPECT_EQ((16 - GetParam()) % 16, static_cast<uint32_t>(CALL(stackAtCall)) % 16);
}

// The shadow memory of the address sanitizer has no place for frames between its 8-byte units: in a
// leaf function that the compiler leaves as it came, it reports sound accesses.
#ifdef __SANITIZE_ADDRESS__
constexpr uint32_t kStep = 8;
#else
constexpr uint32_t kStep = 4;
#endif
INSTANTIATE_TEST_SUITE_P(FromSixteen, StackOffset, testing::Range(0u, 16u, kStep));

}  // namespace
