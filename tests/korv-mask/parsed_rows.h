// The rows that the parser finds in an input, chunk by chunk.
#pragma once

#include <stdexcept>

#include "csv_field.h"
#include "reference/csv_rows.h"
#include "row_parser.h"

// Adds the rows of one chunk whose first line is `line`; returns the first line of the next chunk,
// or 0 where the chunk is malformed.
inline uint64_t addRows(const tool::Chunk& chunk, const tool::Dialect& dialect, uint64_t line,
                        reference::CsvRows& result) {
    tool::RowParser parser(chunk, dialect);
    try {
        std::string work;
        while (parser.next()) {
            result.rows += std::to_string(line + parser.line());
            for (const tool::CsvField& field : parser.fields()) {
                result.addField(field.quoted, tool::unquoted(field, work));
            }
            result.addLineEnd(parser.lineEnd());
            result.raw.append(parser.rowBegin(), parser.rowEnd());
            result.raw += parser.lineEnd();
        }
    } catch (const tool::MalformedRow& malformed) {
        result.addMessage(line + malformed.line, malformed.column, malformed.message);
        return 0;
    }
    return line + parser.lines();
}

inline reference::CsvRows parsedRows(tool::ChunkReader& reader, const tool::Dialect& dialect = {}) {
    reference::CsvRows result;
    tool::Chunk chunk;
    uint64_t line = 1;
    uint64_t chunks = 0;
    while (reader.next(chunk)) {
        if (chunk.number != chunks++) throw std::logic_error("a chunk has a wrong number");
        line = addRows(chunk, dialect, line, result);
        if (line == 0) return result;
        if (chunk.last) break;
    }
    if (chunks > 0 && !chunk.last) throw std::logic_error("no chunk is the last");
    if (reader.next(chunk)) throw std::logic_error("a chunk follows the last");
    return result;
}
