// HASH: a pick from a list, the same for the same seed and value, whatever the value's case.
#include "providers/provider_support.h"
#include "providers/text_lines.h"
#include "text/utf8_text.h"

namespace {

using provider::Error;
using provider::Replacement;
using provider::Text;

enum OperandCode : uint16_t { kSeed = 1, kFile, kList };
constexpr PrvOperand kOperands[] = {
    {"SEED", kSeed, PRV_OPERAND_REQUIRED, OPR_VALUE_NARROW, 0, 0},
    {"FILE", kFile, PRV_OPERAND_PATH, OPR_VALUE_NARROW, 0, 0},
    {"LIST", kList, 0, OPR_VALUE_WIDE, 0, 0},
};

enum ErrorCode : uint32_t { kShortSeed = 1, kNoList, kBadList };
constexpr PrvErrorText kErrors[] = {
    {kShortSeed, "the seed is too short"},
    {kNoList, "either a file or a list is needed"},
    {kBadList, "not a list of elements between semicolons"},
    MASK_CSV_COMMON_ERRORS,
};

constexpr size_t kShortestSeed = 4;

// FNV-1a, 64 bits, over the bytes of each character.
uint64_t hash(uint64_t state, uint32_t character) {
    for (int shift = 0; shift < 32; shift += 8) {
        state = (state ^ (character >> shift & 0xFF)) * 0x100000001B3u;
    }
    return state;
}

class Hash {
  public:
    explicit Hash(const provider::Operands& operands) {
        const std::wstring seed = operands.wide(kSeed);
        if (seed.size() < kShortestSeed) {
            throw Error(kShortSeed, {{KORV_TOKID_HASHSEED_LEN, static_cast<int32_t>(seed.size())}});
        }
        for (const wchar_t c : seed) seeded_ = hash(seeded_, static_cast<uint32_t>(c));
        if (operands.has(kFile) == operands.has(kList)) {
            throw Error(kNoList, {{KORV_TOKID_OPERAND_LIST, L"FILE, LIST"}});
        }
        if (operands.has(kList)) {
            readList(operands.wide(kList));
        } else {
            for (const provider::Line& line : provider::readLines(operands.wide(kFile))) {
                choices_.emplace_back(text::toWide(line.text));
            }
        }
    }

    template <typename Char>
    void mask(Text<Char>& text) const {
        provider::WideBuffer buffer;
        uint64_t state = seeded_;
        for (const wchar_t* p = upper(text, buffer); *p != 0; ++p) {
            state = hash(state, static_cast<uint32_t>(*p));
        }
        state ^= state >> 32;
        choices_[static_cast<uint32_t>(state) % choices_.size()].putInto(text);
    }

  private:
    static const wchar_t* upper(Text<wchar_t>& text, provider::WideBuffer&) {
        return KORV_StrToWUpper(text.data);
    }
    static const wchar_t* upper(Text<char>& text, provider::WideBuffer& buffer) {
        for (char& c : text) c = static_cast<char>(toportwupper(c));
        return provider::widen(text, buffer);
    }

    void readList(const std::wstring& list) {
        std::wstring element(list.size() + 1, L'\0');
        int32_t at = 0;
        while (at != -1) {
            uint32_t length = 0;
            at = KORV_GetNextElement(list.c_str(), element.data(), &length, L';', 0,
                                     static_cast<uint32_t>(at));
            std::wstring choice = element.substr(0, length);
            const bool quoted = length >= 2 && choice.front() == L'"' && choice.back() == L'"';
            if (quoted) choice = choice.substr(1, length - 2);
            if (at < -1 || choice.empty()) {
                throw Error(kBadList,
                            {{KORV_TOKID_PARMKEY, L"LIST"}, {KORV_TOKID_PARMVALUE, list}});
            }
            choices_.emplace_back(choice);
        }
    }

    uint64_t seeded_ = 0xCBF29CE484222325u;
    std::vector<Replacement> choices_;
};

}  // namespace

MASK_CSV_PROVIDER("HASH", Hash, kOperands, kErrors)
