// Level 3: open, also with operands that the engine would refuse.
#include <algorithm>
#include <cstring>

#include "checks.h"
#include "mask/mask_error.h"
#include "opening.h"
#include "watched_heap.h"

namespace kit {

namespace {

// A test of open with changed operands.
struct OpenTrial {
    explicit OpenTrial(const Context& context)
        : session(*context.module, context.settings), call(session.request().call(false)) {}

    Operands operands() const { return Operands(*call.service); }
    // The provider's description of an operand; nullptr for a code that it does not have.
    const PrvOperand* describe(uint16_t code) const {
        const PrvEntry& entry = session.entry();
        const PrvOperand* const end = entry.operands + entry.operandCount;
        const PrvOperand* const found =
            std::find_if(entry.operands, end,
                         [code](const PrvOperand& operand) { return operand.code == code; });
        return found == end ? nullptr : found;
    }
    void open(Operands&& operands, const std::string& what) { open(call, operands, what); }
    void open(Operands& operands, const std::string& what) { open(call, operands, what); }
    void open(const PrvCall& changed, Operands& operands, const std::string& what) {
        doing("opening the rule ", what.c_str());
        const std::string fault = openingFault(session, changed, operands);
        if (!fault.empty()) findings.add(what + ": " + fault);
    }

    // Each operand of the provider in turn, those that the rule does not have included, with all
    // others as in the rule. `change` gets the operand.
    template <class Change>
    void forEachOperand(int32_t kind, Change change) {
        const PrvEntry& entry = session.entry();
        for (uint32_t i = 0; i < entry.operandCount; ++i) {
            const PrvOperand& description = entry.operands[i];
            if (kind >= 0 && description.kind != kind) continue;
            Operands changed = operands();
            auto& list = changed.list();
            auto at = std::find_if(list.begin(), list.end(), [&](const OprDefX& operand) {
                return operand.oprCode == description.code;
            });
            if (at == list.end()) {
                OprDefX added = {};
                added.oprCode = description.code;
                added.valueKind = description.kind;
                list.push_back(added);
                at = list.end() - 1;
            }
            change(description, changed, *at);
        }
    }

    Session session;
    const PrvCall& call;
    Findings findings;
};

void ruleOpens(const Context& context) {
    doing("opening the rule");
    try {
        Session session(*context.module, context.settings);
    } catch (const mask::MaskError& error) {
        finding(error.what());
    }
}

void operandMissing(const Context& context) {
    OpenTrial trial(context);
    const size_t count = trial.operands().list().size();
    for (size_t i = 0; i < count; ++i) {
        Operands changed = trial.operands();
        const PrvOperand* const description = trial.describe(changed.list()[i].oprCode);
        changed.list().erase(changed.list().begin() + static_cast<ptrdiff_t>(i));
        const std::string key = description == nullptr ? "?" : description->key;
        trial.open(std::move(changed), "without the operand " + key);
    }
    Operands none = trial.operands();
    none.list().clear();
    trial.open(std::move(none), "without operands");
}

void openWithNumbers(const Context& context, bool beyond) {
    OpenTrial trial(context);
    trial.forEachOperand(OPR_VALUE_INTEGER, [&](const PrvOperand& description, Operands& operands,
                                                OprDefX& operand) {
        std::vector<int64_t> numbers = {description.minimum, description.maximum};
        if (beyond) {
            numbers = {int64_t{description.minimum} - 1,
                       int64_t{description.maximum} + 1,
                       INT32_MIN,
                       INT32_MAX,
                       -1,
                       1000000000};
        }
        for (const int64_t number : numbers) {
            const bool isInside = number >= description.minimum && number <= description.maximum;
            if (number < INT32_MIN || number > INT32_MAX || isInside == beyond) continue;
            operand.intValue = static_cast<uint32_t>(number);
            trial.open(operands,
                       "with " + std::string(description.key) + "=" + std::to_string(number));
        }
    });
}

void operandBoundsUsed(const Context& context) {
    openWithNumbers(context, false);
}

void operandBeyondBounds(const Context& context) {
    openWithNumbers(context, true);
}

void operandUnknown(const Context& context) {
    OpenTrial trial(context);
    for (const uint32_t code : {0u, 77u, 9999u, 65535u}) {
        if (trial.describe(static_cast<uint16_t>(code)) != nullptr) continue;
        for (const int32_t kind : {OPR_VALUE_NONE, OPR_VALUE_INTEGER, OPR_VALUE_WIDE}) {
            for (const bool isFirst : {true, false}) {
                Operands changed = trial.operands();
                OprDefX unknown = {};
                unknown.oprCode = static_cast<uint16_t>(code);
                unknown.valueKind = kind;
                if (kind == OPR_VALUE_WIDE) changed.setText(unknown, L"text");
                auto& list = changed.list();
                list.insert(isFirst ? list.begin() : list.end(), unknown);
                trial.open(std::move(changed),
                           "with an operand of the unknown code " + std::to_string(code));
            }
        }
    }
}

void operandRepeated(const Context& context) {
    OpenTrial trial(context);
    const size_t count = trial.operands().list().size();
    for (size_t i = 0; i < count; ++i) {
        Operands changed = trial.operands();
        auto& list = changed.list();
        const PrvOperand* const description = trial.describe(list[i].oprCode);
        for (int times = 0; times < 3; ++times) {
            const OprDefX again = list[i];
            list.insert(list.begin(), again);
        }
        const std::string key = description == nullptr ? "?" : description->key;
        trial.open(std::move(changed), "with the operand " + key + " four times");
    }
}

void operandWrongKind(const Context& context) {
    OpenTrial trial(context);
    trial.forEachOperand(
        -1, [&](const PrvOperand& description, Operands& operands, OprDefX& operand) {
            for (int32_t kind = OPR_VALUE_NONE; kind <= OPR_VALUE_NARROW + 1; ++kind) {
                if (kind == description.kind) continue;
                const OprDefX before = operand;
                operand.valueKind = kind;
                operand.intValue = kind == OPR_VALUE_INTEGER ? 7 : 0;
                operand.wideValue = nullptr;
                operand.narrowValue = nullptr;
                operand.wideValueLen = operand.narrowValueLen = 0;
                if (kind == OPR_VALUE_WIDE || kind == OPR_VALUE_NARROW) {
                    operands.setText(operand, L"text");
                }
                trial.open(operands, "with the operand " + std::string(description.key) +
                                         " of kind " + std::to_string(kind));
                operand = before;
            }
        });
}

void operandOddText(const Context& context) {
    OpenTrial trial(context);
    trial.forEachOperand(
        -1, [&](const PrvOperand& description, Operands& operands, OprDefX& operand) {
            if (description.kind != OPR_VALUE_WIDE && description.kind != OPR_VALUE_NARROW) return;
            const std::string key = "with the operand " + std::string(description.key);
            const std::wstring beyond = {static_cast<wchar_t>(0x1F600), static_cast<wchar_t>(0xE9)};
            const std::pair<const char*, std::wstring> texts[] = {
                {" with an empty text", L""},
                {" with one character", L"x"},
                {" with a text of 100,000 characters", std::wstring(100000, L'a')},
                {" with a text that is not ASCII", beyond},
                {" with a text of delimiters", L";;;===\"\"\\|,,"},
            };
            for (const auto& [what, text] : texts) {
                operands.setText(operand, text);
                trial.open(operands, key + what);
            }
            operand.wideValue = nullptr;
            operand.narrowValue = nullptr;
            operand.wideValueLen = operand.narrowValueLen = 0;
            trial.open(operands, key + " with NULL for its text");
        });
}

void keyAndMethod(const Context& context) {
    OpenTrial trial(context);
    static const uint8_t key[64] = {1, 2, 3};
    const auto open = [&](const uint8_t* bytes, uint32_t length, const char* method,
                          const std::string& what) {
        PrvCall changed = trial.call;
        changed.key = bytes;
        changed.keyLength = length;
        changed.method = method;
        Operands operands = trial.operands();
        trial.open(changed, operands, what);
    };
    std::vector<const char*> methods = {trial.call.method, nullptr, "no-such-method", ""};
    const PrvEntry& entry = trial.session.entry();
    if (trial.session.module().isVersion3()) {
        for (uint32_t i = 0; i < entry.methodCount; ++i) methods.push_back(entry.methods[i].name);
    }
    for (const char* method : methods) {
        const std::string name =
            method == nullptr ? "no method" : "the method '" + std::string(method) + "'";
        open(nullptr, 0, method, "with " + name + " and no key");
        open(key, 16, method, "with " + name + " and a key of 16 bytes");
        open(key, 32, method, "with " + name + " and a key");
    }
}

void openLeak(const Context& context) {
    OpenTrial trial(context);
    constexpr int kTimes = 100;
    doing("opening and closing the rule again and again");
    for (int i = 0; i < 10; ++i) openOnce(trial.session, trial.call);
    const size_t blocks = heap::liveBlocks();
    for (int i = 0; i < kTimes; ++i) openOnce(trial.session, trial.call);
    if (heap::liveBlocks() >= blocks + kTimes / 2) {
        finding("opening and closing " + std::to_string(kTimes) + " times keeps " +
                std::to_string(heap::liveBlocks() - blocks) + " blocks of memory");
    }
}

void openWithFailures(const Context& context, bool andLater) {
    constexpr unsigned kMostFailures = 3000;
    OpenTrial trial(context);
    const PrvCall& call = trial.call;
    // The first calls may fill caches.
    for (int i = 0; i < 3; ++i) openOnce(trial.session, call);
    heap::failAt(0);
    const Opening plain = openOnce(trial.session, call);
    const unsigned count = std::min(heap::allocations(), kMostFailures);
    for (unsigned n = 1; n <= count; ++n) {
        const std::string what = "when allocation " + std::to_string(n) +
                                 (andLater ? " and all later ones fail" : " fails");
        doing("opening the rule ", what.c_str());
        const size_t blocks = heap::liveBlocks();
        heap::failAt(n, andLater);
        const Opening opening = openOnce(trial.session, call);
        heap::failAt(0);
        if (opening.threw) trial.findings.add(what + ", open throws an exception");
        // Without memory there is no room for an error either.
        std::string fault = recordsFault(trial.session.entry(), opening.status, opening.errors);
        if (andLater && opening.errors.empty()) fault.clear();
        if (!fault.empty()) trial.findings.add(what + ", open " + fault);
        if (heap::liveBlocks() <= blocks) continue;
        // What is kept a limited number of times, such as the errors of libcrypto, is no leak.
        constexpr size_t kTimes = 20;
        const auto repeat = [&] {
            for (size_t i = 0; i < kTimes; ++i) {
                heap::failAt(n, andLater);
                openOnce(trial.session, call);
                heap::failAt(0);
            }
            return heap::liveBlocks();
        };
        const size_t before = repeat();
        if (repeat() >= before + kTimes) trial.findings.add(what + ", open keeps memory");
    }
    doing("opening the rule after failures");
    const Opening again = openOnce(trial.session, call);
    if (again.status != plain.status) {
        finding("after failures of allocations, the rule is refused");
    }
}

void openEachAllocation(const Context& context) {
    openWithFailures(context, false);
}

void openAllAllocations(const Context& context) {
    openWithFailures(context, true);
}

}  // namespace

std::vector<NamedTest> openTests() {
    return {{"rule-opens", ruleOpens},
            {"operand-missing", operandMissing},
            {"operand-bounds-used", operandBoundsUsed},
            {"operand-beyond-bounds", operandBeyondBounds},
            {"operand-unknown", operandUnknown},
            {"operand-repeated", operandRepeated},
            {"operand-wrong-kind", operandWrongKind},
            {"operand-odd-text", operandOddText},
            {"key-and-method", keyAndMethod},
            {"open-leak", openLeak},
            {"open-each-allocation", openEachAllocation},
            {"open-all-allocations", openAllAllocations}};
}

}  // namespace kit
