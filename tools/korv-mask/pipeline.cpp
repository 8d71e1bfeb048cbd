// Worker threads, and the order of what they make.
#include "pipeline.h"

#include <algorithm>
#include <new>
#include <utility>

#include "csv_field.h"
#include "shape.h"
#include "tool_error.h"

namespace tool {

namespace {

constexpr uint64_t kSamples = 5;

std::string placeOf(const std::string& input, uint64_t line, uint64_t row,
                    const std::string& column) {
    return input + ":" + std::to_string(line) + ": row " + std::to_string(row) + ", column " +
           printable(column) + ": ";
}

}  // namespace

Pipeline::Pipeline(const Options& options, const Table& table, MaskHandle mask, Input& input)
    : options_(options),
      table_(table),
      input_(input),
      first_(table, std::move(mask)),
      slots_(options.jobs == 1 ? 1 : options.jobs * 2 + 1) {
    for (uint32_t i = 0; i < table.plan.size(); ++i) {
        ColumnSummary& column = summary_.columns.emplace_back();
        column.number = i + 1;
        column.name = table.plan[i].name;
        column.action = table.plan[i].action;
        column.protection = table.plan[i].protection;
    }
    for (uint32_t i = 0; options.jobs > 1 && i < options.jobs; ++i) {
        workers_.emplace_back([this](const std::stop_token& stop) { work(stop); });
    }
}

Pipeline::~Pipeline() {
    for (std::jthread& worker : workers_) worker.request_stop();
}

void Pipeline::run(OutputFile& output, Report& report, Progress& progress) {
    size_t read = 0;
    size_t written = 0;
    bool isEnded = false;
    std::exception_ptr fault;  // of reading, raised after what was read before
    for (;;) {
        while (!isEnded && read - written < slots_.size()) {
            Slot& slot = slots_[read % slots_.size()];
            try {
                isEnded = !input_.next(slot.chunk);
            } catch (const ToolError&) {
                fault = std::current_exception();
                isEnded = true;
            }
            if (isEnded) break;
            submit(slot);
            ++read;
        }
        if (written == read) break;
        Slot& slot = slots_[written % slots_.size()];
        await(slot);
        collect(slot, output, report);
        ++written;
        progress.update(input_.file().bytesRead());
    }
    if (fault) std::rethrow_exception(fault);
}

void Pipeline::submit(Slot& slot) {
    slot.isDone = false;
    if (workers_.empty()) return process(first_, slot);
    {
        const std::lock_guard lock(mutex_);
        queue_.push_back(&slot);
    }
    submitted_.notify_one();
}

void Pipeline::await(Slot& slot) {
    std::unique_lock lock(mutex_);
    done_.wait(lock, [&] { return slot.isDone; });
}

// A worker has a handle of its own, which it opens, uses and closes in its own thread.
void Pipeline::work(const std::stop_token& stop) {
    const SignalStack signalStack;
    std::optional<ChunkMasking> masking;
    std::exception_ptr fault;
    try {
        masking.emplace(table_, openMask(options_, table_.names));
    } catch (const std::exception&) {
        fault = std::current_exception();
    }
    for (;;) {
        Slot* slot = nullptr;
        {
            std::unique_lock lock(mutex_);
            if (!submitted_.wait(lock, stop, [&] { return !queue_.empty(); })) return;
            slot = queue_.front();
            queue_.pop_front();
        }
        if (masking) {
            process(*masking, *slot);
        } else {
            slot->outcome.clear();
            slot->outcome.fault = fault;
        }
        {
            const std::lock_guard lock(mutex_);
            slot->isDone = true;
        }
        done_.notify_one();
    }
}

void Pipeline::process(ChunkMasking& masking, Slot& slot) {
    try {
        masking.run(slot.chunk, slot.chunk.number == 0 ? input_.headerRows() : 0, slot.outcome);
    } catch (const std::exception&) {
        slot.outcome.fault = std::current_exception();
    }
    if (workers_.empty()) slot.isDone = true;
}

void Pipeline::collect(Slot& slot, OutputFile& output, Report& report) {
    const ChunkOutcome& outcome = slot.outcome;
    count(outcome);
    reportErrors(outcome, report);
    if (outcome.fault) std::rethrow_exception(outcome.fault);
    if (outcome.malformed) throw input_.errorAt(lines_, *outcome.malformed);
    output.write(outcome.output);
    if (slot.chunk.number == 0) {
        samples_ = pairRows(table_, slot.chunk, input_.headerRows(), outcome, 1,
                            std::max(kSamples, options_.differenceRows));
    }
    lines_ += outcome.lines;
}

void Pipeline::count(const ChunkOutcome& outcome) {
    summary_.rowsIn += outcome.rowsIn;
    summary_.rowsOut += outcome.rowsOut;
    for (size_t i = 0; i < outcome.columns.size(); ++i) {
        summary_.columns[i].add(outcome.columns[i]);
    }
}

void Pipeline::reportErrors(const ChunkOutcome& outcome, Report& report) {
    const uint64_t firstRow = summary_.rowsIn - outcome.rowsIn + 1;
    const ChunkError* abort = nullptr;
    for (const ChunkError& error : outcome.errors) {
        if (error.isFirst && abort != nullptr) break;
        if (error.isFirst && options_.maxErrors && failed_ == *options_.maxErrors) {
            throw ToolError("korv-mask: " + input_.name() + ": more than " +
                            std::to_string(*options_.maxErrors) +
                            " values failed, which is the limit of --max-errors");
        }
        if (error.isFirst) ++failed_;
        if (error.aborts) abort = &error;
        report.addError(placeOf(input_.name(), lines_ + error.line + 1, firstRow + error.row,
                                table_.names[error.column]) +
                        error.message);
    }
    if (abort == nullptr) return;
    throw ToolError("korv-mask: " +
                    placeOf(input_.name(), lines_ + abort->line + 1, firstRow + abort->row,
                            table_.names[abort->column]) +
                    "a value failed, and the rule says on-error=abort");
}

std::vector<DifferenceRow> pairRows(const Table& table, const Chunk& chunk, uint64_t skipped,
                                    const ChunkOutcome& outcome, uint64_t firstRow, uint64_t most) {
    Chunk written;
    written.buffer.assign(outcome.output.begin(), outcome.output.end());
    written.buffer.resize(outcome.output.size() + Chunk::kPadding);
    written.begin = written.buffer.data();
    written.end = written.begin + outcome.output.size();
    written.last = true;
    RowParser before(chunk, table.dialect);
    RowParser after(written, table.dialect);
    for (; skipped > 0; --skipped) before.next();

    std::vector<DifferenceRow> rows;
    std::string work;
    for (uint64_t row = 0; row < std::min(most, outcome.rowsIn) && before.next(); ++row) {
        DifferenceRow& pair = rows.emplace_back();
        pair.row = firstRow + row;
        for (const CsvField& field : before.fields()) {
            pair.before.emplace_back(unquoted(field, work));
        }
        pair.after.resize(pair.before.size());
        if (std::binary_search(outcome.droppedRows.begin(), outcome.droppedRows.end(), row)) {
            continue;
        }
        after.next();
        size_t field = 0;
        for (size_t i = 0; i < table.plan.size(); ++i) {
            if (table.plan[i].kind == KORV_MASK_DROP) continue;
            pair.after[i] = unquoted(after.fields()[field++], work);
        }
    }
    return rows;
}

}  // namespace tool
