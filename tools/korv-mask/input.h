// The input: its header, and its chunks from the first on.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "byte_source.h"
#include "chunk_reader.h"
#include "options.h"
#include "tool_error.h"

namespace tool {

class Input {
  public:
    // Reads the header. Throws ToolError.
    explicit Input(const Options& options);

    const std::string& name() const { return file_.name(); }
    const FileSource& file() const { return file_; }
    // Of the header, or @1, @2, ... without one.
    const std::vector<std::string>& columns() const { return columns_; }
    // Rows of the first chunk that are not data: 1 with a header, otherwise 0.
    uint64_t headerRows() const { return header_ ? 1 : 0; }
    // The header row for the output, with byte order mark and line end, and without the columns
    // for which `isLeftOut` holds.
    std::string headerFor(const std::vector<bool>& isLeftOut) const;
    // Why rules may not fit the columns: a hint at a delimiter that is not the given one, or "".
    std::string delimiterHint() const;

    // As ChunkReader::next, from the first chunk on.
    bool next(Chunk& chunk);
    // The message for a malformed place in a chunk whose first line is `line`, from 0.
    ToolError errorAt(uint64_t line, const MalformedRow& malformed) const {
        return {name(), line + malformed.line + 1, malformed.column, malformed.message};
    }

  private:
    void readHeader();

    Dialect dialect_;
    bool header_;
    FileSource file_;
    std::unique_ptr<ByteSource> source_;
    ChunkReader reader_;
    Chunk first_;
    bool hasFirst_;
    bool hasByteOrderMark_;
    std::vector<std::string> columns_;
    std::vector<std::string> rawColumns_;
    std::string lineEnd_;
};

}  // namespace tool
