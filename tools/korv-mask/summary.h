// The counts of a run, and their JSON form.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "korv/mask.h"

namespace tool {

// How a provider protects a column.
struct Protection {
    std::string method;       // empty for a provider without methods, and for other actions
    std::string secret;       // its name; empty without one
    std::string fingerprint;  // of the secret
    bool isDisguise = false;

    // ", method ff1, secret crm 12ab34cd" or ", method transpose, a disguise"; empty without
    // method.
    std::string text() const;
};

// One column; see KorvMaskStatistics for the meaning of its counts.
struct ColumnSummary {
    uint32_t number = 0;  // from 1
    std::string name;
    std::string action;
    Protection protection;
    uint64_t values = 0;
    uint64_t nulls = 0;
    uint64_t masked = 0;
    uint64_t unchanged = 0;
    uint64_t formulas = 0;
    std::map<uint32_t, uint64_t> failed;  // by code

    uint64_t failedValues() const;
    void add(const KorvMaskStatistics& statistics);
    void add(const ColumnSummary& other);
};

struct Summary {
    int status = 0;  // the exit status
    uint64_t rowsIn = 0;
    uint64_t rowsOut = 0;
    std::vector<ColumnSummary> columns;

    uint64_t failedValues() const;
};

// One line with its end. There are no times, paths and values in it.
std::string toJson(const Summary& summary);

// A number for people: 9,812.
std::string grouped(uint64_t number);

}  // namespace tool
