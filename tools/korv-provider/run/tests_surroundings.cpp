// Level 7: what a provider needs of its process, and what it leaves alone.
#include <limits.h>
#include <locale.h>
#include <malloc.h>
#include <pthread.h>
#include <unistd.h>

#include <stdexcept>

#include "checks.h"
#include "opening.h"
#include "process_state.h"
#include "watched_heap.h"

namespace kit {

namespace {

// A call of two arguments at most, to be made in a special way.
struct RawCall {
    const void* function;
    const void* first;
    const void* second;
    int32_t result = 0;
};

using Caller = void (*)(RawCall& call, int variant);

// Opens the rule, masks the corpus and closes, with every call of the provider made by `caller`.
void runBy(const Context& context, Caller caller, int variant, const std::string& where) {
    Trial trial(context);
    const std::vector<TestValue>& accepted = trial.accepted();
    std::vector<Outcome> before;
    for (const TestValue& value : trial.corpus) before.push_back(trial.mask(value));
    const PrvEntry& entry = trial.session.entry();
    const auto call = [&](const void* function, const void* first, const void* second) {
        RawCall raw = {function, first, second};
        caller(raw, variant);
        return raw.result;
    };
    doing("opening the rule ", where.c_str());
    void* state = nullptr;
    if (call(reinterpret_cast<const void*>(entry.open), &trial.session.request().call(false),
             &state) != 0) {
        return finding("open fails " + where);
    }
    const auto mask = [&](MaskFunction function, const PrvCall* prepared) {
        return call(reinterpret_cast<const void*>(function), state, prepared);
    };
    trial.session.invoke = [&](MaskFunction function, void*, const PrvCall* prepared) {
        return mask(function, prepared);
    };
    for (size_t i = 0; i < trial.corpus.size(); ++i) {
        if (trial.mask(trial.corpus[i]).equals(before[i])) continue;
        trial.findings.add("the result is another one " + where + ", " + with(trial.corpus[i]));
    }
    How how;
    how.unmask = true;
    for (const TestValue& value : accepted) {
        if (trial.session.canUnmask()) trial.mask(value, how);
    }
    doing("closing the rule ", where.c_str());
    call(reinterpret_cast<const void*>(entry.close), state, nullptr);
}

#ifdef __i386__
// With the stack pointer `offset` bytes below a multiple of 16. Compilers promise an offset of 0.
[[gnu::noinline]] void callMisaligned(RawCall& call, int offset) {
    int32_t result = static_cast<int32_t>(reinterpret_cast<intptr_t>(call.function));
    asm volatile(
        "movl %%esp, %%ebx\n\t"
        "andl $-16, %%esp\n\t"
        "subl $16, %%esp\n\t"
        "subl %%edi, %%esp\n\t"
        "movl %%ecx, 0(%%esp)\n\t"
        "movl %%edx, 4(%%esp)\n\t"
        "call *%%eax\n\t"
        "movl %%ebx, %%esp"
        : "+a"(result), "+c"(call.first), "+d"(call.second)
        : "D"(offset)
        : "ebx", "memory", "cc", "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "xmm7");
    call.result = result;
}
#endif

void stackAlignment([[maybe_unused]] const Context& context) {
#ifdef __i386__
    for (const int offset : {4, 8, 12}) {
        runBy(context, callMisaligned, offset,
              "on a stack " + std::to_string(offset) + " bytes below a multiple of 16");
    }
#endif
}

struct OnThread {
    RawCall* call;
    locale_t locale;
};

void* runOnThread(void* argument) {
    const auto& work = *static_cast<OnThread*>(argument);
    ::uselocale(work.locale);
    using Function = int32_t (*)(const void*, const void*);
    const auto function = reinterpret_cast<Function>(const_cast<void*>(work.call->function));
    work.call->result = function(work.call->first, work.call->second);
    return nullptr;
}

// On a thread with a stack of its own. Below the stack are unreadable pages, more of them than one
// frame can skip.
void callOnSmallStack(RawCall& call, int bytes) {
    constexpr size_t kFence = 64 * 1024;
    OnThread work = {&call, ::uselocale(nullptr)};
    pthread_attr_t attributes;
    pthread_t thread;
    const bool isDone = ::pthread_attr_init(&attributes) == 0 &&
                        ::pthread_attr_setstacksize(&attributes, static_cast<size_t>(bytes)) == 0 &&
                        ::pthread_attr_setguardsize(&attributes, kFence) == 0 &&
                        ::pthread_create(&thread, &attributes, runOnThread, &work) == 0 &&
                        ::pthread_join(thread, nullptr) == 0;
    ::pthread_attr_destroy(&attributes);
    if (!isDone) throw std::runtime_error("no thread with a small stack can be started");
}

void smallStack(const Context& context) {
    constexpr int kBytes = sizeof(void*) == 4 ? 16 * 1024 : 64 * 1024;
    runBy(context, callOnSmallStack, kBytes,
          "on a stack of " + std::to_string(kBytes / 1024) + " KiB");
}

// Opens, masks, unmasks and closes; the aspects must stay as they are, also in between.
void keepsAspect(const Context& context, std::string_view aspect, bool afterEachCall) {
    const std::string before = aspectNow(aspect);
    Findings findings;
    const auto check = [&](const std::string& what) {
        if (aspectNow(aspect) == before) return;
        findings.add(what + " changes the " + std::string(aspect));
    };
    {
        doing("opening the rule");
        Trial trial(context);
        check("open");
        if (afterEachCall) {
            trial.session.invoke = [&](MaskFunction function, void* state, const PrvCall* call) {
                const int32_t status = function(state, call);
                check("mask");
                return status;
            };
        }
        for (const TestValue& value : trial.corpus) trial.mask(value);
        check("mask");
        How how;
        how.unmask = true;
        for (const TestValue& value : trial.corpus) {
            if (trial.session.canUnmask()) trial.mask(value, how);
        }
        check("unmask");
        doing("closing the rule");
    }
    check("close");
}

void localeKept(const Context& context) {
    keepsAspect(context, "locale", false);
}
void signalsKept(const Context& context) {
    keepsAspect(context, "signal handlers or signal mask", false);
}
void umaskKept(const Context& context) {
    keepsAspect(context, "umask or the current folder", false);
}
void environmentKept(const Context& context) {
    keepsAspect(context, "environment", false);
}
void descriptorsKept(const Context& context) {
    keepsAspect(context, "descriptors", false);
}
void threadsKept(const Context& context) {
    keepsAspect(context, "threads and processes", false);
}
// A later call may put right what an earlier one has changed.
void floatingPointKept(const Context& context) {
    keepsAspect(context, "floating-point state", true);
}
void limitsKept(const Context& context) {
    keepsAspect(context, "resource limits, priority or timers", false);
}

size_t residentBytes() {
    const std::string pages = readFile("/proc/self/statm");
    const size_t second = pages.find(' ');
    return std::stoul(pages.substr(second + 1)) * static_cast<size_t>(::sysconf(_SC_PAGESIZE));
}

void constantMemory(const Context& context) {
    constexpr int kTimes = 10000;
    Session session(*context.module, context.settings);
    doing("opening and closing the rule 10,000 times");
    const auto repeat = [&](int times) {
        for (int i = 0; i < times; ++i) openOnce(session, session.request().call(false));
        ::malloc_trim(0);
    };
    repeat(kTimes / 10);
    const size_t heapBefore = heap::liveBytes();
    const size_t residentBefore = residentBytes();
    repeat(kTimes);
    constexpr size_t kAllowed = size_t{1} << 20;
    const auto grown = [](size_t before, size_t now) { return now > before ? now - before : 0; };
    const size_t heapGrowth = grown(heapBefore, heap::liveBytes());
    const size_t residentGrowth = grown(residentBefore, residentBytes());
    if (heapGrowth >= kTimes / 2 || residentGrowth > kAllowed) {
        finding("opening and closing 10,000 times keeps " + std::to_string(heapGrowth) +
                " bytes of the heap, and the process grows by " + std::to_string(residentGrowth) +
                " bytes");
    }
}

}  // namespace

std::vector<NamedTest> surroundingsTests() {
    return {{"stack-alignment", stackAlignment},
            {"small-stack", smallStack},
            {"locale-kept", localeKept},
            {"signals-kept", signalsKept},
            {"umask-kept", umaskKept},
            {"environment-kept", environmentKept},
            {"descriptors-kept", descriptorsKept},
            {"threads-kept", threadsKept},
            {"floating-point-kept", floatingPointKept},
            {"constant-memory", constantMemory},
            {"limits-kept", limitsKept}};
}

}  // namespace kit
