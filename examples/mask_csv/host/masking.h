// The run over the input: every row, every column that has a rule.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/csv_reader.h"
#include "host/csv_writer.h"
#include "host/provider_loader.h"
#include "host/report.h"
#include "host/request.h"
#include "host/rules.h"

namespace host {

struct MaskedColumn {
    size_t index;  // in the row
    std::unique_ptr<Request> request;
};

struct Summary {
    uint64_t rows = 0;
    uint64_t values = 0;
    uint64_t failed = 0;
};

class Masking {
  public:
    // Reads the header and makes the rules' columns and requests ready; throws HostError for a
    // column that the header lacks, and for whatever is wrong with a rule.
    Masking(const Rules& rules, ProviderLoader& loader, CsvReader& reader,
            const std::string& inputName, Report& report);

    // Masks all rows. `afterRow` is called now and then.
    Summary run(CsvWriter& writer, const std::function<void()>& afterRow);

  private:
    void readHeader(const Rules& rules, ProviderLoader& loader);
    void addColumn(const Rules& rules, const Rule& rule, ProviderLoader& loader,
                   const std::vector<std::string>& names);
    void checkRow() const;
    void maskRow(CsvWriter& writer);

    CsvReader& reader_;
    std::string inputName_;
    Report& report_;
    std::string header_;  // raw, with its line end
    size_t columnCount_ = 0;
    std::vector<MaskedColumn> columns_;  // in the order of the row
    Summary summary_;
};

}  // namespace host
