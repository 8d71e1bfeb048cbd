// An error record opened, filled with three tokens and released.
#include <cstdlib>

#include "korv/errors.h"
#include "peers/error_list.h"
#include "reference/error_chain.h"
#include "support/families.h"
#include "support/inputs.h"
#include "support/row.h"

namespace bench {
namespace {

constexpr std::size_t kInputs = 256;

ErrorAnchor* newAnchor() {
    return static_cast<ErrorAnchor*>(std::calloc(1, sizeof(ErrorAnchor)));
}

}  // namespace

// The tokens are those of a value that cannot be masked: the column, its name wide, and the value's
// length.
void addErrorChain() {
    const auto& columns = forever(texts<char>(kInputs, 12, randomText<char>));
    const auto& labels = forever(texts<wchar_t>(kInputs, 20, randomText<wchar_t>));
    const auto& lengths = forever(randomNumbers<int32_t>(kInputs, 1, 10000));
    Row("ErrorCaptureEAB, TokenCaptureEAB, TermErrors", "3 tokens", kInputs)
        .with("ours",
              [&](std::size_t i) {
                  ErrorAnchor* anchor = newAnchor();
                  ErrorCaptureEAB(anchor, 1, 2, 3);
                  TokenCaptureEAB(anchor, columns.at(i), VARCHAR_SZ, KORV_TOKID_COLNAME, 0);
                  TokenCaptureEAB(anchor, labels.at(i), WVARCHAR_SZ, KORV_TOKID_SRCDATA, 0);
                  TokenCaptureEAB(anchor, &lengths[i], INTEGER, KORV_TOKID_SRCLEN, 0);
                  TermErrors(anchor);
              })
        .with("literal",
              [&](std::size_t i) {
                  ErrorAnchor* anchor = newAnchor();
                  reference::errorCapture(anchor, 1, 2, 3);
                  reference::tokenCapture(anchor, columns.at(i), VARCHAR_SZ, KORV_TOKID_COLNAME);
                  reference::tokenCapture(anchor, labels.at(i), WVARCHAR_SZ, KORV_TOKID_SRCDATA);
                  reference::tokenCapture(anchor, &lengths[i], INTEGER, KORV_TOKID_SRCLEN);
                  reference::termErrors(anchor);
              })
        .with("std::list of vectors", [&](std::size_t i) {
            auto* errors = new peers::ErrorList;
            errors->open(1, 2, 3);
            errors->add(columns.at(i));
            errors->add(labels.at(i));
            errors->add(lengths[i]);
            benchmark::ClobberMemory();
            delete errors;
        });
}

}  // namespace bench
