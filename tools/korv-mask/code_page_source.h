// Input in any encoding, converted to UTF-8.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "converted_source.h"
#include "korv/datacnv.h"

namespace tool {

// Converts a code page in which a line ends with a byte that is not part of another character. Code
// pages with characters of several bytes and with shift states are converted line by line.
class CodePageSource : public ConvertedSource {
  public:
    static constexpr size_t kChunkSize = 64 * 1024;
    static constexpr size_t kLongestLine = 8 * 1024 * 1024;

    // `name` is what messages call the code page. Throws ToolError when it cannot be converted.
    CodePageSource(ByteSource& source, uint32_t codePage, const std::string& name,
                   size_t chunkSize = kChunkSize, size_t longestLine = kLongestLine);

  private:
    void convertMore() override;
    size_t readLines();
    bool endsLine(char byte) const { return lineEnds_.find(byte) != std::string::npos; }
    bool widen(size_t length);
    size_t validLength(size_t length);

    ByteSource& source_;
    CnvOptions options_;
    std::string name_;
    size_t longestLine_;
    std::string lineEnds_;  // the bytes that end a line
    bool isEbcdic_ = false;
    std::vector<char> bytes_;  // read and not yet converted
    size_t byteCount_ = 0;
    bool sourceEnded_ = false;
    std::vector<wchar_t> wide_;
    size_t wideCount_ = 0;
};

// Opens the file as UTF-8. An empty encoding means UTF-8, or UTF-16 when the file begins with its
// byte order mark. Byte order marks of UTF-16 are left out. The file must outlive the result.
// Throws ToolError when the encoding is not known.
std::unique_ptr<ByteSource> openAsUtf8(FileSource& file, const std::string& encoding);

}  // namespace tool
