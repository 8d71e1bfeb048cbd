// Release of request records in the X form.
#include "common/heap.h"
#include "common/list.h"
#include "korv/ctrlblk.h"

int32_t CleanCtrlBlkX(CtrlBlkX* block) {
    if (!block) return KORV_SUCCESS;
    korv::freeList(block->fieldDefs);
    korv::freeList(block->fieldRefs.link);
    korv::heap::release(block);
    return KORV_SUCCESS;
}

int32_t CleanSvcDefX(SvcDefX* service) {
    if (!service) return KORV_SUCCESS;
    korv::freeList(service->oprDefs);
    korv::heap::release(service);
    return KORV_SUCCESS;
}

int32_t CleanParamsX(OprDefX* first) {
    korv::freeList(first);
    return KORV_SUCCESS;
}
