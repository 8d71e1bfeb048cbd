// Calls of every exported function, entered in whatever way an Entry has (32-bit x86 only).
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <type_traits>
#include <utility>

constexpr int kMostWords = 16;
using Words = uint32_t[kMostWords];

template <class T>
uint32_t word(T value) {
    if constexpr (std::is_pointer_v<T>) {
        return reinterpret_cast<uint32_t>(value);
    } else {
        return static_cast<uint32_t>(value);
    }
}

// Enters functions with arguments as words, and remembers which it has entered.
class Entry {
  public:
    using Enter = std::function<uint32_t(const void* function, const Words& words)>;
    explicit Entry(Enter enter) : enter_(std::move(enter)) {}

    template <class Function, class... Arguments>
    int32_t operator()(const char* name, Function* function, Arguments... arguments) const {
        entered_.insert(name);
        const Words words = {word(arguments)...};
        return static_cast<int32_t>(enter_(reinterpret_cast<const void*>(function), words));
    }

    const std::set<std::string>& entered() const { return entered_; }

  private:
    Enter enter_;
    mutable std::set<std::string> entered_;
};

#define CALL(function, ...) call(#function, function __VA_OPT__(, ) __VA_ARGS__)

const char kLongText[] = "the quick brown fox jumps over the lazy dog";
constexpr uint32_t kLongTextLen = sizeof kLongText - 1;

void enterRecordExports(const Entry& call);
void enterTextExports(const Entry& call);

// Enters every exported function of both libraries, and expects that none of their lists is missed.
void enterEveryExport(const Entry& call);
