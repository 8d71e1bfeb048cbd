// Calls functions with the stack at a chosen offset from 16-byte alignment (32-bit x86 only).
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <type_traits>

constexpr int kMostWords = 16;

// Calls a function with `words` as its arguments and the stack pointer `offset` bytes below a
// multiple of 16 at the call. Compilers promise an offset of 0.
[[gnu::noinline]] inline uint32_t callAt(const void* function, const uint32_t (&words)[kMostWords],
                                         uint32_t offset) {
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

template <class T>
uint32_t word(T value) {
    if constexpr (std::is_pointer_v<T>) {
        return reinterpret_cast<uint32_t>(value);
    } else {
        return static_cast<uint32_t>(value);
    }
}

// Enters functions at one stack offset, and remembers which.
class Entry {
  public:
    explicit Entry(uint32_t offset) : offset_(offset) {}

    template <class Function, class... Arguments>
    int32_t operator()(const char* name, Function* function, Arguments... arguments) const {
        entered_.insert(name);
        const uint32_t words[kMostWords] = {word(arguments)...};
        return static_cast<int32_t>(
            callAt(reinterpret_cast<const void*>(function), words, offset_));
    }

    const std::set<std::string>& entered() const { return entered_; }

  private:
    uint32_t offset_;
    mutable std::set<std::string> entered_;
};

#define CALL(function, ...) call(#function, function __VA_OPT__(, ) __VA_ARGS__)
