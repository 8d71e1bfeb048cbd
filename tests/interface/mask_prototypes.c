/* Every function of the masking engine has exactly the type written here: anything else does not
 * compile. */
#include <stdio.h>

#include "korv/mask.h"

/* NOLINTNEXTLINE(bugprone-macro-parentheses): parameter types take none */
#define FUNCTION(name, result, arguments) static result(*const check_##name) arguments = (name);

/* clang-format off */
FUNCTION(KorvMaskVersion, uint32_t, (void))
FUNCTION(KorvMaskOpen, int32_t, (const KorvMaskSettings*, KorvMask**))
FUNCTION(KorvMaskClose, void, (KorvMask*))
FUNCTION(KorvMaskGetColumn, const KorvMaskColumn*, (const KorvMask*, uint32_t))
FUNCTION(KorvMaskGetProvider, const KorvMaskProvider*, (const KorvMask*, uint32_t))
FUNCTION(KorvMaskBatch, int32_t, (KorvMask*, uint32_t, uint64_t, const KorvMaskStrings*,
                                  const KorvMaskStrings*, const KorvMaskResult**))
FUNCTION(KorvMaskGetStatistics, const KorvMaskStatistics*, (const KorvMask*, uint32_t))
FUNCTION(KorvMaskRecordCount, uint64_t, (const KorvMask*))
FUNCTION(KorvMaskGetRecord, const KorvMaskRecord*, (const KorvMask*, uint64_t))
FUNCTION(KorvMaskClearRecords, void, (KorvMask*))
/* clang-format on */

#define PRESENT(name) (check_##name != 0)

int main(void) {
    const int present[] = {
        PRESENT(KorvMaskVersion),       PRESENT(KorvMaskOpen),        PRESENT(KorvMaskClose),
        PRESENT(KorvMaskGetColumn),     PRESENT(KorvMaskGetProvider), PRESENT(KorvMaskBatch),
        PRESENT(KorvMaskGetStatistics), PRESENT(KorvMaskRecordCount), PRESENT(KorvMaskGetRecord),
        PRESENT(KorvMaskClearRecords),
    };
    const size_t count = sizeof present / sizeof present[0];
    size_t i;
    for (i = 0; i < count; ++i) {
        if (!present[i]) return 1;
    }
    if (KorvMaskVersion() != KORV_MASK_VERSION) return 1;
    printf("%u functions\n", (unsigned)count);
    return 0;
}
