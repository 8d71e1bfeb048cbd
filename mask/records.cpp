// Keeping of records with their texts.
#include "records.h"

#include <utility>

namespace mask {

void Records::publish(Item& item) {
    for (const Token& token : item.texts) {
        item.tokens.push_back({token.id, token.name.c_str(), token.text.c_str()});
    }
    item.record.message = item.message.c_str();
    item.record.provider = item.provider.empty() ? nullptr : item.provider.c_str();
    item.record.tokens = item.tokens.data();
    item.record.tokenCount = static_cast<uint32_t>(item.tokens.size());
}

void Records::add(const Fault& fault) {
    Item& item = items_.emplace_back();
    item.record.status = fault.status;
    item.record.row = KORV_MASK_NO_ROW;
    item.record.column = KORV_MASK_NO_COLUMN;
    item.record.rulesLine = fault.line;
    item.record.rulesPosition = fault.position;
    item.message = fault.message;
    publish(item);
}

void Records::add(int32_t status, std::string message) {
    add(Fault{status, 0, 0, std::move(message)});
}

void Records::add(const Place& place, uint32_t code, bool isFirst, const std::string& provider,
                  std::string message, std::vector<Token> tokens) {
    Item& item = items_.emplace_back();
    item.record.status = KORV_MASK_VALUES_FAILED;
    item.record.code = code;
    item.record.row = place.row;
    item.record.column = place.column;
    item.record.isFirst = isFirst ? 1 : 0;
    item.record.rulesLine = place.rulesLine;
    item.message = std::move(message);
    item.provider = provider;
    item.texts = std::move(tokens);
    publish(item);
}

}  // namespace mask
