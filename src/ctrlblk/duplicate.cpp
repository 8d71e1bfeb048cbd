// Deep copy of a field definition.
#include "common/heap.h"
#include "korv/ctrlblk.h"

namespace korv {
namespace {

// A copy of a text buffer, stored in `target`; an empty one has nothing to copy. False: no memory.
template <class Char>
bool copyText(const Char* text, int32_t bytes, Char*& target) noexcept {
    if (!text || bytes <= 0) return true;
    const auto size = static_cast<std::size_t>(bytes);
    target = static_cast<Char*>(heap::copy(text, size, size));
    return target != nullptr;
}

int32_t duplicate(FieldDefI& target, const FieldDefI& source) noexcept {
    target = source;
    target.wideText = nullptr;
    target.narrowText = nullptr;
    target.link = nullptr;
    if (!copyText(source.narrowText, source.narrowTextLen, target.narrowText)) {
        return KORV_NO_MEMORY_NARROW_TEXT;
    }
    if (!copyText(source.wideText, source.wideTextLen, target.wideText)) {
        heap::release(target.narrowText);
        target.narrowText = nullptr;
        return KORV_NO_MEMORY_WIDE_TEXT;
    }
    return KORV_SUCCESS;
}

}  // namespace
}  // namespace korv

int32_t DuplicateFieldDefI(FieldDefI* target, const FieldDefI* source) {
    if (!source || !target) return KORV_FAILURE;
    return korv::duplicate(*target, *source);
}
