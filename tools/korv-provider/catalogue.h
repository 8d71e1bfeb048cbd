// The tests by number, name and purpose. docs/guides/provider_rules.md has the same numbers.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace kit {

// What a test needs.
enum class Scope {
    file,    // the module's file only; korv-provider runs it itself
    module,  // the loaded module
    rule,    // an opened rule; the test runs once for each rule
};

struct TestInfo {
    int level;
    int number;  // within its level, from 1
    const char* name;
    Scope scope;
    int bits;  // 32 for a test of 32-bit modules only, otherwise 0
    const char* purpose;

    // "4.6 target-exact", as options and findings name the test.
    std::string title() const {
        return std::to_string(level) + "." + std::to_string(number) + " " + name;
    }
};

inline constexpr int kHighestLevel = 10;

std::span<const TestInfo> allTests();

// What a level is about.
std::string_view levelName(int level);

}  // namespace kit
