// Sizes and offsets of every public record, which modules that are built apart share.
#include <cstddef>

#include "korv/datacnv.h"
#include "korv/korv.h"

#define EITHER(value32, value64) (sizeof(void*) == 4 ? (value32) : (value64))
#define SIZE(record, bytes32, bytes64) static_assert(sizeof(record) == EITHER(bytes32, bytes64));
#define AT(record, member, offset32, offset64) \
    static_assert(offsetof(record, member) == EITHER(offset32, offset64));
#define INSIDE AT
#define BYTES(record, member, bytes32, bytes64) \
    static_assert(sizeof(record::member) == EITHER(bytes32, bytes64));

#include "common/layouts.inc"
