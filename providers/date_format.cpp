// Parsing of date formats; dates from text and back.
#include "providers/date_format.h"

#include <algorithm>
#include <chrono>
#include <span>
#include <utility>

#include "providers/date_reader.h"

namespace provider {

namespace {

template <class Char>
Char* writeNumber(int32_t number, uint8_t width, Char* target) {
    const int32_t digits = width != 0 ? width : number < 10 ? 1 : 2;
    for (int32_t i = digits - 1; i >= 0; --i, number /= 10) {
        target[i] = static_cast<Char>('0' + number % 10);
    }
    return target + digits;
}

template <class Char>
Char* writeName(std::string_view name, LetterCase letterCase, Char* target) {
    for (size_t i = 0; i < name.size(); ++i) {
        const bool keep =
            i == 0 ? letterCase != LetterCase::lower : letterCase == LetterCase::upper;
        *target++ = static_cast<Char>(keep ? name[i] : toportwlower(name[i]));
    }
    return target;
}

struct NamedElement {
    std::wstring_view name;
    DateElement element;
};
constexpr NamedElement kTwoDigitParts[] = {{L"YYYY", {DateElement::year, 4, 0}},
                                           {L"MM", {DateElement::month, 2, 0}},
                                           {L"DD", {DateElement::day, 2, 0}}};
// A part comes before those that it begins with.
constexpr NamedElement kParts[] = {
    {L"YYYY", {DateElement::year, 4, 0}},     {L"MONTH", {DateElement::monthName, 0, 0}},
    {L"MON", {DateElement::monthName, 3, 0}}, {L"MM", {DateElement::month, 2, 0}},
    {L"M", {DateElement::month, 0, 0}},       {L"DD", {DateElement::day, 2, 0}},
    {L"D", {DateElement::day, 0, 0}}};

std::vector<DateElement> elementsOf(std::wstring_view format, std::span<const NamedElement> parts) {
    std::vector<DateElement> elements;
    while (!format.empty()) {
        const auto part = std::find_if(parts.begin(), parts.end(), [format](const auto& p) {
            return format.starts_with(p.name);
        });
        if (part != parts.end()) {
            elements.push_back(part->element);
            format.remove_prefix(part->name.size());
        } else {
            const auto character = static_cast<wchar_t>(upperCase(format.front()));
            elements.push_back({DateElement::literal, 1, character});
            format.remove_prefix(1);
        }
    }
    return elements;
}

// Whether a format has YYYY, MM and DD once each. It may then contain any other characters.
bool hasTwoDigitParts(std::wstring_view format) {
    return std::all_of(
        std::begin(kTwoDigitParts), std::end(kTwoDigitParts), [format](const auto& part) {
            const size_t at = format.find(part.name);
            return at != format.npos && format.find(part.name, at + 1) == format.npos;
        });
}

// Whether there is one year, one month and one day, no other ASCII letter, and no digit right after
// a part of one or two digits.
bool isUnambiguous(const std::vector<DateElement>& elements) {
    int counts[DateElement::day + 1] = {};
    bool digitMayFollow = true;
    for (const DateElement& element : elements) {
        const bool literal = element.kind == DateElement::literal;
        const bool name = element.kind == DateElement::monthName;
        if (literal && isLetter(element.character)) return false;
        const bool digit = literal ? isDigit(element.character) : !name;
        if (digit && !digitMayFollow) return false;
        digitMayFollow = element.width != 0 || name;
        ++counts[element.kind];
    }
    return counts[DateElement::year] == 1 && counts[DateElement::day] == 1 &&
           counts[DateElement::month] + counts[DateElement::monthName] == 1;
}

}  // namespace

std::optional<DateFormat> DateFormat::parse(std::wstring_view text) {
    std::wstring capitals(text);
    KORV_StrToWUpper(capitals.data());
    if (hasTwoDigitParts(text)) return DateFormat(text, elementsOf(text, kTwoDigitParts));
    if (hasTwoDigitParts(capitals)) {
        return DateFormat(capitals, elementsOf(capitals, kTwoDigitParts));
    }
    std::vector<DateElement> elements = elementsOf(capitals, kParts);
    if (!isUnambiguous(elements)) return std::nullopt;
    return DateFormat(capitals, std::move(elements));
}

bool DateFormat::hasFixedLength() const {
    return std::all_of(elements_.begin(), elements_.end(),
                       [](const DateElement& element) { return element.width != 0; });
}

bool DateFormat::hasOneSpelling() const {
    return hasFixedLength() &&
           std::none_of(elements_.begin(), elements_.end(), [](const DateElement& element) {
               return element.kind == DateElement::monthName;
           });
}

template <class Char>
int32_t DateFormat::read(std::basic_string_view<Char> text, DateText& found) const {
    DateReader<Char> reader(text);
    int32_t year = 0;
    int32_t month = 0;
    int32_t day = 0;
    for (const DateElement& element : elements_) {
        const size_t first = reader.position();
        bool fits = false;
        switch (element.kind) {
            case DateElement::literal:
                fits = reader.skip(element.character);
                break;
            case DateElement::year:
                fits = reader.readNumber(element.width, year);
                break;
            case DateElement::month:
                fits = reader.readNumber(element.width, month);
                found.monthLength = static_cast<int32_t>(reader.position() - first);
                break;
            case DateElement::monthName:
                fits = reader.readMonth(element.width, month, found.letterCase);
                found.monthLength = static_cast<int32_t>(reader.position() - first);
                break;
            case DateElement::day:
                fits = reader.readNumber(element.width, day);
                found.dayLength = static_cast<int32_t>(reader.position() - first);
                break;
        }
        if (!fits) return static_cast<int32_t>(reader.position()) + 1;
    }
    found.date = {static_cast<int16_t>(year), static_cast<uint16_t>(month),
                  static_cast<uint16_t>(day)};
    return reader.skipTime() ? 0 : static_cast<int32_t>(reader.position()) + 1;
}

template <class Char>
Char* DateFormat::write(const OdbcDate& date, const DateText& found,
                        std::basic_string_view<Char> text, Char* target) const {
    const Char* source = text.data();
    for (const DateElement& element : elements_) {
        switch (element.kind) {
            case DateElement::literal:
                *target++ = *source++;
                break;
            case DateElement::year:
                target = writeNumber(date.year, element.width, target);
                source += element.width;
                break;
            case DateElement::month:
                target = writeNumber(date.month, element.width, target);
                source += found.monthLength;
                break;
            case DateElement::monthName:
                target = writeName(monthName(date.month, element.width), found.letterCase, target);
                source += found.monthLength;
                break;
            case DateElement::day:
                target = writeNumber(date.day, element.width, target);
                source += found.dayLength;
                break;
        }
    }
    return std::copy(source, text.data() + text.size(), target);
}

template int32_t DateFormat::read(std::string_view, DateText&) const;
template int32_t DateFormat::read(std::wstring_view, DateText&) const;
template char* DateFormat::write(const OdbcDate&, const DateText&, std::string_view, char*) const;
template wchar_t* DateFormat::write(const OdbcDate&, const DateText&, std::wstring_view,
                                    wchar_t*) const;

std::vector<DateFormat> parseDateFormats(std::wstring_view text) {
    std::vector<DateFormat> formats;
    size_t refused = 0;
    for (size_t first = 0; first <= text.size();) {
        const size_t end = std::min(text.find(L'|', first), text.size());
        const auto format = DateFormat::parse(text.substr(first, end - first));
        if (format) formats.push_back(*format);
        refused += format ? 0 : 1;
        first = end + 1;
    }
    if (refused == 0) return formats;
    // Between incomplete formats a | is a character like any other: YYYY|MM|DD.
    const auto whole = formats.empty() ? DateFormat::parse(text) : std::nullopt;
    if (whole) return {*whole};
    return {};
}

bool exists(const OdbcDate& date) {
    using namespace std::chrono;
    return date.year >= 1 && date.year <= 9999 &&
           year_month_day(year(date.year), month(date.month), day(date.day)).ok();
}

}  // namespace provider
