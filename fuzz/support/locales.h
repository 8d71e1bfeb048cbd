// Case conversion follows the locale: the two that every system has.
#pragma once

#include <locale.h>

#include "support/expect.h"
#include "support/input.h"

namespace fuzz {

inline void chooseLocale(Input& input) {
    static const locale_t locales[] = {newlocale(LC_ALL_MASK, "C", nullptr),
                                       newlocale(LC_ALL_MASK, "C.UTF-8", nullptr)};
    const locale_t locale = locales[input.choice(2)];
    FUZZ_EXPECT(locale);
    uselocale(locale);
}

}  // namespace fuzz
