// The road of a chunk: its rows are parsed, its columns masked in batches, and its rows written.
#include "chunk_masking.h"

#include <algorithm>
#include <new>
#include <utility>

#include "csv_field.h"
#include "row_counter.h"
#include "text/utf8_text.h"
#include "tool_error.h"

namespace tool {

namespace {

constexpr size_t kNone = SIZE_MAX;

bool isDropped(const ColumnPlan& column) {
    return column.kind == KORV_MASK_DROP;
}

bool isNull(const KorvMaskStrings& strings, size_t index) {
    return strings.validity != nullptr && (strings.validity[index / 8] >> (index % 8) & 1) == 0;
}

std::string_view allText(const KorvMaskStrings& strings) {
    const auto* const offsets = static_cast<const int32_t*>(strings.offsets);
    return {strings.bytes, static_cast<size_t>(offsets[strings.count])};
}

std::string_view textOf(const KorvMaskStrings& strings, size_t index) {
    const auto* const offsets = static_cast<const int32_t*>(strings.offsets);
    return {strings.bytes + offsets[index],
            static_cast<size_t>(offsets[index + 1] - offsets[index])};
}

}  // namespace

void ChunkOutcome::clear() {
    TextBuffer memory = std::move(text);
    *this = {};
    text = std::move(memory);
}

KorvMaskStrings ChunkMasking::Special::strings() const {
    return {offsets.size() - 1, 0, 32, offsets.data(), bytes.data(), validity.data()};
}

ChunkMasking::ChunkMasking(const Table& table, MaskHandle mask)
    : table_(table), mask_(std::move(mask)), specialOf_(table.plan.size(), kNone) {
    const std::vector<ColumnPlan>& plan = table_.plan;
    std::vector<bool> isRelated(plan.size());
    for (const ColumnPlan& column : plan) {
        if (column.related != KORV_MASK_NO_COLUMN) isRelated[column.related] = true;
    }
    size_t dropped = 0;
    for (uint32_t i = 0; i < plan.size(); ++i) {
        const bool isRead = plan[i].isMasked() || isRelated[i];
        dropped += isDropped(plan[i]) ? 1 : 0;
        if (!isRead && !isDropped(plan[i])) continue;
        specialOf_[i] = specials_.size();
        specials_.push_back({i, isDropped(plan[i]), isRead, {}, {}, {}, nullptr, true});
    }
    keepsAll_ = specials_.empty();
    isSole_ = plan.size() - dropped == 1;
}

void ChunkMasking::run(const Chunk& chunk, uint64_t skipped, ChunkOutcome& outcome) {
    outcome.clear();
    rows_.clear();
    fields_.clear();
    firstRow_ = chunk.begin;
    rowCount_ = 0;
    trailing_ = 0;
    for (Special& special : specials_) {
        special.bytes.start(special.isRead ? static_cast<size_t>(chunk.end - chunk.begin) : 0);
        special.offsets.assign(1, 0);
        special.validity.clear();
        special.result = nullptr;
    }
    parse(chunk, skipped, outcome);
    outcome.rowsIn = rowCount_;
    for (uint32_t i = 0; i < table_.plan.size(); ++i) {
        ColumnSummary& summary = outcome.columns.emplace_back();
        summary.number = i + 1;
        summary.name = table_.plan[i].name;
        summary.action = table_.plan[i].action;
    }
    if (maskColumns(outcome) && !outcome.malformed) write(chunk, outcome);
}

void ChunkMasking::parse(const Chunk& chunk, uint64_t skipped, ChunkOutcome& outcome) {
    const size_t columns = table_.names.size();
    const auto bytes = static_cast<size_t>(chunk.end - chunk.begin);
    const bool isValid = keepsAll_ || text::validUtf8Length(chunk.begin, bytes) == bytes;
    RowParser parser(chunk, table_.dialect);
    try {
        for (; skipped > 0; --skipped) parser.next();
        firstRow_ = parser.position();
        if (keepsAll_) {
            const RowCount counted =
                countRows(firstRow_, chunk.end, table_.dialect.delimiter, columns);
            rowCount_ = counted.rows;
            parser.skip(counted.end, counted.lineFeeds);
        }
        while (parser.next()) {
            if (parser.isBlank() && columns > 1 && chunk.last &&
                parser.rowEnd() + parser.lineEnd().size() == chunk.end) {
                trailing_ = parser.lineEnd().size();
                break;
            }
            if (parser.fields().size() != columns) {
                const CsvField& at = parser.fields()[std::min(parser.fields().size() - 1, columns)];
                parser.fail(at.raw, "the row has " + std::to_string(parser.fields().size()) +
                                        (parser.fields().size() == 1 ? " field" : " fields") +
                                        " where the header has " + std::to_string(columns));
            }
            addRow(parser, isValid);
            ++rowCount_;
        }
    } catch (MalformedRow& malformed) {
        outcome.malformed = std::move(malformed);
    }
    outcome.lines = parser.lines();
}

void ChunkMasking::addRow(const RowParser& parser, bool isValid) {
    const std::span<const CsvField> fields = parser.fields();
    // What ends the run is found before anything of the row is taken.
    if (!isValid) {
        for (const Special& special : specials_) {
            if (!special.isRead) continue;
            const CsvField& field = fields[special.index];
            const size_t valid = text::validUtf8Length(field.raw, field.length);
            if (valid == field.length) continue;
            parser.fail(field.raw + valid, "bytes that are not UTF-8, in the masked column " +
                                               table_.names[special.index]);
        }
    }
    for (Special& special : specials_) {
        const CsvField& field = fields[special.index];
        fields_.push_back({field.raw, field.length, field.quoted});
        if (special.isRead) addText(special, field);
    }
    rows_.push_back({parser.rowBegin(), parser.rowEnd(), parser.line(),
                     static_cast<uint32_t>(parser.lineEnd().size())});
}

void ChunkMasking::addText(Special& special, const CsvField& field) {
    const size_t index = special.offsets.size() - 1;
    const size_t begin = special.bytes.size();
    if (field.quoted) {
        appendUnquoted(field, special.bytes);
    } else {
        special.bytes.append(field.raw, field.length);
    }
    bool null = special.bytes.size() == begin;
    for (const std::string& nullText : table_.nullTexts) {
        null |= special.bytes.view().substr(begin) == nullText;
    }
    if (null) special.bytes.resize(begin);
    if (index % 8 == 0) special.validity.push_back(0);
    special.validity.back() |= static_cast<uint8_t>((null ? 0u : 1u) << index % 8);
    special.offsets.push_back(static_cast<int32_t>(special.bytes.size()));
}

// False when the run has to end.
bool ChunkMasking::maskColumns(ChunkOutcome& outcome) {
    bool isAborted = false;
    for (Special& special : specials_) {
        const ColumnPlan& plan = table_.plan[special.index];
        if (!plan.isMasked()) continue;
        const KorvMaskStrings source = special.strings();
        KorvMaskStrings related = {};
        if (plan.related != KORV_MASK_NO_COLUMN) {
            related = specials_[specialOf_[plan.related]].strings();
        }
        const int32_t status =
            KorvMaskBatch(mask_.get(), special.index, 0, &source,
                          related.offsets == nullptr ? nullptr : &related, &special.result);
        if (status == KORV_MASK_SUCCESS || status == KORV_MASK_VALUES_FAILED) {
            outcome.columns[special.index].add(special.result->statistics);
            const KorvMaskStrings& masked = special.result->strings;
            special.mayNeedQuotes = needsQuotes(allText(masked), table_.dialect.delimiter);
        } else if (status == KORV_MASK_ABORTED) {
            isAborted = true;
        } else {
            const uint64_t count = KorvMaskRecordCount(mask_.get());
            if (status == KORV_MASK_NO_MEMORY || count == 0) throw std::bad_alloc();
            throw ToolError(std::string("korv-mask: ") +
                            KorvMaskGetRecord(mask_.get(), count - 1)->message);
        }
        takeRecords(outcome);
    }
    std::stable_sort(outcome.errors.begin(), outcome.errors.end(),
                     [](const ChunkError& a, const ChunkError& b) {
                         return std::pair(a.row, a.column) < std::pair(b.row, b.column);
                     });
    return !isAborted;
}

void ChunkMasking::takeRecords(ChunkOutcome& outcome) {
    for (uint64_t i = 0; const KorvMaskRecord* record = KorvMaskGetRecord(mask_.get(), i); ++i) {
        outcome.errors.push_back({record->row, rows_[static_cast<size_t>(record->row)].line,
                                  record->column, record->isFirst == 1,
                                  table_.plan[record->column].aborts, record->message});
    }
    KorvMaskClearRecords(mask_.get());
}

void ChunkMasking::write(const Chunk& chunk, ChunkOutcome& outcome) {
    if (keepsAll_) {
        outcome.output = {firstRow_, static_cast<size_t>(chunk.end - firstRow_)};
        outcome.rowsOut = rowCount_;
        return;
    }
    outcome.text.start(longestOutput(chunk));
    for (size_t row = 0; row < rows_.size(); ++row) {
        if (writeRow(row, outcome.text)) {
            ++outcome.rowsOut;
        } else {
            outcome.droppedRows.push_back(row);
        }
    }
    outcome.text.append(chunk.end - trailing_, trailing_);
    outcome.output = outcome.text.view();
}

size_t ChunkMasking::longestOutput(const Chunk& chunk) const {
    auto length = static_cast<size_t>(chunk.end - chunk.begin);
    for (const Special& special : specials_) {
        if (special.result == nullptr) continue;
        length += longestFields(allText(special.result->strings).size(), rows_.size());
        if (special.result->strings.validity != nullptr) {
            length += longestFields(table_.nullText().size(), 1) * rows_.size();
        }
    }
    return length + 2 * rows_.size();  // a sole empty field is written as ""
}

// Stretches between special columns are copied with their delimiters. False for a row that is left
// out.
bool ChunkMasking::writeRow(size_t row, TextBuffer& text) const {
    for (const Special& special : specials_) {
        if (special.result != nullptr && special.result->states[row] == KORV_MASK_VALUE_DROP_ROW) {
            return false;
        }
    }
    const Row& at = rows_[row];
    const Field* field = &fields_[row * specials_.size()];
    const size_t begin = text.size();
    const char* from = at.begin;
    for (const Special& special : specials_) {
        const char* const end = field->raw + field->length;
        if (special.isDropped) {
            text.append(from, static_cast<size_t>(field->raw - from));
            from = end;
            if (end != at.end) {
                ++from;  // with the delimiter after it
            } else if (text.size() > begin) {
                text.resize(text.size() - 1);  // with the one before it
            }
        } else if (special.result != nullptr) {
            text.append(from, static_cast<size_t>(field->raw - from));
            from = end;
            writeField(special, *field, row, text);
        }
        ++field;
    }
    text.append(from, static_cast<size_t>(at.end - from));
    // An empty line would be no row, or one without a field.
    const bool wasBlank = at.begin == at.end && table_.plan.size() == 1;
    if (isSole_ && text.size() == begin && !wasBlank) text.append("\"\"", 2);
    text.append(at.end, at.lineEnd);
    return true;
}

void ChunkMasking::writeField(const Special& special, const Field& field, size_t row,
                              TextBuffer& text) const {
    const KorvMaskResult& result = *special.result;
    if (result.states[row] == KORV_MASK_VALUE_NULL) {
        text.append(field.raw, field.length);
    } else if (isNull(result.strings, row)) {
        appendField(text, table_.nullText(), false, table_.dialect.delimiter);
    } else {
        const std::string_view masked = textOf(result.strings, row);
        const bool isFailed = result.states[row] == KORV_MASK_VALUE_FAILED;
        const bool quote = field.quoted && !(isFailed && masked.empty());
        if (quote || special.mayNeedQuotes) {
            appendField(text, masked, quote, table_.dialect.delimiter);
        } else {
            text.append(masked);
        }
    }
}

}  // namespace tool
