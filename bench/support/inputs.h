// Random inputs; the same in every run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

namespace bench {

// Inputs of short calls: too many for the branch predictor, few enough for the first-level cache.
constexpr std::size_t kManyInputs = 4096;

using Random = std::mt19937;

template <class Number>
Number randomNumber(Random& random, Number low, Number high) {
    return std::uniform_int_distribution<Number>(low, high)(random);
}

template <class Number>
std::vector<Number> randomNumbers(std::size_t count, Number low, Number high) {
    Random random(1);
    std::vector<Number> numbers(count);
    for (Number& number : numbers) number = randomNumber(random, low, high);
    return numbers;
}

// `length` decimal digits.
template <class Unit>
std::basic_string<Unit> randomDigits(Random& random, std::size_t length) {
    std::basic_string<Unit> text(length, 0);
    for (Unit& unit : text) unit = static_cast<Unit>('0' + randomNumber(random, 0, 9));
    return text;
}

// Letters of both cases, and a blank or a digit now and then.
template <class Unit>
std::basic_string<Unit> randomText(Random& random, std::size_t length) {
    static const std::string units =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ 0123456789";
    std::basic_string<Unit> text(length, 0);
    for (Unit& unit : text) {
        const auto at = randomNumber<std::size_t>(random, 0, units.size() - 1);
        unit = static_cast<Unit>(units[at]);
    }
    return text;
}

// Texts of one length in one block, each with its terminator.
template <class Unit>
struct Texts {
    std::size_t length;
    std::vector<Unit> units;

    Unit* at(std::size_t i) { return units.data() + i * (length + 1); }
    const Unit* at(std::size_t i) const { return units.data() + i * (length + 1); }
};

template <class Unit, class Make>
Texts<Unit> texts(std::size_t count, std::size_t length, Make make) {
    Random random(2);
    Texts<Unit> all{length, {}};
    all.units.reserve(count * (length + 1));
    for (std::size_t i = 0; i < count; ++i) {
        const std::basic_string<Unit> text = make(random, length);
        all.units.insert(all.units.end(), text.begin(), text.end());
        all.units.push_back(0);
    }
    return all;
}

}  // namespace bench
