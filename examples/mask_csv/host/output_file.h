// The output: standard output, or a file that appears under its name only when it is complete.
#pragma once

#include <cstddef>
#include <string>

namespace host {

class OutputFile {
  public:
    // "-" is standard output. Anything else is written to a temporary file in the same folder,
    // unless it exists and is no regular file, such as /dev/null. A link stays: the file that it
    // leads to is the output.
    explicit OutputFile(const std::string& path);
    // Removes the temporary file unless commit() has been called.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(const char* bytes, size_t count);
    // Gives the file its name, once its contents are on the disk.
    void commit();

  private:
    void createTemporary(unsigned mode);
    [[noreturn]] void fail() const;

    std::string path_;  // for messages
    std::string target_;
    std::string temporary_;  // empty when the target is written directly
    int descriptor_ = -1;
};

}  // namespace host
