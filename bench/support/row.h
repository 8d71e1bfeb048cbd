// One row of the table: the same work done by the library, by its literal steps and by peers.
#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace bench {

// A variant of a row is a callable: call(i) does the work on input i, 0 to calls - 1. A batch of
// all the inputs is timed at once; what `refresh` does before each batch is not timed, so that work
// in place finds fresh input and pays for no copy. `observe` gives the bytes that call(i) has to
// produce: as soon as a variant is added they are compared with those of the row's first variant.
class Row {
  public:
    Row(std::string function, std::string input, std::size_t calls);

    // Before each batch, not timed.
    Row& refresh(std::function<void()> refresh);

    // The result of the latest call, which was call(i).
    Row& observe(std::function<std::string(std::size_t)> observe);

    // The number of units that the time is divided by, when it is not the number of calls.
    Row& units(std::size_t units);

    // The LC_CTYPE locale of the row; "C" unless it is named.
    Row& locale(std::string name);

    template <class Call>
    Row& with(const std::string& who, Call call) {
        check(who, [&](std::size_t i) { call(i); });
        add(who, [calls = calls_, call](benchmark::State& state, const Refresh& refresh) {
            const Call local = call;  // so that a clobbered memory leaves its members in registers
            for ([[maybe_unused]] auto _ : state) {
                if (refresh) refresh();
                const auto start = std::chrono::steady_clock::now();
                for (std::size_t i = 0; i < calls; ++i) {
                    local(i);
                    benchmark::ClobberMemory();
                }
                const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
                state.SetIterationTime(time.count());
            }
        });
        return *this;
    }

  private:
    using Refresh = std::function<void()>;
    using Batch = std::function<void(benchmark::State&, const Refresh&)>;

    void check(const std::string& who, const std::function<void(std::size_t)>& call);
    void add(const std::string& who, Batch batch) const;

    std::string function_;
    std::string input_;
    std::size_t calls_;
    std::size_t units_;
    std::string locale_ = "C";
    Refresh refresh_;
    std::function<std::string(std::size_t)> observe_;
    std::vector<std::string> expected_;
};

// The state of a row, which its variants refer to as long as the program runs.
template <class State>
State& forever(State state) {
    return *new State(std::move(state));
}

// The bytes of an object, for observe().
template <class Object>
std::string bytesOf(const Object& object) {
    return {reinterpret_cast<const char*>(&object), sizeof object};
}

template <class Unit>
std::string bytesOf(const Unit* units, std::size_t count) {
    return {reinterpret_cast<const char*>(units), count * sizeof(Unit)};
}

}  // namespace bench
