// The members that records carry from one form to another, to be compared at once.
#pragma once

#include <cstring>
#include <tuple>

#include "korv/ctrlblk.h"

namespace fuzz {

// Of either form.
template <class Field>
auto carriedByField(const Field& f) {
    return std::tie(f.dataType, f.length, f.fldValue1, f.fldValue2, f.fldValue3, f.fldFlag,
                    f.wideText, f.narrowText, f.wideTextLen, f.narrowTextLen);
}

template <class Block>
auto carriedByBlock(const Block& b) {
    return std::tie(b.blkCode, b.blkAttr1, b.blkAttr2, b.blkAttr3, b.blkAttr4, b.blkAttr5,
                    b.blkFlag, b.blkValue1, b.blkValue2, b.blkValue3);
}

inline auto carriedByOperand(const OprDef& o) {
    return std::tie(o.oprCode, o.oprText, o.oprValue1, o.oprFlag, o.oprValue2, o.oprTextLen,
                    o.valueKind, o.valueFlag, o.valueCodePage, o.narrowValueLen, o.wideValueLen,
                    o.intValue, o.wideValue, o.narrowValue, o.otherValue);
}

template <class Service>
auto carriedByService(const Service& s) {
    return std::tie(s.svcCode1, s.svcCode2, s.svcAttr1, s.svcAttr2, s.svcFlag, s.svcValue);
}

inline bool hasHeader(const BlockHeader& header, const char* eyeCatcher, std::size_t length) {
    return std::memcmp(header.eyeCatcher, eyeCatcher, sizeof header.eyeCatcher) == 0 &&
           header.version == KORV_BLOCK_VERSION && header.length == length;
}

}  // namespace fuzz
