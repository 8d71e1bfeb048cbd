// The error report: one line for each error of a request's chain, without clear values.
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <utility>

#include "host/request.h"

namespace host {

class Report : public ErrorListener {
  public:
    // An empty path means standard error.
    explicit Report(const std::string& path);
    ~Report() override;
    Report(const Report&) = delete;
    Report& operator=(const Report&) = delete;

    // `action` runs before each line, so that a progress bar can make room.
    void beforeLine(std::function<void()> action) { beforeLine_ = std::move(action); }

    // What the errors that follow are about; the strings must outlive them.
    void atRule(const std::string& file, uint64_t line);
    void atValue(const std::string& file, uint64_t line, uint64_t row, const std::string& column);

    void error(const Provider& provider, const ErrorRecord& record) override;
    void failure(const Provider& provider, int32_t status) override;

    void print(const std::string& line);
    void flush();

  private:
    std::string place() const;
    [[noreturn]] void fail() const;

    std::string path_;
    std::FILE* file_;
    std::function<void()> beforeLine_;
    const std::string* inputFile_ = nullptr;
    uint64_t line_ = 0;
    uint64_t row_ = 0;
    const std::string* column_ = nullptr;
};

}  // namespace host
