// The locales that the build makes for the tests, and ways to be in one of them.
#pragma once

#include <locale.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace locales {

inline constexpr const char* kGerman = "de_DE.ISO-8859-1";
inline constexpr const char* kTurkish = "tr_TR.ISO-8859-9";
// In Turkish, i and I are no pair: the case of ASCII letters changes, too.
inline constexpr const char* kWideTurkish = "tr_TR.UTF-8";
inline constexpr const char* kRussian = "ru_RU.KOI8-R";  // 0xFF is a capital letter
inline constexpr const char* kOdd = "odd.UTF-8";         // the capital of U+0040 is U+0391

// All of them; in ru_RU.CP1251 0xFF is a small letter.
inline constexpr const char* kAll[] = {"C",      "en_US.UTF-8", kWideTurkish,   kGerman,
                                       kTurkish, kRussian,      "ru_RU.CP1251", kOdd};

[[noreturn]] inline void missing(const char* name) {
    std::fprintf(stderr, "no locale %s in %s\n", name, KORV_TEST_LOCALES);
    std::abort();
}

// The locale of the process, from now on.
inline void choose(const char* name, int category = LC_ALL) {
    setenv("LOCPATH", KORV_TEST_LOCALES, 1);
    if (!setlocale(category, name)) missing(name);
}

// The process is in a locale for as long as this lives, then in the C locale.
class Global {
  public:
    explicit Global(const char* name) { choose(name); }
    Global(const Global&) = delete;
    Global& operator=(const Global&) = delete;
    ~Global() { choose("C"); }
};

// A locale object for uselocale; release with freelocale. Leaves the process in the locale it is
// in. (newlocale would do, but the system loses some memory there when LOCPATH is set.)
inline locale_t open(const char* name) {
    const std::string current = setlocale(LC_ALL, nullptr);
    choose(name);
    const locale_t opened = duplocale(LC_GLOBAL_LOCALE);
    choose(current.c_str());
    if (!opened) missing(name);
    return opened;
}

}  // namespace locales
