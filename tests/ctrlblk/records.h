// Records for the tests of control blocks: full of rubbish, on the library's heap, compared by
// member.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <initializer_list>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "korv/korv.h"
#include "support/heap.h"

// A record with a random value in every byte: a member that is not carried, or carried from the
// wrong place, shows.
template <class Record>
Record rubbish(unsigned seed) {
    std::mt19937 random(seed);
    unsigned char bytes[sizeof(Record)];
    for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random() | 1);
    Record record;
    std::memcpy(&record, bytes, sizeof record);
    return record;
}

// A zeroed record that counts as a block of the library, so that the test sees whether it is freed.
template <class Record>
Record* heapRecord() {
    void* block = nullptr;
    std::uint32_t size = 0;
    EXPECT_EQ(0, KORVAllocateBuffer(&block, &size, sizeof(Record)));
    return static_cast<Record*>(block);
}

// Pointers are compared and printed as addresses: what they name need not exist.
inline const void* plain(const volatile void* address) {
    return const_cast<const void*>(address);
}
template <class T>
requires std::is_arithmetic_v<T> std::int64_t plain(T value) {
    return static_cast<std::int64_t>(value);
}
#define EXPECT_MEMBER(expected, actual, member) \
    EXPECT_EQ(plain((expected).member), plain((actual).member)) << #member

inline void expectHeader(const BlockHeader& header, std::string_view eyeCatcher,
                         std::size_t length) {
    EXPECT_EQ(eyeCatcher, std::string_view(header.eyeCatcher, sizeof header.eyeCatcher));
    EXPECT_EQ(KORV_BLOCK_VERSION, header.version);
    EXPECT_EQ(length, header.length);
}

inline void expectSameHeader(const BlockHeader& expected, const BlockHeader& actual) {
    EXPECT_EQ(0, std::memcmp(&expected, &actual, sizeof expected)) << "header";
}

// The members that a field definition carries from one form to another.
template <class Actual>
void expectFieldCarried(const FieldDefI& expected, const Actual& actual) {
    EXPECT_MEMBER(expected, actual, dataType);
    EXPECT_MEMBER(expected, actual, length);
    EXPECT_MEMBER(expected, actual, fldValue1);
    EXPECT_MEMBER(expected, actual, fldValue2);
    EXPECT_MEMBER(expected, actual, fldValue3);
    EXPECT_MEMBER(expected, actual, fldFlag);
    EXPECT_MEMBER(expected, actual, wideTextLen);
    EXPECT_MEMBER(expected, actual, narrowTextLen);
}

inline void expectSame(const FieldDefI& expected, const FieldDefI& actual) {
    expectFieldCarried(expected, actual);
    EXPECT_MEMBER(expected, actual, link);
    expectSameHeader(expected.header, actual.header);
    EXPECT_MEMBER(expected, actual, fldExtra);
    EXPECT_MEMBER(expected, actual, wideText);
    EXPECT_MEMBER(expected, actual, narrowText);
}

// Every member after the header of an operand.
inline void expectOperandCarried(const OprDef& expected, const OprDef& actual) {
    EXPECT_MEMBER(expected, actual, oprCode);
    EXPECT_MEMBER(expected, actual, oprText);
    EXPECT_MEMBER(expected, actual, oprValue1);
    EXPECT_MEMBER(expected, actual, oprFlag);
    EXPECT_MEMBER(expected, actual, oprValue2);
    EXPECT_MEMBER(expected, actual, oprTextLen);
    EXPECT_MEMBER(expected, actual, valueKind);
    EXPECT_MEMBER(expected, actual, valueFlag);
    EXPECT_MEMBER(expected, actual, valueCodePage);
    EXPECT_MEMBER(expected, actual, narrowValueLen);
    EXPECT_MEMBER(expected, actual, wideValueLen);
    EXPECT_MEMBER(expected, actual, intValue);
    EXPECT_MEMBER(expected, actual, wideValue);
    EXPECT_MEMBER(expected, actual, narrowValue);
    EXPECT_MEMBER(expected, actual, otherValue);
}

inline void expectSame(const OprDef& expected, const OprDef& actual) {
    EXPECT_MEMBER(expected, actual, link);
    expectSameHeader(expected.header, actual.header);
    expectOperandCarried(expected, actual);
}

// An I block with `fields` field definitions and a reference node for each position.
struct Request {
    CtrlBlkI block = rubbish<CtrlBlkI>(1);
    std::deque<FieldDefI> fields;
    std::deque<FieldRefI> chained;

    Request(std::size_t fieldCount, const std::vector<int>& positions) {
        block.fieldDefs = nullptr;
        FieldDefI** end = &block.fieldDefs;
        for (std::size_t i = 0; i < fieldCount; ++i) {
            fields.push_back(rubbish<FieldDefI>(static_cast<unsigned>(100 + i)));
            *end = &fields.back();
            end = &fields.back().link;
            *end = nullptr;
        }
        FieldRefI* node = &block.fieldRefs;
        for (std::size_t i = 0; i < positions.size(); ++i) {
            if (i > 0) node = node->link = &chained.emplace_back(rubbish<FieldRefI>(7));
            node->fieldPos = static_cast<std::int16_t>(positions[i]);
            node->link = nullptr;
        }
    }
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;
};

// The records of a list, front to back.
template <class Record>
std::vector<Record*> listed(Record* first) {
    std::vector<Record*> records;
    for (; first; first = first->link) records.push_back(first);
    return records;
}
