// Conversion of a block of fields and references, and its release; the time is that of one record.
#include <cstdlib>
#include <vector>

#include "korv/ctrlblk.h"
#include "reference/control_block.h"
#include "support/families.h"
#include "support/row.h"

namespace bench {
namespace {

constexpr const char* kFunction = "KORVCnvCtrlBlkFromIToX, CleanCtrlBlkX";

// A block of n fields, and of n references to them in ascending positions.
struct Source {
    explicit Source(std::size_t n) : fields(n), references(n - 1) {
        for (std::size_t i = 0; i + 1 < n; ++i) {
            fields[i].link = &fields[i + 1];
            references[i].fieldPos = static_cast<int16_t>(i + 1);
            if (i) references[i - 1].link = &references[i];
        }
        block.fieldDefs = fields.data();
        block.fieldRefs.link = references.data();
    }

    CtrlBlkI block{};
    std::vector<FieldDefI> fields;
    std::vector<FieldRefI> references;
};

template <class Convert, class Clean>
void request(const CtrlBlkI& source, Convert convert, Clean clean) {
    auto* target = static_cast<CtrlBlkX*>(std::calloc(1, sizeof(CtrlBlkX)));
    convert(&source, target);
    clean(target);
}

// As many blocks of the heap, of the same sizes, taken and released in the same order.
void heapAlone(std::vector<void*>& blocks) {
    const std::size_t n = blocks.size() / 2;
    blocks[0] = std::malloc(sizeof(CtrlBlkX));
    for (std::size_t i = 1; i <= n; ++i) blocks[i] = std::malloc(sizeof(FieldDefX));
    for (std::size_t i = n + 1; i < 2 * n; ++i) blocks[i] = std::malloc(sizeof(FieldRefX));
    benchmark::ClobberMemory();
    for (std::size_t i = 1; i < 2 * n; ++i) std::free(blocks[i]);
    std::free(blocks[0]);
}

constexpr std::size_t kBatch = 200;

std::string sizeOf(std::size_t n) {
    return std::to_string(n) + " fields and references";
}

}  // namespace

void addConvert() {
    const auto& few = *new Source(20);
    auto& fewBlocks = forever(std::vector<void*>(2 * 20));
    auto ours = [](const Source& source) {
        request(source.block, KORVCnvCtrlBlkFromIToX, CleanCtrlBlkX);
    };
    const auto oursOfFew = [&, ours](std::size_t) { ours(few); };
    const auto literal = [&](std::size_t) {
        request(few.block, reference::cnvCtrlBlkFromIToX, reference::cleanCtrlBlkX);
    };
    Row(kFunction, sizeOf(20), kBatch)
        .units(kBatch * 20)
        .with("ours", oursOfFew)
        .with("literal", literal)
        .with("malloc and free alone", [&](std::size_t) { heapAlone(fewBlocks); });

    const auto& many = *new Source(20000);
    Row(kFunction, sizeOf(20000), 1).units(20000).with("ours", [&, ours](std::size_t) {
        ours(many);
    });
    // Names the time at 20 as the peer of that at 20,000.
    Row(kFunction, sizeOf(20000), kBatch).units(kBatch * 20).with("ours at 20", oursOfFew);
}

}  // namespace bench
