// Which rule each column gets: rules by number first, then by name, then by pattern.
#include "plan.h"

#include <algorithm>
#include <numeric>
#include <string_view>
#include <unordered_map>

#include "korv/text.h"
#include "mask_error.h"
#include "text/utf8_text.h"

namespace mask {

namespace {

constexpr size_t kMostListed = 20;

// Whether a name matches a pattern. fnmatch() would also interpret brackets and backslashes. After
// a mismatch only the last * takes one more character, so that no pattern takes longer than the
// product of both lengths.
bool matches(std::wstring_view pattern, std::wstring_view name) {
    size_t p = 0;
    size_t n = 0;
    size_t star = pattern.npos;
    size_t afterStar = 0;  // the first character of the name that the last * leaves
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == L'*') {
            star = p++;
            afterStar = n;
        } else if (p < pattern.size() && (pattern[p] == L'?' || pattern[p] == name[n])) {
            ++p;
            ++n;
        } else if (star != pattern.npos) {
            p = star + 1;
            n = ++afterStar;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(L'*', p) == pattern.npos;
}

// Rules of an earlier stage win over those of a later one.
enum class Stage { numbers, names, patterns };

Stage stageOf(const Rule& rule) {
    if (rule.match == ColumnMatch::number) return Stage::numbers;
    return rule.match == ColumnMatch::pattern ? Stage::patterns : Stage::names;
}

// The columns, and the rules that they have so far.
class Planner {
  public:
    Planner(const Rules& rules, const std::vector<std::string>& names, uint32_t flags)
        : plan(names.size()),
          rules_(rules),
          names_(names),
          unnamed_((flags & KORV_MASK_UNNAMED_COLUMNS) != 0),
          areAll_((flags & (KORV_MASK_SOME_COLUMNS | KORV_MASK_ONE_RULE)) == 0),
          takesNumbers_(areAll_ || (flags & KORV_MASK_ONE_RULE) != 0) {
        // Without names of their own, columns match * alone, as an empty name does.
        normalNames_.resize(names.size());
        if (unnamed_) return;
        Faults faults;
        for (size_t i = 0; i < names.size(); ++i) {
            faults.collect([&] { addName(i); });
        }
        faults.raise();
    }

    // Throws MaskError when a rule does not fit. Its columns then still count as listed.
    void assign(const Rule& rule) {
        switch (stageOf(rule)) {
            case Stage::numbers:
                return assignNumber(rule);
            case Stage::names:
                return assignName(rule);
            case Stage::patterns:
                return assignPattern(rule);
        }
    }

    void refuseUnlisted() const {
        std::vector<size_t> unlisted;
        for (size_t i = 0; i < plan.size(); ++i) {
            if (plan[i] == nullptr) unlisted.push_back(i);
        }
        if (unlisted.empty()) return;
        const bool one = unlisted.size() == 1;
        throw MaskError(KORV_MASK_BAD_RULES,
                        rules_.file + (one ? ": column " : ": columns ") + list(unlisted) +
                            (one ? " has no rule; add one" : " have no rule; add a rule for each") +
                            ", such as " + nameInRule(unlisted[0]) +
                            " = KEEP, or keep all unlisted columns");
    }

    std::vector<const Rule*> plan;

  private:
    void assignNumber(const Rule& rule) {
        if (!takesNumbers_) {
            rules_.fail(rule, 1,
                        "only some of the columns are given, so @" + std::to_string(rule.number) +
                            " is not known; give the column by name");
        }
        if (rule.number > plan.size()) {
            rules_.fail(rule, 1,
                        "no column @" + std::to_string(rule.number) +
                            "; the number of columns is " + std::to_string(plan.size()));
        }
        give(rule.number - 1, rule);
    }

    void assignName(const Rule& rule) {
        const std::vector<size_t>& columns = named(rule);
        if (columns.empty()) {
            if (!areAll_) return;
            rules_.fail(rule, 1, "no column " + shown(rule.column) + "; " + header());
        }
        std::vector<size_t> open = columns;
        std::erase_if(open, [&](size_t column) {
            return plan[column] != nullptr && plan[column]->match == ColumnMatch::number;
        });
        if (open.size() <= 1) {
            give(open.empty() ? columns[0] : open[0], rule);
            return;
        }
        std::string numbers;
        for (size_t i = 0; i < open.size(); ++i) {
            if (plan[open[i]] == nullptr) plan[open[i]] = &rule;
            if (i < kMostListed) numbers += (i == 0 ? "@" : ", @") + std::to_string(open[i] + 1);
        }
        if (open.size() > kMostListed) numbers += ", ...";
        rules_.fail(rule, 1,
                    std::to_string(columns.size()) + " columns are named " + shown(rule.column) +
                        "; name them by number: " + numbers);
    }

    void assignPattern(const Rule& rule) {
        const std::wstring pattern = normalName(rule.column);
        bool found = false;
        size_t twice = plan.size();  // the first column with two patterns
        for (size_t i = 0; i < plan.size(); ++i) {
            if (!matches(pattern, normalNames_[i])) continue;
            found = true;
            if (plan[i] == nullptr) {
                plan[i] = &rule;
            } else if (plan[i]->match == ColumnMatch::pattern) {
                twice = std::min(twice, i);
            }
        }
        if (!found && areAll_) {
            rules_.fail(rule, 1, "no column matches " + shown(rule.column) + "; " + header());
        }
        if (twice < plan.size()) {
            rules_.fail(
                rule, 1,
                "column " + columnName(twice) + " matches this pattern and the one on line " +
                    std::to_string(plan[twice]->line) + "; give the column a rule of its own");
        }
    }

    void addName(size_t column) {
        const std::string& name = names_[column];
        if (text::validUtf8Length(name.data(), name.size()) != name.size()) {
            throw MaskError(
                KORV_MASK_BAD_RULES,
                "the name of column " + std::to_string(column + 1) + " is not UTF-8 text");
        }
        normalNames_[column] = normalName(name);
        byLiteral_[name].push_back(column);
        byName_[normalNames_[column]].push_back(column);
    }

    void give(size_t column, const Rule& rule) {
        if (plan[column] != nullptr) {
            rules_.fail(rule, 1,
                        "column " + columnName(column) + " has a rule on line " +
                            std::to_string(plan[column]->line) + " already");
        }
        plan[column] = &rule;
    }

    // The columns that a rule means by name.
    const std::vector<size_t>& named(const Rule& rule) const {
        static const std::vector<size_t> kNone;
        if (rule.match == ColumnMatch::literal) {
            const auto found = byLiteral_.find(rule.column);
            return found == byLiteral_.end() ? kNone : found->second;
        }
        const auto found = byName_.find(normalName(rule.column));
        return found == byName_.end() ? kNone : found->second;
    }

    std::string columnName(size_t column) const {
        if (unnamed_ || names_[column].empty()) return "@" + std::to_string(column + 1);
        return shown(names_[column]);
    }

    // The column's name as a rule of its own would give it.
    std::string nameInRule(size_t column) const {
        const std::string name = columnName(column);
        const bool plain = name == names_[column] && name.find_first_of("\"\\=@#*?") == name.npos &&
                           name.front() != ' ' && name.back() != ' ' &&
                           byName_.at(normalNames_[column]).size() == 1;
        return plain ? name : "@" + std::to_string(column + 1);
    }

    std::string list(const std::vector<size_t>& columns) const {
        std::string text;
        for (size_t i = 0; i < std::min(columns.size(), kMostListed); ++i) {
            if (i > 0) text += ", ";
            text += columnName(columns[i]);
        }
        if (columns.size() > kMostListed) {
            text += " and " + std::to_string(columns.size() - kMostListed) + " more";
        }
        return text;
    }

    // What a rule could have named.
    std::string header() const {
        if (plan.empty()) return "there are no columns";
        if (unnamed_) {
            return "the columns have no names, write @1 to @" + std::to_string(plan.size());
        }
        std::vector<size_t> all(plan.size());
        std::iota(all.begin(), all.end(), size_t{0});
        return "the header is " + list(all);
    }

    const Rules& rules_;
    const std::vector<std::string>& names_;
    bool unnamed_;
    bool areAll_;  // the names are all columns that the rules are for
    bool takesNumbers_;
    std::vector<std::wstring> normalNames_;
    std::unordered_map<std::string_view, std::vector<size_t>> byLiteral_;
    std::unordered_map<std::wstring_view, std::vector<size_t>> byName_;
};

}  // namespace

std::vector<const Rule*> planColumns(const Rules& rules, const std::vector<std::string>& names,
                                     uint32_t flags, Faults& faults) {
    Planner planner(rules, names, flags);
    for (const Stage stage : {Stage::numbers, Stage::names, Stage::patterns}) {
        for (const Rule& rule : rules.rules) {
            if (stageOf(rule) == stage) faults.collect([&] { planner.assign(rule); });
        }
    }
    if ((flags & KORV_MASK_KEEP_UNLISTED) == 0) faults.collect([&] { planner.refuseUnlisted(); });
    return std::move(planner.plan);
}

size_t findColumn(const std::vector<std::string>& names, const std::string& name) {
    if (const uint32_t number = columnNumber(name)) {
        return std::min<size_t>(number - 1, names.size());
    }
    const bool quoted = name.size() >= 2 && name.front() == '"' && name.back() == '"';
    const bool isAscii = text::isPlainAscii(name.data(), name.size());
    const std::wstring normal = normalName(name);
    const auto isMeant = [&](const std::string& column) {
        if (quoted) return column == std::string_view(name).substr(1, name.size() - 2);
        // The conversion takes long where an operand of every rule names one of many columns.
        if (isAscii && text::isPlainAscii(column.data(), column.size())) {
            return std::equal(column.begin(), column.end(), name.begin(), name.end(),
                              [](char a, char b) { return toportwupper(a) == toportwupper(b); });
        }
        return normalName(column) == normal;
    };
    const auto found = std::find_if(names.begin(), names.end(), isMeant);
    if (found == names.end() || std::any_of(found + 1, names.end(), isMeant)) return names.size();
    return static_cast<size_t>(found - names.begin());
}

}  // namespace mask
