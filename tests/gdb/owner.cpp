// A record that an owner of korv.hpp holds, for the printers.
#include "korv/korv.hpp"

namespace {

void inspect(const korv::Owner<ErrorAnchor>& owner) {
    static_cast<void>(owner);
}

}  // namespace

int main() {
    const auto owner = korv::make<ErrorAnchor>();
    ErrorCaptureEAB(owner.get(), 7, 8, 1);
    TokenCaptureEAB(owner.get(), L"CARD", WVARCHAR_SZ, KORV_TOKID_COLNAME, 0);
    inspect(owner);
}
