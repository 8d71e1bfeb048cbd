// The records of what went wrong, in the form that callers see.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "korv/mask.h"
#include "mask_error.h"

namespace mask {

struct Token {
    uint32_t id;
    std::string name;
    std::string text;
};

// Where a record comes from: the value at hand.
struct Place {
    uint64_t row = KORV_MASK_NO_ROW;
    uint32_t column = KORV_MASK_NO_COLUMN;
    uint32_t rulesLine = 0;
};

class Records {
  public:
    Records() = default;
    Records(const Records&) = delete;
    Records& operator=(const Records&) = delete;

    void add(const Fault& fault);
    void add(int32_t status, std::string message);
    void add(const Place& place, uint32_t code, bool isFirst, const std::string& provider,
             std::string message, std::vector<Token> tokens = {});

    size_t size() const { return items_.size(); }
    const KorvMaskRecord& operator[](size_t index) const { return items_[index].record; }
    void clear() { items_.clear(); }

  private:
    struct Item {
        KorvMaskRecord record;
        std::string message;
        std::string provider;
        std::vector<Token> texts;
        std::vector<KorvMaskToken> tokens;
    };
    void publish(Item& item);

    std::deque<Item> items_;  // addresses stay: the records point into their items
};

}  // namespace mask
