// Finds row ends without parsing: a line feed ends a row when the number of quotes before it is
// even.
#include "chunk_reader.h"

#include <algorithm>
#include <bit>
#include <string_view>
#include <utility>

#include "special_characters.h"

namespace tool {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// Whether the number of quotes from `from` to `to` is odd. Reads less than a block after `to`.
bool hasOddQuotes(const char* from, const char* to) {
    uint64_t sum = 0;  // bit by bit, modulo 2
    for (; from < to; from += kBlockSize) {
        sum ^= Block(from).equalTo('"') & firstInBlock(static_cast<size_t>(to - from));
    }
    return std::popcount(sum) % 2 != 0;
}

// Returns the end of the last row that ends between `from` and `to`, or NULL. `inQuotes` tells
// whether the number of quotes before `to` is odd.
const char* lastRowEnd(const char* from, const char* to, bool inQuotes) {
    size_t left = static_cast<size_t>(to - from);
    while (left > 0) {
        const size_t inBlock = (left - 1) % kBlockSize + 1;
        left -= inBlock;
        const Block block(from + left);
        const uint64_t quotes = block.equalTo('"') & firstInBlock(inBlock);
        uint64_t lineFeeds = block.equalTo('\n') & firstInBlock(inBlock);
        while (lineFeeds != 0) {
            const int at = 63 - std::countl_zero(lineFeeds);
            const bool oddAfter = std::popcount(quotes >> at) % 2 != 0;
            if (inQuotes == oddAfter) return from + left + at + 1;
            lineFeeds ^= uint64_t{1} << at;
        }
        inQuotes ^= std::popcount(quotes) % 2 != 0;
    }
    return nullptr;
}

}  // namespace

ChunkReader::ChunkReader(ByteSource& source, std::string name, size_t chunkSize, size_t longestRow)
    : source_(source),
      name_(std::move(name)),
      longestRow_(std::max(longestRow, kByteOrderMark.size())),
      chunkSize_(std::clamp<size_t>(chunkSize, 1, longestRow_)) {}

bool ChunkReader::hasByteOrderMark() {
    start();
    return hasByteOrderMark_;
}

void ChunkReader::start() {
    if (started_) return;
    started_ = true;
    rest_.resize(kByteOrderMark.size());
    rest_.resize(read(rest_.data(), rest_.size()));
    hasByteOrderMark_ = std::string_view(rest_.data(), rest_.size()) == kByteOrderMark;
    if (hasByteOrderMark_) rest_.clear();
}

// Reads until there are `count` bytes or the input ends, which includes a fault of the source.
size_t ChunkReader::read(char* to, size_t count) {
    size_t done = 0;
    while (done < count && !ended_) {
        try {
            const size_t more = source_.read(to + done, count - done);
            ended_ = more == 0;
            done += more;
        } catch (const MalformedInput& error) {
            fault_ = error.what();
            ended_ = true;
        }
    }
    return done;
}

bool ChunkReader::next(Chunk& chunk) {
    start();
    if (finished_) return false;

    size_t size = std::max(chunkSize_, rest_.size());
    size_t filled = 0;
    size_t searched = 0;
    bool inQuotes = false;  // at `searched`
    bool isCutOff = false;
    const char* end = nullptr;
    while (end == nullptr) {
        // One byte more than the chunk holds tells whether the input goes on.
        const size_t room = size + 1 + Chunk::kPadding;
        if (chunk.buffer.size() < room) chunk.buffer.resize(room);
        char* const begin = chunk.buffer.data();
        if (filled == 0) {
            filled = rest_.size();
            std::copy(rest_.begin(), rest_.end(), begin);
        }
        filled += read(begin + filled, size + 1 - filled);
        if (filled <= size) {
            finished_ = true;
            end = begin + filled;
        } else {
            inQuotes ^= hasOddQuotes(begin + searched, begin + size);
            end = lastRowEnd(begin + searched, begin + size, inQuotes);
            if (end == nullptr && size == longestRow_) {
                end = begin + size;
                isCutOff = true;
            }
        }
        searched = size;
        size = std::min(size * 2, longestRow_);
    }

    chunk.begin = chunk.buffer.data();
    chunk.end = chunk.begin + (end - chunk.begin);
    chunk.number = number_++;
    chunk.last = finished_;
    chunk.fault = finished_ ? fault_ : std::string();
    rest_.assign(chunk.end, chunk.begin + filled);
    // The run ends with the row that is too long: what follows it is not read.
    if (isCutOff) finished_ = true;
    return filled > 0 || !fault_.empty();
}

}  // namespace tool
