// The engine through its C interface, for its tests: rules opened with everything that they need,
// values in and out as vectors, and what the records say.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "korv/mask.h"
#include "support/fenced.h"
#include "support/heap.h"

using Value = std::optional<std::string>;  // nothing: NULL
using Values = std::vector<Value>;

inline const Value kNull = std::nullopt;

// Values in the layout of a batch. Each of its buffers ends at an unreadable page. Before index
// `first` there are other values.
class Batch {
  public:
    explicit Batch(const Values& values, uint32_t offsetBits = 32, uint64_t first = 0) {
        std::string bytes = "before";
        std::vector<int64_t> offsets(static_cast<size_t>(first), 0);
        if (first == 0) bytes.clear();
        offsets.push_back(static_cast<int64_t>(bytes.size()));
        bool anyNull = first > 0;
        for (const Value& value : values) {
            // What lies below a NULL is no value.
            bytes += value.value_or("\xFFnot a value");
            offsets.push_back(static_cast<int64_t>(bytes.size()));
            anyNull |= !value.has_value();
        }
        bytes_ = copy<char>(bytes);
        strings_ = {values.size(), first, offsetBits, nullptr, bytes_->data(), nullptr};
        if (offsetBits == 32) {
            offsets32_ = copy<int32_t>(offsets);
            strings_.offsets = offsets32_->data();
        } else {
            offsets64_ = copy<int64_t>(offsets);
            strings_.offsets = offsets64_->data();
        }
        if (!anyNull) return;
        // The bits around the values say the opposite of their neighbours.
        const size_t before = static_cast<size_t>(first);
        const size_t end = before + values.size();
        std::vector<uint8_t> bits((end + 7) / 8, 0);
        for (size_t i = 0; i < bits.size() * 8; ++i) {
            const bool valid = values.empty() ? true
                               : i < before   ? !values.front()
                               : i >= end     ? !values.back()
                                              : values[i - before].has_value();
            if (valid) bits[i / 8] = static_cast<uint8_t>(bits[i / 8] | 1u << i % 8);
        }
        validity_ = copy<uint8_t>(bits);
        strings_.validity = validity_->data();
    }

    KorvMaskStrings& strings() { return strings_; }
    operator const KorvMaskStrings*() const { return &strings_; }

    bool intact() const {
        return bytes_->intact() && (!offsets32_ || offsets32_->intact()) &&
               (!offsets64_ || offsets64_->intact()) && (!validity_ || validity_->intact());
    }

  private:
    template <class T, class Source>
    static std::unique_ptr<Fenced<T>> copy(const Source& source) {
        auto made = std::make_unique<Fenced<T>>(source.size());
        for (size_t i = 0; i < source.size(); ++i) (*made)[i] = static_cast<T>(source[i]);
        return made;
    }

    std::unique_ptr<Fenced<char>> bytes_;
    std::unique_ptr<Fenced<int32_t>> offsets32_;
    std::unique_ptr<Fenced<int64_t>> offsets64_;
    std::unique_ptr<Fenced<uint8_t>> validity_;
    KorvMaskStrings strings_;
};

inline int64_t offsetAt(const KorvMaskStrings& strings, uint64_t index) {
    return strings.offsetBits == 32 ? static_cast<const int32_t*>(strings.offsets)[index]
                                    : static_cast<const int64_t*>(strings.offsets)[index];
}

inline Values unpack(const KorvMaskStrings& strings) {
    Values values;
    for (uint64_t i = strings.first; i < strings.first + strings.count; ++i) {
        const int64_t begin = offsetAt(strings, i);
        const int64_t end = offsetAt(strings, i + 1);
        EXPECT_LE(begin, end) << "value " << i;
        if (strings.validity != nullptr && (strings.validity[i / 8] >> i % 8 & 1) == 0) {
            values.emplace_back();
        } else if (begin >= end) {
            values.emplace_back("");
        } else {
            values.emplace_back(std::string(strings.bytes + begin, strings.bytes + end));
        }
    }
    return values;
}

// Rules with secrets need libcrypto.
#ifdef KORV_HAS_LIBCRYPTO
inline constexpr bool kHasSecrets = true;
#else
inline constexpr bool kHasSecrets = false;
#endif

// What is masked, by default one column A with the tests' providers and a secret at hand.
struct Setting {
    std::vector<std::string> columns = {"A"};
    uint32_t flags = 0;
    std::vector<std::string> folders = {KORV_PROVIDERS, KORV_BROKEN_PROVIDERS};
    std::optional<std::string> rulesFile = std::nullopt;
    std::map<std::string, std::string> secrets = {{"test", "0123456789abcdefghijklmnopqrstuv"}};
    std::optional<std::string> secretsFile = std::nullopt;
    std::vector<std::string> fileFolders = {};
};

inline std::vector<const char*> pointers(const std::vector<std::string>& texts) {
    std::vector<const char*> result;
    for (const std::string& text : texts) result.push_back(text.c_str());
    return result;
}

// An open set of rules; `opened` says what KorvMaskOpen has returned. With rules of nullopt they
// are read from the file.
class Mask {
  public:
    explicit Mask(const std::optional<std::string>& rules, const Setting& setting = Setting()) {
        const std::vector<const char*> columns = pointers(setting.columns);
        const std::vector<const char*> folders = pointers(setting.folders);
        const std::vector<const char*> fileFolders = pointers(setting.fileFolders);
        KorvMaskSettings settings = {};
        settings.size = sizeof settings;
        settings.flags = setting.flags;
        settings.columnCount = static_cast<uint32_t>(columns.size());
        settings.columns = columns.data();
        settings.rules = rules ? rules->c_str() : nullptr;
        settings.rulesFile = setting.rulesFile ? setting.rulesFile->c_str() : nullptr;
        settings.folders = folders.data();
        settings.folderCount = static_cast<uint32_t>(folders.size());
        std::vector<KorvMaskSecret> secrets;
        for (const auto& [name, text] : setting.secrets) {
            const auto* const bytes = reinterpret_cast<const uint8_t*>(text.data());
            secrets.push_back({name.c_str(), bytes, static_cast<uint32_t>(text.size())});
        }
        settings.secrets = secrets.data();
        settings.secretCount = static_cast<uint32_t>(secrets.size());
        settings.secretsFile = setting.secretsFile ? setting.secretsFile->c_str() : nullptr;
        settings.fileFolders = fileFolders.data();
        settings.fileFolderCount = static_cast<uint32_t>(fileFolders.size());
        opened = KorvMaskOpen(&settings, &handle);
    }
    ~Mask() { KorvMaskClose(handle); }
    Mask(const Mask&) = delete;
    Mask& operator=(const Mask&) = delete;

    // Masks values as they are and compares the layout of the result with the interface. Nothing is
    // returned when the call has ended early. The source is gone before the result is read, except
    // for a column that is kept, whose result is the source.
    Values batch(const Values& values, uint32_t column = 0, uint64_t firstRow = 1,
                 const Values* related = nullptr, uint32_t offsetBits = 32) {
        Values kept;
        {
            const Batch source(values, offsetBits);
            std::optional<Batch> other;
            if (related != nullptr) other.emplace(*related, offsetBits);
            result = nullptr;
            status = KorvMaskBatch(handle, column, firstRow, source,
                                   other ? *other : static_cast<const KorvMaskStrings*>(nullptr),
                                   &result);
            EXPECT_TRUE(source.intact());
            EXPECT_EQ(values, unpack(*static_cast<const KorvMaskStrings*>(source)));
            if (result == nullptr) {
                EXPECT_NE(KORV_MASK_SUCCESS, status);
                EXPECT_NE(KORV_MASK_VALUES_FAILED, status);
                return {};
            }
            EXPECT_EQ(values.size(), result->strings.count);
            EXPECT_EQ(offsetBits, result->strings.offsetBits);
            if (KorvMaskGetColumn(handle, column)->action == KORV_MASK_KEEP) {
                return unpack(result->strings);
            }
        }
        EXPECT_TRUE(status == KORV_MASK_SUCCESS || status == KORV_MASK_VALUES_FAILED) << status;
        EXPECT_EQ(0u, result->strings.first);
        return unpack(result->strings);
    }

    // The states of the last batch's values: M, N, F and D.
    std::string states() const {
        std::string text;
        if (result == nullptr) return "no result";
        for (uint64_t i = 0; i < result->strings.count; ++i) text += "MNFD?"[result->states[i]];
        return text;
    }

    std::vector<const KorvMaskRecord*> records() const {
        std::vector<const KorvMaskRecord*> list;
        for (uint64_t i = 0; i < KorvMaskRecordCount(handle); ++i) {
            list.push_back(KorvMaskGetRecord(handle, i));
        }
        return list;
    }
    std::vector<std::string> messages() const {
        std::vector<std::string> list;
        for (const KorvMaskRecord* record : records()) list.emplace_back(record->message);
        return list;
    }
    // All messages, each on a line.
    std::string text() const {
        std::string text;
        for (const std::string& message : messages()) text += message + "\n";
        return text;
    }
    // Codes of the records, in their order.
    std::vector<uint32_t> codes() const {
        std::vector<uint32_t> list;
        for (const KorvMaskRecord* record : records()) list.push_back(record->code);
        return list;
    }

    KorvMask* handle = nullptr;
    int32_t opened = -1;
    int32_t status = -1;
    const KorvMaskResult* result = nullptr;
};

inline bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// Every test of the engine looks for blocks of the support library that were not freed.
class EngineTest : public HeapTest {};
