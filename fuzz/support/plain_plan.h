// A plain assignment of rules to columns: every rule is compared with every column.
#pragma once

#include <string>
#include <vector>

#include "support/plain_rules.h"

namespace fuzz {

// Whether a name matches a pattern, for all pairs of their ends.
inline bool matches(const std::wstring& pattern, const std::wstring& name) {
    std::vector<std::vector<bool>> fits(pattern.size() + 1,
                                        std::vector<bool>(name.size() + 1, false));
    fits[0][0] = true;
    for (std::size_t p = 1; p <= pattern.size(); ++p) {
        const wchar_t c = pattern[p - 1];
        for (std::size_t n = 0; n <= name.size(); ++n) {
            if (c == L'*') {
                fits[p][n] = fits[p - 1][n] || (n > 0 && fits[p][n - 1]);
            } else {
                fits[p][n] = n > 0 && fits[p - 1][n - 1] && (c == L'?' || c == name[n - 1]);
            }
        }
    }
    return fits[pattern.size()][name.size()];
}

inline bool names(const Rule& rule, const std::string& name, std::size_t column, bool unnamed) {
    switch (rule.match) {
        case ColumnMatch::number:
            return rule.number == column + 1;
        case ColumnMatch::literal:
            return !unnamed && rule.column == name;
        case ColumnMatch::name:
            return !unnamed && upperCased(rule.column) == upperCased(name);
        default:
            return matches(upperCased(toWide(rule.column)),
                           unnamed ? L"" : upperCased(toWide(name)));
    }
}

inline std::vector<const Rule*> planPlainly(const std::vector<Rule>& rules,
                                            const std::vector<std::string>& columns,
                                            bool keepUnlisted, bool unnamed) {
    std::vector<const Rule*> plan(columns.size());
    const auto isNumber = [](ColumnMatch match) { return match == ColumnMatch::number; };
    const auto isPattern = [](ColumnMatch match) { return match == ColumnMatch::pattern; };
    for (int round = 0; round < 3; ++round) {
        for (const Rule& rule : rules) {
            if (round != (isNumber(rule.match) ? 0 : isPattern(rule.match) ? 2 : 1)) continue;
            std::size_t named = 0, given = 0;
            for (std::size_t i = 0; i < columns.size(); ++i) {
                if (!names(rule, columns[i], i, unnamed)) continue;
                ++named;
                // What an earlier round has given away is not taken twice.
                if (round > 0 && plan[i] && isNumber(plan[i]->match)) continue;
                if (round > 1 && plan[i] && !isPattern(plan[i]->match)) continue;
                require(!plan[i]);
                plan[i] = &rule;
                ++given;
            }
            require(named > 0);
            require(round == 2 || given == 1);
        }
    }
    for (const Rule* rule : plan) require(keepUnlisted || rule);
    return plan;
}

}  // namespace fuzz
