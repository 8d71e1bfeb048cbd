// Shuffling, and a cache that forgets the table that was not used for the longest time.
#include "providers/crypto/shuffled_table.h"

#include <compare>
#include <list>
#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "providers/crypto/aes.h"

namespace crypto {

namespace {

struct TableName {
    Digest key;
    uint32_t size;
    Direction direction;
    std::string tweak;
    auto operator<=>(const TableName&) const = default;
};

class Cache {
  public:
    std::shared_ptr<const ShuffledTable> find(const TableName& name) {
        const auto found = entries_.find(name);
        if (found == entries_.end()) return nullptr;
        recent_.splice(recent_.begin(), recent_, found->second.place);
        return found->second.table;
    }

    void add(const TableName& name, std::shared_ptr<const ShuffledTable> table) {
        const auto [entry, isNew] = entries_.try_emplace(name);
        if (!isNew) return;
        try {
            recent_.push_front(&entry->first);
        } catch (...) {
            entries_.erase(entry);
            throw;
        }
        entry->second = {std::move(table), recent_.begin()};
        bytes_ += bytesOf(name);
        while (bytes_ > ShuffledTables::kCacheBytes && recent_.size() > 1) {
            const auto oldest = entries_.find(*recent_.back());
            bytes_ -= bytesOf(oldest->first);
            recent_.pop_back();
            entries_.erase(oldest);
        }
    }

  private:
    // A table has pages of its own, and its name takes room, too.
    static size_t bytesOf(const TableName& name) {
        constexpr size_t kPage = 4096;
        constexpr size_t kName = 256;
        return (name.size * sizeof(uint32_t) + kPage - 1) / kPage * kPage + name.tweak.size() +
               kName;
    }

    struct Entry {
        std::shared_ptr<const ShuffledTable> table;
        std::list<const TableName*>::iterator place;
    };
    std::map<TableName, Entry> entries_;
    std::list<const TableName*> recent_;  // the table used last comes first
    size_t bytes_ = 0;
};

}  // namespace

ShuffledTable::ShuffledTable(const Digest& key, uint32_t size, Direction direction)
    : places_(reinterpret_cast<uint32_t*>(memory_.allocate(size * sizeof(uint32_t)))) {
    RandomNumbers random(key);
    for (uint32_t i = 0; i < size; ++i) places_[i] = i;
    for (uint32_t i = size - 1; i > 0; --i) std::swap(places_[i], places_[random.below(i + 1)]);
    if (direction == Direction::encrypt) return;
    secrets::SecretPages other;
    auto* const back = reinterpret_cast<uint32_t*>(other.allocate(size * sizeof(uint32_t)));
    for (uint32_t i = 0; i < size; ++i) back[places_[i]] = i;
    std::copy(back, back + size, places_);
}

ShuffledTables::ShuffledTables(std::span<const uint8_t> key)
    : hash_(key), name_(hash_.of("korv/cache")) {}

std::shared_ptr<const ShuffledTable> ShuffledTables::find(uint32_t size, std::string_view tweak,
                                                          Direction direction) const {
    static std::mutex mutex;
    static Cache cache;
    const TableName name = {name_, size, direction, std::string(tweak)};
    {
        const std::lock_guard lock(mutex);
        if (auto known = cache.find(name)) return known;
    }
    // Made without the lock: several threads may make the same table, and none of them waits.
    const char zero = '\0';
    Digest key = hash_.of("korv/table" + (zero + std::to_string(size)) + zero + name.tweak);
    auto table = std::make_shared<const ShuffledTable>(key, size, direction);
    secrets::wipe(key.data(), key.size());
    const std::lock_guard lock(mutex);
    cache.add(name, table);
    return table;
}

}  // namespace crypto
