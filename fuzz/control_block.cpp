// Conversion of control blocks and services with any lists: positions in any order, before the
// first field and past the last, nodes already chained to the X block, lists that share a tail. Of
// a list that comes back to itself the interface promises nothing.
#include <cstdlib>
#include <deque>
#include <vector>

#include "korv/korv.h"
#include "reference/field_walk.h"
#include "support/carried.h"
#include "support/expect.h"
#include "support/input.h"

namespace {

using fuzz::Input;

// A record with what the input holds in every byte.
template <class Record>
Record anyRecord(Input& input) {
    uint8_t bytes[sizeof(Record)];
    for (uint8_t& byte : bytes) byte = input.byte();
    Record record;
    std::memcpy(&record, bytes, sizeof record);
    return record;
}

// Records in the order of their links.
template <class Record>
struct List {
    std::deque<Record> records;
    Record* head = nullptr;

    List(Input& input, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) records.push_back(anyRecord<Record>(input));
        for (auto record = records.rbegin(); record != records.rend(); ++record) {
            record->link = head;
            head = &*record;
        }
    }
};

template <class Record>
std::vector<Record*> listed(Record* first) {
    std::vector<Record*> records;
    for (; first; first = first->link) records.push_back(first);
    return records;
}

template <class Record>
Record* zeroed() {
    return static_cast<Record*>(std::calloc(1, sizeof(Record)));
}

void expectFields(const CtrlBlkI& source, const CtrlBlkX& target) {
    const auto expected = listed<const FieldDefI>(source.fieldDefs);
    const auto fields = listed<const FieldDefX>(target.fieldDefs);
    FUZZ_EXPECT(fields.size() == expected.size());
    for (std::size_t i = 0; i < fields.size(); ++i) {
        FUZZ_EXPECT(fuzz::hasHeader(fields[i]->header, "FLDX", sizeof(FieldDefX)));
        FUZZ_EXPECT(fuzz::carriedByField(*fields[i]) == fuzz::carriedByField(*expected[i]));
    }
}

void expectReferences(const CtrlBlkI& source, CtrlBlkX& target, std::size_t chainedBefore) {
    const auto expected = listed<const FieldRefI>(&source.fieldRefs);
    const auto nodes = listed<FieldRefX>(&target.fieldRefs);
    FUZZ_EXPECT(nodes.size() == std::max(expected.size(), 1 + chainedBefore));
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const int16_t position = expected[i]->fieldPos;
        FUZZ_EXPECT(nodes[i]->fieldPos == static_cast<uint16_t>(position));
        FUZZ_EXPECT(nodes[i]->fieldDef == reference::walk(target.fieldDefs, position));
    }
    for (std::size_t i = expected.size(); i < nodes.size(); ++i) {
        FUZZ_EXPECT(nodes[i]->fieldPos == 4711 && !nodes[i]->fieldDef);
    }
}

void expectService(const SvcDefI& source, const CtrlBlkX& block, const SvcDefX& target) {
    FUZZ_EXPECT(fuzz::hasHeader(target.header, "SVCX", sizeof(SvcDefX)));
    FUZZ_EXPECT(fuzz::carriedByService(target) == fuzz::carriedByService(source));
    FUZZ_EXPECT(target.fieldDefs == block.fieldDefs);
    const auto expected = listed<const OprDefI>(source.oprDefs);
    const auto operands = listed<const OprDefX>(target.oprDefs);
    FUZZ_EXPECT(operands.size() == expected.size());
    for (std::size_t i = 0; i < operands.size(); ++i) {
        FUZZ_EXPECT(fuzz::hasHeader(operands[i]->header, "OPRX", sizeof(OprDefX)));
        FUZZ_EXPECT(fuzz::carriedByOperand(*operands[i]) == fuzz::carriedByOperand(*expected[i]));
    }
}

// Operands one by one: the link is the caller's.
void convertOperand(const OprDefI& source) {
    OprDefX target{};
    OprDefX* const link = target.link = &target;
    FUZZ_EXPECT(KORVCnvOprDefFromIToX(&source, &target) == 0);
    FUZZ_EXPECT(target.link == link &&
                fuzz::carriedByOperand(target) == fuzz::carriedByOperand(source));
    FUZZ_EXPECT(KORVCnvOprDefFromIToX(nullptr, &target) == -1);
    FUZZ_EXPECT(KORVCnvOprDefFromIToX(&source, nullptr) == -1);
}

void convertField(const FieldDefI& source) {
    FieldDefX target{};
    target.link = &target;
    FUZZ_EXPECT(KORVCnvFieldDefFromIToX(&source, &target) == 0);
    FUZZ_EXPECT(!target.link && fuzz::carriedByField(target) == fuzz::carriedByField(source));
    FUZZ_EXPECT(KORVCnvFieldDefFromIToX(nullptr, &target) == -1);
    FUZZ_EXPECT(KORVCnvFieldDefFromIToX(&source, nullptr) == -1);
}

// Converts a block into one that is zeroed except for `chained` reference nodes, and releases it.
void convertBlock(const CtrlBlkI& source, const SvcDefI& service, std::size_t chained) {
    auto* target = zeroed<CtrlBlkX>();
    target->reserved1 = 0xA5;
    target->blkSlot = 0xDEADBEEF;
    FieldRefX** end = &target->fieldRefs.link;
    for (std::size_t i = 0; i < chained; ++i) {
        *end = zeroed<FieldRefX>();
        (*end)->fieldPos = 4711;
        end = &(*end)->link;
    }
    FUZZ_EXPECT(KORVCnvCtrlBlkFromIToX(nullptr, target) == -1);
    FUZZ_EXPECT(KORVCnvCtrlBlkFromIToX(&source, nullptr) == -1);
    FUZZ_EXPECT(KORVCnvCtrlBlkFromIToX(&source, target) == 0);
    FUZZ_EXPECT(fuzz::hasHeader(target->header, "BLKX", sizeof(CtrlBlkX)));
    FUZZ_EXPECT(fuzz::carriedByBlock(*target) == fuzz::carriedByBlock(source));
    FUZZ_EXPECT(target->reserved1 == 0xA5 && target->blkSlot == 0xDEADBEEF);
    expectFields(source, *target);
    expectReferences(source, *target, chained);

    auto* converted = zeroed<SvcDefX>();
    FUZZ_EXPECT(KORVCnvSvcDefFromIToX(target, nullptr, converted) == -1);
    FUZZ_EXPECT(KORVCnvSvcDefFromIToX(target, &service, nullptr) == -1);
    FUZZ_EXPECT(KORVCnvSvcDefFromIToX(target, &service, converted) == 0);
    expectService(service, *target, *converted);
    FUZZ_EXPECT(CleanSvcDefX(converted) == 0);
    FUZZ_EXPECT(CleanCtrlBlkX(target) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    Input input(data, size);
    const std::size_t fieldCount = input.byte() % 48, operandCount = input.byte() % 16;
    const std::size_t chained = input.byte() % 16, begin = input.byte();
    std::vector<int16_t> positions;
    for (std::size_t count = input.byte(); positions.size() < count && !input.empty();) {
        // Mostly around the list; one in sixteen is anywhere.
        const unsigned kind = input.choice(16);
        positions.push_back(kind == 15 ? input.number<int16_t>()
                                       : static_cast<int16_t>(input.byte() % 64 - 4));
    }
    auto block = anyRecord<CtrlBlkI>(input);
    auto service = anyRecord<SvcDefI>(input);
    List<FieldDefI> fields(input, fieldCount);
    List<OprDefI> operands(input, operandCount);
    std::deque<FieldRefI> nodes;
    FieldRefI* node = &block.fieldRefs;
    node->fieldPos = positions.empty() ? int16_t{0} : positions[0];
    for (std::size_t i = 1; i < positions.size(); ++i) {
        node = node->link = &nodes.emplace_back(FieldRefI{nullptr, positions[i], nullptr});
    }
    node->link = nullptr;

    service.oprDefs = operands.head;
    block.fieldDefs = fields.head;
    convertBlock(block, service, chained);
    // A second request whose list is the end of the first one's.
    if (begin < fields.records.size()) {
        block.fieldDefs = &fields.records[begin];
        convertBlock(block, service, 0);
        convertField(fields.records[begin]);
    }
    if (operands.head) convertOperand(*operands.head);
    FUZZ_EXPECT(CleanCtrlBlkX(nullptr) == 0 && CleanSvcDefX(nullptr) == 0);
    FUZZ_EXPECT(CleanParamsX(nullptr) == 0);
    return 0;
}
