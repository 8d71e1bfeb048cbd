// The run: chunks go to worker threads, and their outcomes are written in order.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

#include "chunk_masking.h"
#include "difference.h"
#include "input.h"
#include "options.h"
#include "output_file.h"
#include "progress.h"
#include "report.h"
#include "summary.h"

namespace tool {

class Pipeline {
  public:
    // `mask` is the handle of the first worker.
    Pipeline(const Options& options, const Table& table, MaskHandle mask, Input& input);
    ~Pipeline();
    Pipeline(const Pipeline&) = delete;
    Pipeline& operator=(const Pipeline&) = delete;

    // Masks the whole input. Throws ToolError; the summary then holds what has been counted.
    void run(OutputFile& output, Report& report, Progress& progress);

    const Summary& summary() const { return summary_; }
    // The first rows, before and after.
    const std::vector<DifferenceRow>& samples() const { return samples_; }

  private:
    struct Slot {
        Chunk chunk;
        ChunkOutcome outcome;
        bool isDone = false;
    };

    void submit(Slot& slot);
    void await(Slot& slot);
    void work(const std::stop_token& stop);
    void process(ChunkMasking& masking, Slot& slot);
    void collect(Slot& slot, OutputFile& output, Report& report);
    void reportErrors(const ChunkOutcome& outcome, Report& report);
    void count(const ChunkOutcome& outcome);

    const Options& options_;
    const Table& table_;
    Input& input_;
    ChunkMasking first_;  // does all the work when there is one job

    std::mutex mutex_;
    std::condition_variable_any submitted_;
    std::condition_variable done_;
    std::deque<Slot*> queue_;  // never longer than there are slots
    std::vector<Slot> slots_;
    std::vector<std::jthread> workers_;

    Summary summary_;
    uint64_t lines_ = 0;  // before the chunk that is collected
    uint64_t failed_ = 0;
    std::vector<DifferenceRow> samples_;
};

// Pairs the first rows of a chunk with their outcomes, at most `most`. Rows count from `firstRow`.
std::vector<DifferenceRow> pairRows(const Table& table, const Chunk& chunk, uint64_t skipped,
                                    const ChunkOutcome& outcome, uint64_t firstRow, uint64_t most);

}  // namespace tool
