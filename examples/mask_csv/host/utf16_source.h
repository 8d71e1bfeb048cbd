// UTF-16 input, recognised by its byte order mark and handed on as UTF-8.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/byte_source.h"
#include "korv/korv.h"

namespace host {

class Utf16Source : public ByteSource {
  public:
    // `source` stands behind the byte order mark. `unitsPerChunk` is at least 2, so that a
    // surrogate pair fits.
    Utf16Source(ByteSource& source, bool bigEndian, size_t unitsPerChunk = 32768);

    size_t read(char* buffer, size_t capacity) override;

  private:
    void fillUnits();
    void convertUnits();

    ByteSource& source_;
    bool swap_;
    bool ended_ = false;
    std::string fault_;            // raised once everything before it has been handed on
    std::vector<uint16_t> units_;  // read and not yet converted
    size_t unitCount_ = 0;
    std::vector<wchar_t> wide_;
    std::vector<char> utf8_;
    size_t utf8Begin_ = 0;
    size_t utf8End_ = 0;
    char oddByte_ = 0;
    bool hasOddByte_ = false;
};

// `file` itself, or a conversion in front of it when it begins with FF FE or FE FF, which are
// taken. `conversion` owns the latter.
ByteSource& openAsUtf8(FileSource& file, std::unique_ptr<ByteSource>& conversion);

}  // namespace host
