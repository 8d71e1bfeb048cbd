// Linked lists of heap records.
#pragma once

#include "common/heap.h"

namespace korv {

// Frees every record of a list, front to back, and leaves the list empty.
template <class Record>
void freeList(Record*& head) noexcept {
    while (head) {
        Record* next = head->link;
        heap::release(head);
        head = next;
    }
}

}  // namespace korv
