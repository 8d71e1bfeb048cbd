// Calls of open, watched.
#include "opening.h"

#include "mask/text/utf8_text.h"
#include "watched_heap.h"

namespace kit {

Operands::Operands(const SvcDefX& service) : service_(service) {
    for (const OprDefX* operand = service.oprDefs; operand != nullptr; operand = operand->link) {
        operands_.push_back(*operand);
    }
}

void Operands::setText(OprDefX& operand, const std::wstring& text) {
    std::wstring& wide = wide_.emplace_back(text);
    std::string& narrow = narrow_.emplace_back(text::toUtf8(text));
    operand.wideValue = wide.data();
    operand.wideValueLen = static_cast<uint32_t>((wide.size() + 1) * sizeof(wchar_t));
    const bool isNarrow = operand.valueKind == OPR_VALUE_NARROW;
    operand.narrowValue = isNarrow ? narrow.data() : nullptr;
    operand.narrowValueLen = isNarrow ? static_cast<uint32_t>(narrow.size() + 1) : 0;
}

const SvcDefX* Operands::linked() {
    for (size_t i = 0; i < operands_.size(); ++i) {
        operands_[i].link = i + 1 < operands_.size() ? &operands_[i + 1] : nullptr;
    }
    service_.oprDefs = operands_.empty() ? nullptr : operands_.data();
    return &service_;
}

Opening openOnce(Session& session, const PrvCall& call) {
    Opening opening;
    void* state = nullptr;
    try {
        const heap::Inside inside;
        opening.status = session.entry().open(&call, &state);
        if (opening.status == 0) session.entry().close(state);
    } catch (...) {
        opening.status = KORV_FAILURE;
        opening.threw = true;
    }
    if (session.request().hasErrors()) session.takeErrors(opening.errors, opening.messages);
    return opening;
}

std::string openingFault(Session& session, PrvCall call, Operands& operands) {
    call.service = operands.linked();
    // What is kept once, such as a cache, is no leak.
    constexpr int kBefore = 3;
    constexpr int kTimes = 8;
    size_t blocks = 0;
    for (int i = 0; i < kBefore + kTimes; ++i) {
        const Opening opening = openOnce(session, call);
        if (opening.threw) return "open throws an exception";
        const std::string fault = recordsFault(session.entry(), opening.status, opening.errors);
        if (!fault.empty()) return "open " + fault;
        if (i == kBefore - 1) blocks = heap::liveBlocks();
    }
    if (heap::liveBlocks() < blocks + kTimes) return {};
    return "open, with close when it succeeds, keeps memory each time";
}

}  // namespace kit
