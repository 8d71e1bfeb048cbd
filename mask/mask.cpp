// The C interface of the engine.
#include "korv/mask.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>

#include "engine.h"
#include "secrets/secret_text.h"

// The handle is the engine itself.
struct KorvMask : mask::Engine {};

namespace {

// What the first version of the settings consists of.
constexpr size_t kSmallestSettings =
    offsetof(KorvMaskSettings, folderCount) + sizeof(KorvMaskSettings::folderCount);

bool areComplete(const KorvMaskSettings& settings) {
    const bool areUnnamed = (settings.flags & KORV_MASK_UNNAMED_COLUMNS) != 0;
    if (settings.columnCount > 0 && settings.columns == nullptr && !areUnnamed) return false;
    if (settings.folderCount > 0 && settings.folders == nullptr) return false;
    for (uint32_t i = 0; i < settings.columnCount && !areUnnamed; ++i) {
        if (settings.columns[i] == nullptr) return false;
    }
    if (settings.secretCount > 0 && settings.secrets == nullptr) return false;
    for (uint32_t i = 0; i < settings.secretCount; ++i) {
        const KorvMaskSecret& secret = settings.secrets[i];
        if (secret.name == nullptr || secret.bytes == nullptr ||
            !secrets::isSecretName(secret.name) || secret.length < secrets::kShortestSecret ||
            secret.length > secrets::kLongestSecret) {
            return false;
        }
    }
    for (uint32_t i = 0; i < settings.folderCount; ++i) {
        if (settings.folders[i] == nullptr) return false;
    }
    if (settings.fileFolderCount > 0 && settings.fileFolders == nullptr) return false;
    for (uint32_t i = 0; i < settings.fileFolderCount; ++i) {
        if (settings.fileFolders[i] == nullptr) return false;
    }
    if ((settings.flags & KORV_MASK_ONE_RULE) != 0 &&
        (settings.rules == nullptr || settings.columnCount != 1)) {
        return false;
    }
    return settings.rules != nullptr || settings.rulesFile != nullptr ||
           (settings.flags & KORV_MASK_ALL_PROVIDERS) != 0;
}

}  // namespace

uint32_t KorvMaskVersion(void) {
    return KORV_MASK_VERSION;
}

int32_t KorvMaskOpen(const KorvMaskSettings* settings, KorvMask** mask) {
    if (mask == nullptr) return KORV_MASK_BAD_ARGUMENT;
    *mask = nullptr;
    if (settings == nullptr || settings->size < kSmallestSettings) return KORV_MASK_BAD_ARGUMENT;
    KorvMaskSettings known = {};
    std::memcpy(&known, settings, std::min(settings->size, sizeof known));
    if (!areComplete(known)) return KORV_MASK_BAD_ARGUMENT;
    try {
        *mask = new KorvMask;
    } catch (const std::bad_alloc&) {
        return KORV_MASK_NO_MEMORY;
    }
    return (*mask)->open(known);
}

void KorvMaskClose(KorvMask* mask) {
    delete mask;
}

const KorvMaskColumn* KorvMaskGetColumn(const KorvMask* mask, uint32_t column) {
    const mask::Column* const found = mask == nullptr ? nullptr : mask->column(column);
    return found == nullptr ? nullptr : &found->description();
}

const KorvMaskProvider* KorvMaskGetProvider(const KorvMask* mask, uint32_t index) {
    return mask == nullptr ? nullptr : mask->provider(index);
}

int32_t KorvMaskBatch(KorvMask* mask, uint32_t column, uint64_t firstRow,
                      const KorvMaskStrings* source, const KorvMaskStrings* related,
                      const KorvMaskResult** result) {
    if (mask == nullptr) return KORV_MASK_BAD_ARGUMENT;
    if (source == nullptr || result == nullptr) {
        return mask->report(KORV_MASK_BAD_ARGUMENT, "the source or the result is NULL");
    }
    return mask->maskBatch(column, firstRow, *source, related, *result);
}

const KorvMaskStatistics* KorvMaskGetStatistics(const KorvMask* mask, uint32_t column) {
    const mask::Column* const found = mask == nullptr ? nullptr : mask->column(column);
    return found == nullptr ? nullptr : &found->statistics();
}

uint64_t KorvMaskRecordCount(const KorvMask* mask) {
    return mask == nullptr ? 0 : mask->records().size();
}

const KorvMaskRecord* KorvMaskGetRecord(const KorvMask* mask, uint64_t index) {
    if (mask == nullptr || index >= mask->records().size()) return nullptr;
    return &mask->records()[static_cast<size_t>(index)];
}

void KorvMaskClearRecords(KorvMask* mask) {
    if (mask != nullptr) mask->records().clear();
}
