// The same grammar as the RowParser's, in masks with a bit for each character of a block.
#include "row_counter.h"

#include <bit>

namespace tool {

namespace {

// Bit i tells whether the number of bits up to i is odd.
uint64_t prefixParity(uint64_t bits) {
    for (int distance = 1; distance < 64; distance *= 2) bits ^= bits << distance;
    return bits;
}

// The bits one further on; `before` is the last bit of the former block, and gets that of this one.
uint64_t following(uint64_t bits, uint64_t& before) {
    const uint64_t moved = bits << 1 | before;
    before = bits >> 63;
    return moved;
}

}  // namespace

RowCount countRows(const char* begin, const char* end, char delimiter, size_t columns) {
    RowCount counted = {0, 0, begin};
    uint64_t quotedLineFeeds = 0;
    size_t delimiters = 0;       // of the row at hand, before the block
    uint64_t inQuotes = 0;       // all bits, when the former block ended in quotes
    uint64_t mayOpenBefore = 1;  // the former block's last character may precede an opening quote
    uint64_t closingBefore = 0;  // it is a closing quote
    uint64_t returnBefore = 0;   // it is a carriage return outside quotes
    for (const char* at = begin; at < end; at += kBlockSize) {
        const Block block(at);
        const uint64_t inRange = firstInBlock(static_cast<size_t>(end - at));
        const uint64_t quotes = block.equalTo('"') & inRange;
        const uint64_t lineFeeds = block.equalTo('\n') & inRange;
        // From an opening quote to the character before the closing one.
        const uint64_t quoted = prefixParity(quotes) ^ inQuotes;
        inQuotes = uint64_t{0} - (quoted >> 63);
        const uint64_t closing = quotes & ~quoted;
        const uint64_t ends = block.equalTo(delimiter) & ~quoted & inRange;
        const uint64_t rowEnds = lineFeeds & ~quoted;
        const uint64_t returns = block.equalTo('\r') & ~quoted & inRange;

        const uint64_t mayOpen = following(ends | rowEnds | closing, mayOpenBefore);
        const uint64_t afterClosing = following(closing, closingBefore);
        const uint64_t afterReturn = following(returns, returnBefore);
        const uint64_t malformed =
            ((quotes & quoted & ~mayOpen) | (afterClosing & ~(ends | rowEnds | returns | quotes)) |
             (afterReturn & ~rowEnds) | block.equalTo('\0')) &
            inRange;

        uint64_t left = ends;
        const uint64_t wellFormed = malformed == 0 ? ~uint64_t{0} : (malformed & -malformed) - 1;
        uint64_t quotedLeft = lineFeeds & quoted;
        for (uint64_t rows = rowEnds & wellFormed; rows != 0; rows &= rows - 1) {
            const uint64_t upToEnd = rows ^ (rows - 1);
            if (delimiters + static_cast<size_t>(std::popcount(left & upToEnd)) + 1 != columns) {
                return counted;
            }
            delimiters = 0;
            left &= ~upToEnd;
            if ((quotedLeft & upToEnd) != 0) {
                quotedLineFeeds += static_cast<uint64_t>(std::popcount(quotedLeft & upToEnd));
                quotedLeft &= ~upToEnd;
            }
            ++counted.rows;
            counted.lineFeeds = counted.rows + quotedLineFeeds;
            counted.end = at + std::countr_zero(rows) + 1;
        }
        if (malformed != 0) return counted;
        delimiters += static_cast<size_t>(std::popcount(left));
        if (quotedLeft != 0) quotedLineFeeds += static_cast<uint64_t>(std::popcount(quotedLeft));
    }
    return counted;
}

}  // namespace tool
