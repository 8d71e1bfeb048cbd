// The error report: one line for each error, without clear values.
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>

namespace tool {

class Report {
  public:
    // What goes beyond this is counted, not written.
    static constexpr uint64_t kMostLines = 10000;

    // An empty path means standard error. A file is created but not emptied yet: it may turn out to
    // be another of the program's files. Throws ToolError.
    explicit Report(const std::string& path);
    ~Report();
    Report(const Report&) = delete;
    Report& operator=(const Report&) = delete;

    // -1 when the report is standard error.
    int descriptor() const;
    // Whether this object has created the file.
    bool isNew() const { return isNew_; }
    // Empties the file. Throws ToolError.
    void start();
    // `action` runs before each line on standard error, so that a progress bar can make room.
    void beforeLine(std::function<void()> action) { beforeLine_ = std::move(action); }

    // These throw ToolError.
    void addError(const std::string& line);
    // The last lines: how many errors were left out, and `conclusion` unless it is empty.
    void finish(const std::string& conclusion);

  private:
    void print(const std::string& line);
    [[noreturn]] void fail() const;

    std::string path_;
    std::FILE* file_;
    bool isNew_ = false;
    uint64_t lines_ = 0;
    std::function<void()> beforeLine_;
};

}  // namespace tool
