// Removal of delimiter characters from wide text.
#include <cwchar>

#include "korv/text.h"

namespace korv {
namespace {

// Gathers the pieces between delimiters in `work` and returns the length. The source is left cut:
// the tokeniser ends each piece where it stands.
std::size_t gather(wchar_t* source, const wchar_t* delimiters, wchar_t* work) noexcept {
    wchar_t* end = work;
    wchar_t* state = nullptr;
    for (wchar_t* piece = std::wcstok(source, delimiters, &state); piece;
         piece = std::wcstok(nullptr, delimiters, &state)) {
        const std::size_t length = std::wcslen(piece);
        std::wmemcpy(end, piece, length);
        end += length;
    }
    *end = 0;
    return static_cast<std::size_t>(end - work);
}

}  // namespace
}  // namespace korv

int32_t TrimSourceW(wchar_t* source, uint32_t* length, const wchar_t* delimiters, wchar_t* work,
                    uint8_t mode) {
    if (!source) return KORV_FAILURE;
    const std::size_t gathered = korv::gather(source, delimiters, work);
    if (mode == 1) {
        *length = static_cast<uint32_t>(gathered);
        std::wmemcpy(source, work, gathered + 1);
    }
    return KORV_SUCCESS;
}
