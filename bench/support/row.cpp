// Registers the variants of a row and compares their results.
#include "support/row.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace bench {
namespace {

void setLocale(const std::string& name) {
    if (std::setlocale(LC_CTYPE, name.c_str())) return;
    std::fprintf(stderr, "no locale %s here\n", name.c_str());
    std::exit(2);
}

}  // namespace

Row::Row(std::string function, std::string input, std::size_t calls)
    : function_(std::move(function)), input_(std::move(input)), calls_(calls), units_(calls) {}

Row& Row::refresh(std::function<void()> refresh) {
    refresh_ = std::move(refresh);
    return *this;
}

Row& Row::observe(std::function<std::string(std::size_t)> observe) {
    observe_ = std::move(observe);
    return *this;
}

Row& Row::units(std::size_t units) {
    units_ = units;
    return *this;
}

Row& Row::locale(std::string name) {
    locale_ = std::move(name);
    return *this;
}

void Row::check(const std::string& who, const std::function<void(std::size_t)>& call) {
    if (!observe_) return;
    setLocale(locale_);
    if (refresh_) refresh_();
    const bool first = expected_.empty();
    for (std::size_t i = 0; i < calls_; ++i) {
        call(i);
        std::string result = observe_(i);
        if (first) {
            expected_.push_back(std::move(result));
        } else if (result != expected_[i]) {
            std::fprintf(stderr, "%s, %s: %s has another result for input %zu\n", function_.c_str(),
                         input_.c_str(), who.c_str(), i);
            std::exit(1);
        }
    }
    setLocale("C");
}

// The three parts of the name are parted again by report.py.
void Row::add(const std::string& who, Batch batch) const {
    const std::string name = function_ + "|" + input_ + "|" + who;
    auto run = [batch = std::move(batch), refresh = refresh_, locale = locale_,
                units = units_](benchmark::State& state) {
        setLocale(locale);
        batch(state, refresh);
        setLocale("C");
        state.counters["units"] = static_cast<double>(units);
    };
    benchmark::RegisterBenchmark(name.c_str(), run)->UseManualTime();
}

}  // namespace bench
