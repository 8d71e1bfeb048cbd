// Conversion between UTF-16 and UTF-32 units, and to 16-bit XML characters.
#include <cwchar>

#include "common/heap.h"
#include "korv/datacnv.h"
#include "korv/text.h"

namespace korv {
namespace {

template <class Source, class Target>
using UnitConversion = int32_t (*)(const Source*, int32_t, Target*, int32_t, uint32_t*);

template <class Source, class Target>
int32_t convertUnits(UnitConversion<Source, Target> conversion, const Source* source,
                     int32_t sourceUnits, Target* target, int32_t targetUnits,
                     uint32_t& count) noexcept {
    uint32_t converted = 0;
    const int32_t status = conversion(source, sourceUnits, target, targetUnits, &converted);
    if (status == 0) count = converted;
    return status;
}

int32_t narrowToXml(const wchar_t* text, uint16_t*& units, bool allocate) noexcept {
    const std::size_t length = std::wcslen(text);
    if (length == 0) return KORV_FAILURE;
    if (allocate) {
        units = static_cast<uint16_t*>(heap::unfilled((length + 1) * sizeof(uint16_t)));
        if (!units) return KORV_FAILURE;
    }
    for (std::size_t i = 0; i <= length; ++i) units[i] = static_cast<uint16_t>(text[i] & 0xFFFF);
    return KORV_SUCCESS;
}

}  // namespace
}  // namespace korv

int32_t KORV_Utf16ToUtf32(const uint16_t* source, int32_t sourceBytes, wchar_t* target,
                          int32_t targetBytes, uint32_t* count) {
    return korv::convertUnits(Convert16To32, source, sourceBytes / 2, target, targetBytes / 4,
                              *count);
}

// Unlike its twin's, the size of this target is unsigned.
int32_t KORV_Utf32ToUtf16(const wchar_t* source, int32_t sourceBytes, uint16_t* target,
                          uint32_t targetBytes, uint32_t* count) {
    return korv::convertUnits(Convert32To16, source, sourceBytes / 4, target,
                              static_cast<int32_t>(targetBytes >> 1), *count);
}

int32_t KORVGetXMLCHARFromWCHAR(const wchar_t* text, uint16_t** units, uint8_t allocate) {
    return korv::narrowToXml(text, *units, allocate != 0);
}
