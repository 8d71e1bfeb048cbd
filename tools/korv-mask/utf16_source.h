// UTF-16 input, converted to UTF-8.
#pragma once

#include <cstdint>
#include <vector>

#include "converted_source.h"

namespace tool {

class Utf16Source : public ConvertedSource {
  public:
    // A byte order mark is a character like any other: the caller reads it from `source` before.
    // `unitsPerChunk` is at least 2, so that a surrogate pair fits.
    Utf16Source(ByteSource& source, bool bigEndian, size_t unitsPerChunk = 32768);

  private:
    void convertMore() override;
    bool fillUnits();

    ByteSource& source_;
    bool swap_;
    std::vector<uint16_t> units_;  // read and not yet converted
    size_t unitCount_ = 0;
    std::vector<wchar_t> wide_;
    char oddByte_ = 0;
    bool hasOddByte_ = false;
};

}  // namespace tool
