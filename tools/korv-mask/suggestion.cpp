// Recognition of what columns hold. Where several kinds fit, the more specific one comes first.
#include "suggestion.h"

#include <algorithm>
#include <functional>
#include <optional>

#include "shape.h"
#include "summary.h"
#include "value_kinds.h"

namespace tool {

namespace {

// Values that must be of a kind, in percent. Real columns hold some errors and remarks, and random
// digits have a correct check digit in 10 % of all cases only.
constexpr uint64_t kMost = 90;
// When two date formats fit about equally, the difference may be due to errors in this many percent
// of the values. Days above 12 tell months from days in more than half of all dates.
constexpr uint64_t kErrors = 2;
// Below this share, in percent, other kinds are not worth a remark.
constexpr uint64_t kWorthRemark = 50;
// By chance all of 5 random numbers have a correct check digit once in 100,000 columns.
constexpr uint64_t kFewestCards = 5;
// Fewer values may be different, and of one length, by chance.
constexpr uint64_t kFewestIdentities = 20;
// Values in which differences are counted, and layouts that are counted: enough to see whether most
// values agree, and a bound for the memory of thousands of columns.
constexpr uint64_t kSample = 1000;
constexpr size_t kMostLayouts = 32;
// Fewer digits hardly identify a person. A column whose name says so is believed with less.
constexpr size_t kFewestDigits = 6;
constexpr size_t kFewestNamedDigits = 4;
// Without separators, dates outside these years are taken for other numbers.
constexpr int32_t kFirstPlainYear = 1850;
constexpr int32_t kLastPlainYear = 2150;

constexpr size_t kLongestName = 60;  // in a comment

const std::vector<provider::DateFormat>& dateFormats() {
    static const std::vector<provider::DateFormat> formats = [] {
        std::vector<provider::DateFormat> result;
        for (const std::string_view text : provider::kCommonDateFormats) {
            result.push_back(*provider::DateFormat::parse(std::wstring(text.begin(), text.end())));
        }
        return result;
    }();
    return formats;
}

bool hasSeparator(std::string_view dateFormat) {
    return dateFormat.find_first_of(" -./") != dateFormat.npos;
}
bool hasDayFirst(std::string_view dateFormat) {
    return dateFormat.find('D') < dateFormat.find('M');
}

// The words of a header, in capitals: FIRST and NAME in first_name, First Name and firstName2.
std::vector<std::string> wordsOf(const std::string& header) {
    std::vector<std::string> words(1);
    const auto isSmall = [](char c) { return c >= 'a' && c <= 'z'; };
    const auto isCapital = [](char c) { return c >= 'A' && c <= 'Z'; };
    char last = ' ';
    for (const char c : header) {
        const bool isLetter = isSmall(c) || isCapital(c) || (c & 0x80) != 0;
        if (!isLetter || (isCapital(c) && isSmall(last))) words.emplace_back();
        if (isLetter) words.back() += c;
        last = c;
    }
    for (std::string& word : words) word = upperCase(word);
    return words;
}

}  // namespace

void ColumnGuess::add(std::string_view value) {
    if (value.empty()) {
        ++empty_;
        return;
    }
    ++values_;
    if (sampled_ < kSample) {
        ++sampled_;
        different_.insert(std::hash<std::string_view>()(value));
    }
    const std::string shape = shapeOf(value);
    cards_ += isCard(value) ? 1 : 0;
    eMails_ += isEMail(value) ? 1 : 0;
    words_ += isWords(shape) ? 1 : 0;
    if (isTelephone(value)) {
        ++telephones_;
        internationalTelephones_ += value[0] == '+' || value[0] == '(' ? 1 : 0;
    }
    addDate(value);
    addLayout(value, shape);
}

void ColumnGuess::addDate(std::string_view value) {
    for (size_t i = 0; i < dates_.size(); ++i) {
        provider::DateText text = {};
        if (dateFormats()[i].read(value, text) != 0 || !provider::exists(text.date)) continue;
        const bool plausible =
            text.date.year >= kFirstPlainYear && text.date.year <= kLastPlainYear;
        if (plausible || hasSeparator(provider::kCommonDateFormats[i])) ++dates_[i];
    }
}

void ColumnGuess::addLayout(std::string_view value, const std::string& shape) {
    const size_t digits = identityDigits(value);
    if (digits >= kFewestNamedDigits) ++numbers_;
    if (digits < kFewestDigits) return;
    if (layouts_.size() < kMostLayouts) {
        ++layouts_[shape];
    } else if (const auto found = layouts_.find(shape); found != layouts_.end()) {
        ++found->second;
    }
}

bool ColumnGuess::isNamed(const HeaderWords& words) const {
    const std::vector<std::string> parts = wordsOf(name_);
    return std::any_of(parts.begin(), parts.end(),
                       [&](const std::string& part) { return contains(words, part); });
}

bool ColumnGuess::areMost(uint64_t count) const {
    return count * 100 >= values_ * kMost;
}

std::string ColumnGuess::share(uint64_t count) const {
    return grouped(count) + " of " + grouped(values_) + " values";
}

// The first of several that fit the same values.
size_t ColumnGuess::bestDateFormat() const {
    return static_cast<size_t>(std::max_element(dates_.begin(), dates_.end()) - dates_.begin());
}

Suggestion ColumnGuess::dates() const {
    const size_t best = bestDateFormat();
    const std::string format(provider::kCommonDateFormats[best]);
    const std::string reason = share(dates_[best]) + " are dates of the form " + format;
    for (size_t i = 0; i < dates_.size(); ++i) {
        const std::string_view other = provider::kCommonDateFormats[i];
        if (hasDayFirst(other) != hasDayFirst(format) &&
            (dates_[best] - dates_[i]) * 100 <= values_ * kErrors) {
            return {"AGE, secret=?, range=?, format=?", reason + ", and " + grouped(dates_[i]) +
                                                            " of the form " + std::string(other) +
                                                            "; write the format that is meant"};
        }
    }
    const bool quote = format.find_first_of(", ") != format.npos;
    return {"AGE, secret=?, range=?, " + (quote ? "\"format=" + format + "\"" : "format=" + format),
            reason};
}

bool ColumnGuess::haveIdentityLayout(uint64_t& sameLayout) const {
    sameLayout = 0;
    for (const auto& [layout, count] : layouts_) sameLayout = std::max(sameLayout, count);
    return values_ >= kFewestIdentities && areMost(sameLayout) &&
           different_.size() * 100 >= sampled_ * kMost;
}

Suggestion ColumnGuess::unknown() const {
    const size_t date = bestDateFormat();
    const std::pair<uint64_t, std::string> candidates[] = {
        {cards_, "card numbers with a correct check digit"},
        {eMails_, "e-mail addresses"},
        {internationalTelephones_, "telephone numbers"},
        {dates_[date], "dates of the form " + std::string(provider::kCommonDateFormats[date])}};
    const auto most =
        std::max_element(std::begin(candidates), std::end(candidates),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
    std::string reason = "not recognised";
    if (most->first * 100 >= values_ * kWorthRemark) {
        reason +=
            "; " + share(most->first) + " are " + most->second + ", which is not enough for a rule";
    }
    return {"?", reason};
}

Suggestion ColumnGuess::suggestion() const {
    const std::string named = "the column's name stands for ";
    const std::string list = "HASH, secret=?, file=?";
    uint64_t sameLayout = 0;
    if (values_ == 0) return {"?", empty_ == 0 ? "there are no rows" : "all rows are empty"};
    if (areMost(eMails_)) return {"EML, secret=?", share(eMails_) + " are e-mail addresses"};
    if (areMost(cards_) && different_.size() >= kFewestCards) {
        return {"CCN, secret=?", share(cards_) + " are card numbers with a correct check digit"};
    }
    if (areMost(dates_[bestDateFormat()])) return dates();
    if (areMost(internationalTelephones_)) {
        return {"NID, secret=?", share(internationalTelephones_) + " are telephone numbers"};
    }
    if (areMost(telephones_) && isNamed(kTelephoneWords)) {
        return {"NID, secret=?", named + "telephone numbers, and " + share(telephones_) + " fit"};
    }
    if (areMost(numbers_) && isNamed(kIdentityWords)) {
        return {"NID, secret=?", named + "an identity number, and " + share(numbers_) + " fit"};
    }
    if (haveIdentityLayout(sameLayout)) {
        return {"NID, secret=?", share(sameLayout) + " have the same layout of digits, and " +
                                     grouped(different_.size()) + " of the first " +
                                     grouped(sampled_) + " are different, as identity numbers are"};
    }
    if (areMost(words_) && isNamed(kPlaceWords)) {
        return {list, named + "a place, and " + share(words_) + " fit"};
    }
    if (areMost(words_) && isNamed(kPersonNameWords)) {
        return {list, named + "the name of a person, and " + share(words_) + " fit"};
    }
    return unknown();
}

namespace {

// The name as it is where rules read it so, in quotes, or nothing where neither is possible.
std::optional<std::string> writtenName(const std::string& name, bool isUniqueInAnyCase) {
    if (name.empty() || printable(name) != name) return std::nullopt;
    const bool isPlain = std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
               c == '_' || c == '-' || c == '.';
    });
    if (isPlain && isUniqueInAnyCase) return name;
    std::string quoted = "\"";
    for (const char c : name) {
        if (c == '"' || c == '\\') quoted += '\\';
        quoted += c;
    }
    return quoted + '"';
}

constexpr const char* kIntroduction = R"(
# Replace each ? before you use the rules; korv-mask --check refuses them until then:
#   COLUMN = ?   a provider, KEEP or DROP
#   secret=?     the name of a secret; korv-mask --new-secret NAME makes one
#   file=?       a file with one replacement on each line
#   range=?      days to move a date by, from..to, such as -30..30
#   format=?     the date format that is meant
# Check the other rules, too: the first rows may not be typical.
)";

}  // namespace

std::string suggestRules(const std::vector<ColumnGuess>& columns, const std::string& inputName) {
    std::unordered_map<std::string, int> names;
    std::unordered_map<std::string, int> namesInAnyCase;
    for (const ColumnGuess& column : columns) {
        ++names[column.name()];
        ++namesInAnyCase[upperCase(column.name())];
    }
    std::string text = "# Rules for " + printable(inputName) +
                       ", suggested from its header and its first rows." + kIntroduction;
    for (size_t i = 0; i < columns.size(); ++i) {
        const std::string& name = columns[i].name();
        const std::string number = "@" + std::to_string(i + 1);
        std::optional<std::string> written;
        if (names[name] == 1 && name != number) {
            written = writtenName(name, namesInAnyCase[upperCase(name)] == 1);
        }
        const Suggestion suggestion = columns[i].suggestion();
        text += "\n# " + (name.empty() ? number : printable(name, kLongestName)) + ": " +
                suggestion.reason + "\n" + written.value_or(number) + " = " + suggestion.rule +
                "\n";
    }
    return text;
}

}  // namespace tool
