// A file that appears under its name only when it is complete, or standard output.
#pragma once

#include <signal.h>
#include <sys/stat.h>

#include <array>
#include <string>
#include <string_view>

namespace tool {

class OutputFile {
  public:
    // "-" is standard output. Anything else is written to a temporary file in the same folder,
    // unless it exists and is no regular file, such as /dev/null. A link stays: the file that it
    // leads to is the output, whether it exists or not. Throws ToolError.
    explicit OutputFile(const std::string& path);
    // Removes the temporary file unless commit() has been called.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    // These throw ToolError.
    void write(std::string_view bytes);
    // Gives the file its name, once its contents are on the disk.
    void commit();

  private:
    void createTemporary(const struct stat* replaced);
    [[noreturn]] void fail() const;

    std::string path_;  // for messages
    std::string target_;
    std::string temporary_;  // empty when the target is written directly
    int descriptor_ = -1;
};

// The file that `path` leads to: links are followed, also one that leads to no file yet. Folders
// are resolved, so that two spellings of one file give the same text. Throws ToolError.
std::string resolved(const std::string& path);

// Removes the temporary files of all objects. It may be called by a signal handler.
void removeTemporaries() noexcept;
// Has the temporary files removed when a signal ends the program.
void watchSignals();

// A signal that a crash of the thread's stack raises needs another stack. Every thread has an
// object of this class, as long as it runs.
class SignalStack {
  public:
    SignalStack();
    ~SignalStack();
    SignalStack(const SignalStack&) = delete;
    SignalStack& operator=(const SignalStack&) = delete;

  private:
    std::array<char, 16384> memory_;
    stack_t before_ = {};
};

}  // namespace tool
