// Splits the input into chunks of whole rows, which threads can parse independently of each other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "byte_source.h"

namespace tool {

// A stretch of the input that begins with a row and ends with a row. Where the input is malformed,
// it may end elsewhere; a parser then finds the malformed place in this chunk or in one before it.
// A copy would point into the buffer of the original.
struct Chunk {
    static constexpr size_t kPadding = 64;  // readable bytes after `end`, with any contents

    std::vector<char> buffer;
    char* begin = nullptr;
    char* end = nullptr;
    uint64_t number = 0;  // from 0
    bool last = false;    // ends at the end of the input
    std::string fault;    // why the source could not read on after `end`, otherwise empty
};

class ChunkReader {
  public:
    static constexpr size_t kChunkSize = 512 * 1024;
    static constexpr size_t kLongestRow = 8 * 1024 * 1024;

    // `name` is that of the input, for messages.
    ChunkReader(ByteSource& source, std::string name, size_t chunkSize = kChunkSize,
                size_t longestRow = kLongestRow);

    const std::string& name() const { return name_; }

    // Whether the input begins with the byte order mark of UTF-8, which belongs to no chunk.
    bool hasByteOrderMark();

    // Reads the next chunk into the chunk's buffer; returns false at the end of the input. A chunk
    // becomes longer than the chunk size only where a row is. Where a row is longer than the
    // longest row, the chunk holds its beginning and is not the last. Throws ToolError.
    bool next(Chunk& chunk);

  private:
    void start();
    size_t read(char* to, size_t count);

    ByteSource& source_;
    std::string name_;
    size_t longestRow_;
    size_t chunkSize_;
    std::vector<char> rest_;  // read, but not part of a chunk yet
    bool started_ = false;
    bool hasByteOrderMark_ = false;
    bool ended_ = false;
    bool finished_ = false;  // the last chunk has been handed out
    std::string fault_;
    uint64_t number_ = 0;
};

}  // namespace tool
