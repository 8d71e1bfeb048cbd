// The same work by hand and with the C++ header: same_code.py compares the pairs by_hand_X and
// with_header_X, instruction by instruction. Nothing here runs.
#include <cwchar>

#include "korv/korv.hpp"

#if defined(__cpp_exceptions)
#define TRY try {
#define OR_RELEASE(release) \
    }                       \
    catch (...) {           \
        release;            \
        throw;              \
    }
#else
#define TRY {
#define OR_RELEASE(release) }
#endif

extern "C" {

void use(void* record);

// A request converted, used and released.
int32_t by_hand_request(const CtrlBlkI* request) {
    auto* block = static_cast<CtrlBlkX*>(std::calloc(1, sizeof(CtrlBlkX)));
    int32_t status;
    TRY status = KORVCnvCtrlBlkFromIToX(request, block);
    if (status == 0) use(block);
    OR_RELEASE(if (block) CleanCtrlBlkX(block))
    if (block) CleanCtrlBlkX(block);
    return status;
}
int32_t with_header_request(const CtrlBlkI* request) {
    const auto block = korv::make<CtrlBlkX>();
    const int32_t status = KORVCnvCtrlBlkFromIToX(request, block.get());
    if (status == 0) use(block.get());
    return status;
}

int32_t by_hand_service(const CtrlBlkX* block, const SvcDefI* source) {
    auto* service = static_cast<SvcDefX*>(std::calloc(1, sizeof(SvcDefX)));
    int32_t status;
    TRY status = KORVCnvSvcDefFromIToX(block, source, service);
    OR_RELEASE(if (service) CleanSvcDefX(service))
    if (service) CleanSvcDefX(service);
    return status;
}
int32_t with_header_service(const CtrlBlkX* block, const SvcDefI* source) {
    const auto service = korv::make<SvcDefX>();
    return KORVCnvSvcDefFromIToX(block, source, service.get());
}

// Both records of a request, in place of those of an earlier one.
struct Converted {
    CtrlBlkX* block;
    SvcDefX* service;
};
static void replaceBlock(Converted* converted, CtrlBlkX* block) {
    CtrlBlkX* const old = converted->block;
    converted->block = block;
    if (old) CleanCtrlBlkX(old);
}
static void replaceService(Converted* converted, SvcDefX* service) {
    SvcDefX* const old = converted->service;
    converted->service = service;
    if (old) CleanSvcDefX(old);
}
int32_t by_hand_conversion(const CtrlBlkI* request, const SvcDefI* source, Converted* converted) {
    replaceService(converted, static_cast<SvcDefX*>(std::calloc(1, sizeof(SvcDefX))));
    replaceBlock(converted, static_cast<CtrlBlkX*>(std::calloc(1, sizeof(CtrlBlkX))));
    int32_t status = KORVCnvCtrlBlkFromIToX(request, converted->block);
    if (status == 0) status = KORVCnvSvcDefFromIToX(converted->block, source, converted->service);
    if (status != 0) {
        replaceService(converted, nullptr);
        replaceBlock(converted, nullptr);
    }
    return status;
}
int32_t with_header_conversion(const CtrlBlkI* request, const SvcDefI* source,
                               korv::Request* converted) {
    return static_cast<int32_t>(korv::Request::convert(*request, *source, *converted));
}

// Ownership that comes in, passes on or goes out.
void by_hand_operands(OprDefX* first) {
    TRY use(first);
    OR_RELEASE(if (first) CleanParamsX(first))
    if (first) CleanParamsX(first);
}
void with_header_operands(OprDefX* first) {
    const korv::Owner<OprDefX> owner(first);
    use(owner.get());
}

ErrorAnchor* by_hand_errors(bool keep) {
    auto* anchor = static_cast<ErrorAnchor*>(std::calloc(1, sizeof(ErrorAnchor)));
    TRY ErrorCaptureEAB(anchor, 1, 2, 3);
    OR_RELEASE(if (anchor) TermErrors(anchor))
    if (keep) return anchor;
    if (anchor) TermErrors(anchor);
    return nullptr;
}
ErrorAnchor* with_header_errors(bool keep) {
    auto anchor = korv::make<ErrorAnchor>();
    ErrorCaptureEAB(anchor.get(), 1, 2, 3);
    if (keep) return anchor.release();
    return nullptr;
}

// A block that a call allocates.
int32_t by_hand_units(const wchar_t* text) {
    uint16_t* place = nullptr;
    const int32_t status = KORVGetXMLCHARFromWCHAR(text, &place, 1);
    uint16_t* const units = place;
    if (units) {
        TRY use(units);
        OR_RELEASE(std::free(units))
        std::free(units);
    }
    return status;
}
int32_t with_header_units(const wchar_t* text) {
    korv::Owner<uint16_t> units;
    const korv::Status status = korv::narrowedUnits(text, units);
    if (units) use(units.get());
    return static_cast<int32_t>(status);
}

// Blocks that a record holds.
static void freeTexts(const FieldDefI& field) {
    std::free(field.wideText);
    std::free(field.narrowText);
}
int32_t by_hand_texts(const FieldDefI* source) {
    FieldDefI copy = {};
    int32_t status;
    TRY status = DuplicateFieldDefI(&copy, source);
    use(&copy);
    OR_RELEASE(freeTexts(copy))
    freeTexts(copy);
    return status;
}
int32_t with_header_texts(const FieldDefI* source) {
    korv::FieldWithTexts copy;
    const int32_t status = DuplicateFieldDefI(copy.get(), source);
    use(copy.get());
    return status;
}

int32_t by_hand_buffer(int32_t size) {
    korv::WorkBuffer buffer = {};
    int32_t status;
    TRY status = KORVAllocateBuffer(&buffer.data, &buffer.size, size);
    if (status == KORV_SUCCESS) use(buffer.data);
    OR_RELEASE(std::free(buffer.data))
    std::free(buffer.data);
    return status;
}
int32_t with_header_buffer(int32_t size) {
    korv::Buffer buffer;
    const korv::Status status = buffer.resize(size);
    if (status == korv::Status::success) use(buffer->data);
    return static_cast<int32_t>(status);
}

int32_t by_hand_growth(korv::WorkBuffer* buffer, int32_t size) {
    void* const old = buffer->data;
    const int32_t status = KORVAllocateBuffer1(&buffer->data, &buffer->size, size, 1);
    if (status == KORV_NO_MEMORY_BUFFER) {
        std::free(old);
        buffer->size = 0;
    }
    return status;
}
int32_t with_header_growth(korv::Buffer* buffer, int32_t size) {
    return static_cast<int32_t>(buffer->grow(size));
}

// Walks.
uint32_t by_hand_fields(const CtrlBlkI* block) {
    uint32_t sum = 0;
    for (const FieldDefI* field = block->fieldDefs; field; field = field->link) {
        sum += field->length;
    }
    return sum;
}
uint32_t with_header_fields(const CtrlBlkI* block) {
    uint32_t sum = 0;
    for (const FieldDefI& field : korv::fields(*block)) sum += field.length;
    return sum;
}

int32_t by_hand_references(const CtrlBlkX* block) {
    int32_t sum = 0;
    for (const FieldRefX* node = &block->fieldRefs; node; node = node->link) sum += node->fieldPos;
    return sum;
}
int32_t with_header_references(const CtrlBlkX* block) {
    int32_t sum = 0;
    for (const FieldRefX& node : korv::references(*block)) sum += node.fieldPos;
    return sum;
}

uint32_t by_hand_tokens(const ErrorAnchor* anchor) {
    uint32_t used = 0;
    for (const ErrorRecord* record = anchor->head; record; record = record->next) {
        const std::size_t count =
            record->tokenSlotCount > 0 ? static_cast<std::size_t>(record->tokenSlotCount) : 0;
        const TokenSlot* slot = &record->tokenSlots[0];
        for (const TokenSlot* const end = slot + count; slot != end; ++slot) used += slot->tokenId;
    }
    return used;
}
uint32_t with_header_tokens(const ErrorAnchor* anchor) {
    uint32_t used = 0;
    for (const ErrorRecord& record : korv::errors(*anchor)) {
        for (const TokenSlot& slot : korv::tokens(record)) used += slot.tokenId;
    }
    return used;
}

std::size_t by_hand_names(const CtrlBlkX* block) {
    std::size_t sum = 0;
    for (const FieldDefX* field = block->fieldDefs; field; field = field->link) {
        sum += field->wideText ? std::wcslen(field->wideText) : 0;
    }
    return sum;
}
std::size_t with_header_names(const CtrlBlkX* block) {
    std::size_t sum = 0;
    for (const FieldDefX& field : korv::fields(*block)) sum += korv::view(field.wideText).size();
    return sum;
}

// The elements of a list, one after the other in a block of the library.
int32_t by_hand_elements(const wchar_t* list) {
    const wchar_t* const source = list ? list : L"";
    const std::size_t bytes = (std::wcslen(source) + 1) * sizeof(wchar_t);
    korv::WorkBuffer buffer = {};
    int32_t sum = 0;
    TRY if (bytes <= INT32_MAX) {
        KORVAllocateBuffer(&buffer.data, &buffer.size, static_cast<int32_t>(bytes));
    }
    OR_RELEASE(std::free(buffer.data))
    auto* const element = static_cast<wchar_t*>(buffer.data);
    TRY if (element) {
        uint32_t length = 0;
        int32_t next = KORV_GetNextElement(source, element, &length, L',', 0, 0);
        while (next >= -1) {
            sum += element[0];
            if (next < 0) break;
            length = 0;
            next =
                KORV_GetNextElement(source, element, &length, L',', 0, static_cast<uint32_t>(next));
        }
    }
    OR_RELEASE(std::free(element))
    std::free(element);
    return sum;
}
int32_t with_header_elements(const wchar_t* list) {
    int32_t sum = 0;
    korv::Elements elements(list);
    for (const std::wstring_view element : elements) sum += element.data()[0];
    return sum;
}

// An error with its tokens.
void by_hand_error(const CtrlBlkI* request, const wchar_t* name, int32_t length) {
    if (ErrorCapture(request, 12, 1, 2) != 0) return;
    TokenCapture(request, name, WVARCHAR_SZ, KORV_TOKID_COLNAME, 0);
    TokenCapture(request, &length, INTEGER, KORV_TOKID_SRCLEN, 0);
}
void with_header_error(const CtrlBlkI* request, const wchar_t* name, int32_t length) {
    korv::ErrorBuilder(*request, 12, 1, 2)
        .token(KORV_TOKID_COLNAME, name)
        .token(KORV_TOKID_SRCLEN, length);
}

}  // extern "C"
