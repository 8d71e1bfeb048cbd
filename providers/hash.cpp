// HASH: a pick from a list, the same for the same value, whose case makes no difference.
//   pick  by a keyed hash
//   seed  by a hash of the seed, whose case makes no difference, and the value; a disguise
#include <memory>
#include <optional>

#include "providers/crypto/bytes.h"
#include "providers/crypto/keyed_hash.h"
#include "providers/fnv.h"
#include "providers/provider_support.h"
#include "providers/shared_table.h"
#include "providers/text_lines.h"

namespace {

using provider::Error;
using provider::Replacement;
using provider::Text;

constexpr PrvMethod kMethods[] = {{"pick", PRV_METHOD_KEYED}, {"seed", 0}};

enum OperandCode : uint16_t { kSeed = 1, kFile, kList };
constexpr PrvOperand kOperands[] = {
    {"SEED", kSeed, 0, OPR_VALUE_NARROW, 0, 0},
    {"FILE", kFile, PRV_OPERAND_PATH, OPR_VALUE_NARROW, 0, 0},
    {"LIST", kList, 0, OPR_VALUE_WIDE, 0, 0},
};

enum ErrorCode : uint32_t { kShortSeed = 1, kNoList, kBadList };
constexpr PrvErrorText kErrors[] = {
    {kShortSeed, "the seed is too short"},
    {kNoList, "either a file or a list is needed"},
    {kBadList, "the list must have elements that are separated by semicolons"},
    KORV_COMMON_ERRORS,
};

constexpr size_t kShortestSeed = 4;

// What is picked from.
struct Choices {
    Choices() = default;
    // The lines of a file.
    explicit Choices(const std::wstring& path) {
        provider::readLines(path,
                            [this](const std::string& line, int32_t) { texts.emplace_back(line); });
    }

    std::vector<Replacement> texts;
};

// An element as it is written: KORV_GetNextElement has measured it, but gives it in capitals.
// Blanks before it and backslashes that escape are not part of it.
std::wstring elementAt(const std::wstring& list, size_t first, size_t length) {
    std::wstring element;
    bool escaped = false;
    for (size_t i = list.find_first_not_of(L' ', first); element.size() < length; ++i) {
        escaped = list[i] == L'\\' && !escaped;
        if (!escaped) element += list[i];
    }
    return element;
}

std::shared_ptr<const Choices> parseList(const std::wstring& list) {
    const auto choices = std::make_shared<Choices>();
    std::wstring output(list.size() + 1, L'\0');
    int32_t next = 0;
    while (next != -1) {
        const auto first = static_cast<uint32_t>(next);
        uint32_t length = 0;
        next = KORV_GetNextElement(list.c_str(), output.data(), &length, L';', 0, first);
        std::wstring choice = next < -1 ? L"" : elementAt(list, first, length);
        const bool quoted = length >= 2 && choice.front() == L'"' && choice.back() == L'"';
        if (quoted) choice = choice.substr(1, length - 2);
        if (choice.empty()) {
            throw Error(kBadList, {{KORV_TOKID_PARMKEY, L"LIST"}, {KORV_TOKID_PARMVALUE, list}});
        }
        choices->texts.emplace_back(std::move(choice));
    }
    return choices;
}

class Hash {
  public:
    static constexpr const char* kSampleRules[] = {
        "HASH, secret=test, list=Red;Green;Blue",
        "HASH, method=seed, seed=autumn, list=Red;Green;Blue",
        "HASH, method=seed, seed=winter, \"list=Ada;Grace;Édith;\\\"Smith; Jones\\\"\"",
    };

    explicit Hash(const provider::Operands& operands) {
        if (operands.isMethod("pick")) {
            operands.refuse(kSeed, L"SEED");
            keyed_.emplace(provider::keyOf(operands));
        } else {
            operands.require(kSeed, L"SEED");
            takeSeed(operands.wide(kSeed));
        }
        if (operands.has(kFile) == operands.has(kList)) {
            throw Error(kNoList, {{KORV_TOKID_OPERAND_LIST, L"FILE, LIST"}});
        }
        choices_ = operands.has(kList) ? parseList(operands.wide(kList))
                                       : provider::sharedTable<Choices>(operands.wide(kFile));
    }

    template <class Char>
    void mask(Text<Char>& text) const {
        provider::upper(text);
        const auto count = static_cast<uint32_t>(choices_->texts.size());
        uint32_t picked = 0;
        if (keyed_) {
            std::string work;
            picked = crypto::pick(keyed_->fractionOf(provider::utf8Of(text.view(), work)), count);
        } else {
            uint64_t state = seeded_;
            for (const Char c : text) state = provider::fnv(state, static_cast<uint32_t>(c));
            state ^= state >> 32;
            picked = static_cast<uint32_t>(state) % count;
        }
        text.replaceFrom(0, choices_->texts[picked].of(text));
    }

  private:
    void takeSeed(std::wstring seed) {
        if (seed.size() < kShortestSeed) {
            throw Error(kShortSeed, {{KORV_TOKID_HASHSEED_LEN, static_cast<int32_t>(seed.size())}});
        }
        KORV_StrToWUpper(seed.data());
        for (const wchar_t c : seed) seeded_ = provider::fnv(seeded_, static_cast<uint32_t>(c));
    }

    std::optional<crypto::KeyedHash> keyed_;
    uint64_t seeded_ = provider::kFnvStart;
    std::shared_ptr<const Choices> choices_;
};

}  // namespace

KORV_PROVIDER("HASH", Hash, kMethods, kOperands, kErrors)
