// Masking of one chunk: rows in, rows out, and what went wrong. Each worker has an object of its
// own; a chunk's outcome does not depend on which worker masks it.
#pragma once

#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "chunk_reader.h"
#include "masker.h"
#include "row_parser.h"
#include "summary.h"
#include "text_buffer.h"

namespace tool {

// What is the same for all chunks.
struct Table {
    std::vector<std::string> names;  // of the header, or @1, @2, ...
    std::vector<ColumnPlan> plan;
    std::vector<std::string> nullTexts;
    Dialect dialect;

    // The text that stands for NULL in the output.
    std::string_view nullText() const {
        return nullTexts.empty() ? std::string_view() : nullTexts.front();
    }
};

// A line of the report; row and line count from the chunk's first.
struct ChunkError {
    uint64_t row;
    uint64_t line;
    uint32_t column;
    bool isFirst;  // of its value
    bool aborts;
    std::string message;
};

struct ChunkOutcome {
    std::string_view output;  // lies in `text`, or in the chunk
    TextBuffer text;
    uint64_t rowsIn = 0;
    uint64_t rowsOut = 0;
    uint64_t lines = 0;
    std::vector<uint64_t> droppedRows;
    std::vector<ColumnSummary> columns;
    std::vector<ChunkError> errors;         // by row, then column
    std::optional<MalformedRow> malformed;  // the rows before it are masked, but not in `output`
    std::exception_ptr fault;               // why the run has to end, if it does

    void clear();
};

class ChunkMasking {
  public:
    ChunkMasking(const Table& table, MaskHandle mask);

    // `skipped` rows at the chunk's beginning, such as the header, are passed over. Throws
    // ToolError and std::bad_alloc.
    void run(const Chunk& chunk, uint64_t skipped, ChunkOutcome& outcome);

  private:
    // A field of a masked column.
    struct Field {
        const char* raw;
        uint32_t length;
        bool quoted;
    };
    struct Row {
        const char* begin;
        const char* end;
        uint64_t line;
        uint32_t lineEnd;  // bytes
    };
    // A column that the engine masks or refers to, or that is dropped.
    struct Special {
        uint32_t index;
        bool isDropped;
        bool isRead;  // its texts are collected
        TextBuffer bytes;
        std::vector<int32_t> offsets;
        std::vector<uint8_t> validity;
        const KorvMaskResult* result;
        bool mayNeedQuotes;  // some of the result's values

        KorvMaskStrings strings() const;
    };

    void parse(const Chunk& chunk, uint64_t skipped, ChunkOutcome& outcome);
    void addRow(const RowParser& parser, bool isValid);
    void addText(Special& special, const CsvField& field);
    bool maskColumns(ChunkOutcome& outcome);
    void takeRecords(ChunkOutcome& outcome);
    void write(const Chunk& chunk, ChunkOutcome& outcome);
    size_t longestOutput(const Chunk& chunk) const;
    bool writeRow(size_t row, TextBuffer& text) const;
    void writeField(const Special& special, const Field& field, size_t row, TextBuffer& text) const;

    const Table& table_;
    MaskHandle mask_;
    std::vector<Special> specials_;  // by index
    std::vector<size_t> specialOf_;  // by column, SIZE_MAX when it has none
    bool keepsAll_;
    bool isSole_;  // the output has one column
    const char* firstRow_ = nullptr;
    uint64_t rowCount_ = 0;
    std::vector<Row> rows_;      // not those that were only counted
    std::vector<Field> fields_;  // of each row, one for each special column
    size_t trailing_ = 0;        // bytes of a blank line at the end of the input
    std::string work_;
};

}  // namespace tool
