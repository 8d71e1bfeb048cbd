// Compiles where the C++ header shares the namespace korv with the library's own headers.
#include "common/block.h"
#include "common/header.h"
#include "common/heap.h"
#include "common/length_prefix.h"
#include "common/list.h"
#include "datatypes/catalogue.h"
#include "errors/error_chain.h"
#include "korv/korv.hpp"
#include "numeric/transposition_table.h"
#include "text/letter_case.h"

using namespace korv;

std::size_t count(const CtrlBlkI& request, const CtrlBlkX& block, const ErrorAnchor& anchor);
std::size_t count(const CtrlBlkI& request, const CtrlBlkX& block, const ErrorAnchor& anchor) {
    std::size_t found = 0;
    for ([[maybe_unused]] const auto& field : fields(block)) ++found;
    for (const ErrorRecord& record : errors(anchor)) found += tokens(record).size();
    Elements elements(L"A,B");
    for (const std::wstring_view element : elements) found += element.size();
    Request converted;
    if (!succeeded(Request::convert(request, SvcDefI{}, converted))) {
        ErrorBuilder(request, 1, 2, 1).token(KORV_TOKID_MASK, view(block.fieldDefs->wideText));
    }
    return found;
}
