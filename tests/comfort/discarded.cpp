// Ignored results of the C++ header: discarded.py expects a warning for each line that
// is marked with "drops", and for no other one.
#include "korv/korv.hpp"

korv::Buffer buffer();
korv::FieldWithTexts field();
korv::Request request();
korv::Elements elements();
korv::Status status();
void drop(CtrlBlkI& source, const SvcDefI& service, CtrlBlkX& block, ErrorAnchor& anchor);

void drop(CtrlBlkI& source, const SvcDefI& service, CtrlBlkX& block, ErrorAnchor& anchor) {
    korv::make<CtrlBlkX>();                     // drops
    buffer();                                   // drops
    field().release();                          // drops
    field();                                    // drops
    request();                                  // drops
    elements();                                 // drops
    status();                                   // drops
    korv::succeeded(korv::Status(1));           // drops
    korv::to_string(korv::Status(1));           // drops
    korv::view(L"A");                           // drops
    korv::fields(block);                        // drops
    korv::fields(block).begin();                // drops
    korv::fields(block).empty();                // drops
    korv::references(source);                   // drops
    korv::errors(anchor);                       // drops
    korv::pickedField(block, block.fieldRefs);  // drops

    korv::Request converted;
    korv::Request::convert(source, service, converted);  // drops
    converted.block();                                   // drops
    converted.service();                                 // drops
    korv::Buffer bytes;
    bytes.resize(1);  // drops
    bytes.grow(2);    // drops
    bytes.reset();
    korv::Owner<uint16_t> units;
    korv::narrowedUnits(L"A", units);  // drops
    korv::Elements names(L"A");
    names.status();    // drops
    names.position();  // drops
    names.begin();     // drops
    korv::ErrorBuilder(source, 1, 2, 1).token(KORV_TOKID_MASK, 3);
    korv::ErrorBuilder(source, 1, 2, 1).token(KORV_TOKID_MASK, 3).status();  // drops
}
