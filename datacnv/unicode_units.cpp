// UTF-16 units to UTF-32 units, and back.
#include <algorithm>

#include "common/block.h"
#include "korv/datacnv.h"
#include "unicode.h"

namespace korv::datacnv {
namespace {

constexpr bool isHighSurrogate(uint32_t unit) noexcept {
    return (unit & 0xFFFFFC00u) == 0xD800;
}

constexpr bool isLowSurrogate(uint32_t unit) noexcept {
    return (unit & 0xFFFFFC00u) == 0xDC00;
}

constexpr bool isSurrogate(uint32_t unit) noexcept {
    return (unit & 0xFFFFF800u) == 0xD800;
}

// Where a conversion stands. It goes block by block while every unit of the block is a character by
// itself and the target has room. Where a block is not like that, its neighbours seldom are: the
// next units are converted one by one.
struct Position {
    int32_t read = 0;
    int32_t written = 0;
};
constexpr int32_t kStride = kBlockUnits<uint16_t>;
constexpr int32_t kOneByOne = 4 * kStride;

// Each pair becomes one 32-bit unit: the 16-bit unit and zero bits above it.
void widen(Block<uint16_t> units, wchar_t* target) noexcept {
    const Block<uint16_t> zero{};
    storeBlock(target, __builtin_shufflevector(units, zero, 0, 8, 1, 9, 2, 10, 3, 11));
    storeBlock(target + 4, __builtin_shufflevector(units, zero, 4, 12, 5, 13, 6, 14, 7, 15));
}

// The low halves of eight 32-bit units.
Block<uint16_t> narrow(Block<uint32_t> first, Block<uint32_t> second) noexcept {
    return __builtin_shufflevector(reinterpret_cast<Block<uint16_t>>(first),
                                   reinterpret_cast<Block<uint16_t>>(second), 0, 2, 4, 6, 8, 10, 12,
                                   14);
}

[[gnu::always_inline]] inline CnvStatus joinOne(const uint16_t* source, int32_t sourceUnits,
                                                wchar_t* target, int32_t targetUnits,
                                                Position& at) noexcept {
    uint32_t c = source[at.read];
    int32_t units = 1;
    if (isSurrogate(c)) {
        if (!isHighSurrogate(c) || at.read + 1 == sourceUnits ||
            !isLowSurrogate(source[at.read + 1])) {
            return CNV_MALFORMED_SOURCE;
        }
        c = 0x10000 + ((c - 0xD800) << 10 | (source[at.read + 1] - 0xDC00u));
        units = 2;
    }
    if (at.written == targetUnits) return CNV_TARGET_TOO_SMALL;
    target[at.written++] = static_cast<wchar_t>(c);
    at.read += units;
    return CNV_SUCCESS;
}

bool joinBlock(const uint16_t* source, wchar_t* target, Position& at) noexcept {
    const Block<uint16_t> units = loadBlock(source + at.read);
    if (anyLane((units & 0xF800) == 0xD800)) return false;
    widen(units, target + at.written);
    return true;
}

[[gnu::always_inline]] inline CnvStatus splitOne(const wchar_t* source, int32_t /*sourceUnits*/,
                                                 uint16_t* target, int32_t targetUnits,
                                                 Position& at) noexcept {
    const uint32_t c = codeOf(source[at.read]);
    if (c <= 0xFFFF) {
        if (isSurrogate(c)) return CNV_MALFORMED_SOURCE;
        if (at.written == targetUnits) return CNV_TARGET_TOO_SMALL;
        target[at.written++] = static_cast<uint16_t>(c);
    } else {
        if (c > 0x10FFFF) return CNV_MALFORMED_SOURCE;
        if (targetUnits - at.written < 2) return CNV_TARGET_TOO_SMALL;
        target[at.written++] = static_cast<uint16_t>(0xD7C0 + (c >> 10));
        target[at.written++] = static_cast<uint16_t>(0xDC00 | (c & 0x3FF));
    }
    ++at.read;
    return CNV_SUCCESS;
}

bool splitBlock(const wchar_t* source, uint16_t* target, Position& at) noexcept {
    const auto first = reinterpret_cast<Block<uint32_t>>(loadBlock(source + at.read));
    const auto second = reinterpret_cast<Block<uint32_t>>(loadBlock(source + at.read + 4));
    const auto notAlone = [](Block<uint32_t> units) {
        return (units > 0xFFFF) | ((units & 0xF800) == 0xD800);
    };
    if (anyLane(notAlone(first) | notAlone(second))) return false;
    storeBlock(target + at.written, narrow(first, second));
    return true;
}

template <auto convertBlock, auto convertOne, class Source, class Target>
CnvStatus convert(const Source* source, int32_t sourceUnits, Target* target, int32_t targetUnits,
                  uint32_t* count) noexcept {
    if (sourceUnits < 0 || targetUnits < 0) return CNV_BAD_LENGTH;
    Position at;
    while (at.read < sourceUnits) {
        const bool whole = sourceUnits - at.read >= kStride && targetUnits - at.written >= kStride;
        if (whole && convertBlock(source, target, at)) {
            at.read += kStride;
            at.written += kStride;
            continue;
        }
        Position one = at;
        const int32_t end = std::min(sourceUnits - at.read, kOneByOne) + at.read;
        while (one.read < end) {
            const CnvStatus status = convertOne(source, sourceUnits, target, targetUnits, one);
            if (status != CNV_SUCCESS) return status;
        }
        at = one;
    }
    *count = static_cast<uint32_t>(at.written);
    return CNV_SUCCESS;
}

}  // namespace
}  // namespace korv::datacnv

extern "C" {

int32_t Convert16To32(const uint16_t* source, int32_t sourceUnits, wchar_t* target,
                      int32_t targetUnits, uint32_t* count) {
    using namespace korv::datacnv;
    return convert<joinBlock, joinOne>(source, sourceUnits, target, targetUnits, count);
}

int32_t Convert32To16(const wchar_t* source, int32_t sourceUnits, uint16_t* target,
                      int32_t targetUnits, uint32_t* count) {
    using namespace korv::datacnv;
    return convert<splitBlock, splitOne>(source, sourceUnits, target, targetUnits, count);
}

}  // extern "C"
