// EML: e-mail addresses.
//   pseudonym  the user part becomes a keyed hash of the address, and so does the domain, unless it
//              is kept or replaced
//   ff1        the letters and digits of the user part are encrypted; the domain stays
//   transpose  the user part is masked after a prefix that stays, the domain stays or is replaced,
//              and the case of letters is normalised; a disguise
#include <algorithm>
#include <array>
#include <optional>

#include "providers/crypto/keyed_hash.h"
#include "providers/numerals.h"

#include "providers/provider_support.h"

namespace {

using provider::Error;
using provider::NumeralRange;
using provider::Replacement;
using provider::Text;

constexpr PrvMethod kMethods[] = {
    {"pseudonym", PRV_METHOD_KEYED}, {"ff1", PRV_METHOD_KEYED}, {"transpose", 0}};

enum OperandCode : uint16_t { kKey = 1, kPrefix, kDomain, kCase, kLength };
constexpr PrvOperand kOperands[] = {
    {"KEY", kKey, 0, OPR_VALUE_INTEGER, 0, 999999999},
    {"PREFIX", kPrefix, 0, OPR_VALUE_INTEGER, 0, 64},
    {"DOMAIN", kDomain, 0, OPR_VALUE_NARROW, 0, 0},
    {"CASE", kCase, 0, OPR_VALUE_NARROW, 0, 0},
    {"LENGTH", kLength, 0, OPR_VALUE_INTEGER, 13, 51},
};

enum ErrorCode : uint32_t {
    kNoAt = 1,
    kTwoAts,
    kNoUser,
    kNoDomain,
    kShortUser,
    kBadOperand,
    kBadCharacter,
    kNothingToMask
};
constexpr PrvErrorText kErrors[] = {
    {kNoAt, "the address has no @"},
    {kTwoAts, "the address has more than one @"},
    {kNoUser, "nothing before the @"},
    {kNoDomain, "nothing after the @"},
    {kShortUser, "the user part has nothing to mask after the prefix that is kept"},
    {kBadOperand, "the operand cannot have this value"},
    {kBadCharacter, "a letter or digit in the user part that is not ASCII"},
    {kNothingToMask, "the user part has no letter and no digit"},
    KORV_COMMON_ERRORS,
};

enum class Case { lower, upper, keep };

Case caseOf(const provider::Operands& operands) {
    if (!operands.has(kCase)) return Case::lower;
    const std::wstring name = operands.wide(kCase);
    if (provider::isWord(name, L"LOWER")) return Case::lower;
    if (provider::isWord(name, L"UPPER")) return Case::upper;
    if (provider::isWord(name, L"KEEP")) return Case::keep;
    throw Error(kBadOperand, {{KORV_TOKID_PARMKEY, L"CASE"}, {KORV_TOKID_PARMVALUE, name}});
}

// How the characters of one position change.
struct Step {
    Step(uint32_t key, int32_t position)
        : any(provider::mix(key, static_cast<uint32_t>(position))),
          digit(static_cast<uint8_t>(1 + any % 9)),
          letter(static_cast<uint8_t>(1 + any % 25)) {}

    uint32_t any;
    uint8_t digit;
    uint8_t letter;
};

// The characters before the @. There must be one @, with text on both sides.
template <class Char>
int32_t userLength(const Text<Char>& text) {
    const std::basic_string_view<Char> address = text.view();
    const size_t at = address.find('@');
    if (at == address.npos) throw Error(kNoAt, {{KORV_TOKID_SRCLEN, text.length}});
    const size_t another = address.find('@', at + 1);
    if (another != address.npos) {
        throw Error(kTwoAts, {{KORV_TOKID_CHAR_POS, static_cast<int32_t>(another) + 1}});
    }
    if (at == 0) throw Error(kNoUser, {{KORV_TOKID_USERPRFX_LEN, 0}});
    if (at + 1 == address.size()) throw Error(kNoDomain, {{KORV_TOKID_DOMAIN_LEN, 0}});
    return static_cast<int32_t>(at);
}

// What the operand `domain` asks for.
struct Domain {
    enum Kind { keep, mask, name } kind;
    std::optional<Replacement> text;  // of a name
};

// A name in the case of `letterCase`, or one of the words that are allowed.
Domain domainOf(const provider::Operands& operands, Case letterCase, bool isPseudonym) {
    if (!operands.has(kDomain)) return {isPseudonym ? Domain::mask : Domain::keep, {}};
    std::wstring domain = operands.wide(kDomain);
    if (provider::isWord(domain, L"KEEP")) return {Domain::keep, {}};
    if (isPseudonym && provider::isWord(domain, L"MASK")) return {Domain::mask, {}};
    for (const wchar_t c : domain) {
        if (c <= ' ' || c > '~' || c == '@') {
            throw Error(kBadOperand,
                        {{KORV_TOKID_PARMKEY, L"DOMAIN"}, {KORV_TOKID_PARMVALUE, domain}});
        }
    }
    if (letterCase == Case::lower) KORV_StrToWLower(domain.data());
    if (letterCase == Case::upper) KORV_StrToWUpper(domain.data());
    return {Domain::name, Replacement(std::move(domain))};
}

// Hashes of addresses and of their domains as text.
class Pseudonyms {
  public:
    explicit Pseudonyms(const provider::Operands& operands)
        : hash_(provider::keyOf(operands)),
          domain_(domainOf(operands, Case::lower, true)),
          length_(operands.number(kLength, 16)) {}

    template <class Char>
    void mask(Text<Char>& text) const {
        const int32_t user = userLength(text);
        provider::lower(text);
        char masked[kLongest];
        std::string work;
        const std::string_view address = provider::utf8Of(text.view(), work);
        crypto::writeBase32(hash_.of(address), static_cast<size_t>(length_), masked);
        if (domain_.kind == Domain::mask) {
            const std::string& name = nameFor(address.substr(address.find('@')));
            replace(text, {masked, static_cast<size_t>(length_)}, name);
        } else if (domain_.kind == Domain::name) {
            replace(text, {masked, static_cast<size_t>(length_)}, domain_.text->narrow);
        } else {
            const std::basic_string<Char> kept(text.view().substr(static_cast<size_t>(user) + 1));
            replace(text, {masked, static_cast<size_t>(length_)}, kept);
        }
    }

    // 80 bits tell even a billion addresses apart.
    uint32_t promises() const {
        return PRV_PROMISE_FORMAT_KEPT | (length_ >= 16 ? PRV_PROMISE_ONE_TO_ONE : 0);
    }

  private:
    static constexpr size_t kLongest = 51;
    static constexpr size_t kDomainLength = 16;
    static constexpr std::string_view kTopLevel = ".example";

    // The domain of many addresses is one of a few.
    const std::string& nameFor(std::string_view domain) const {
        const size_t place = std::hash<std::string_view>()(domain) % known_.size();
        Known& known = known_[place];
        if (known.domain != domain) {
            known.domain.clear();
            char name[kDomainLength];
            crypto::writeBase32(hash_.of(domain), kDomainLength, name);
            known.name.assign(name, kDomainLength).append(kTopLevel);
            known.domain = domain;
        }
        return known.name;
    }

    template <class Char, class Name>
    static void replace(Text<Char>& text, std::string_view user, const Name& domain) {
        text.requireRoom(user.size() + 1 + domain.size());
        Char* p = std::copy(user.begin(), user.end(), text.data);
        *p++ = '@';
        p = std::copy(domain.begin(), domain.end(), p);
        *p = 0;
        text.length = static_cast<int32_t>(p - text.data);
    }

    struct Known {
        std::string domain;
        std::string name;
    };
    crypto::KeyedHash hash_;
    Domain domain_;
    int32_t length_;
    mutable std::array<Known, 256> known_;
};

// The disguise.
class Transposition {
  public:
    explicit Transposition(const provider::Operands& operands)
        : key_(static_cast<uint32_t>(operands.number(kKey, 0))),
          prefix_(operands.number(kPrefix, 0)),
          case_(caseOf(operands)),
          domain_(domainOf(operands, case_, false)) {
        for (int32_t i = 0; i < kKnownSteps; ++i) {
            const Step step(key_, i);
            for (int32_t c = 0; c < 128; ++c) ascii_[i][c] = other(static_cast<char>(c), step);
        }
    }

    template <class Char>
    void mask(Text<Char>& text) const {
        const int32_t user = userLength(text);
        if (user <= prefix_) {
            throw Error(kShortUser,
                        {{KORV_TOKID_USERPRFX_LEN, prefix_}, {KORV_TOKID_SRCLEN, user}});
        }
        // This comes first, so that an address has the same result in any case.
        if (case_ == Case::lower) provider::lower(text);
        if (case_ == Case::upper) provider::upper(text);
        for (int32_t i = prefix_; i < user; ++i) {
            const auto c = codeOf(text.data[i]);
            text.data[i] = i < kKnownSteps && c < 128 ? static_cast<Char>(ascii_[i][c])
                                                      : other(text.data[i], Step(key_, i));
        }
        if (domain_.kind == Domain::name) text.replaceFrom(user + 1, domain_.text->of(text));
    }

    // Another domain may make the result longer than a value may be.
    uint32_t promises() const {
        return domain_.kind == Domain::name ? 0 : PRV_PROMISE_LENGTH_KEPT | PRV_PROMISE_FORMAT_KEPT;
    }

  private:
    static constexpr int32_t kKnownSteps = 64;

    static uint32_t codeOf(char c) { return static_cast<unsigned char>(c); }
    static uint32_t codeOf(wchar_t c) { return static_cast<uint32_t>(c); }

    // Letters become letters and digits digits; any other ASCII character, such as a dot, stays.
    template <class Char>
    Char other(Char c, const Step& step) const {
        if (provider::isLetter(c)) return rotate<Char>(c >= 'a' ? 'a' : 'A', 26, c, step.letter);
        if (provider::isDigit(c)) return rotate<Char>('0', 10, c, step.digit);
        if (static_cast<int32_t>(c) < 0x80) return c;
        const Char first = case_ == Case::upper ? 'A' : 'a';
        return static_cast<Char>(first + (static_cast<uint32_t>(c) + step.any) % 26);
    }

    // Moves a character forward, by less than `count`, in a circle of `count` characters.
    template <class Char>
    static Char rotate(Char first, int32_t count, Char c, int32_t distance) {
        const int32_t moved = c - first + distance;
        return static_cast<Char>(first + (moved < count ? moved : moved - count));
    }

    uint32_t key_;
    int32_t prefix_;
    Case case_;
    Domain domain_;
    char ascii_[kKnownSteps][128];  // what the characters of the first positions become
};

class Eml {
  public:
    static constexpr const char* kSampleRules[] = {
        "EML, secret=test",
        "EML, secret=test, domain=keep, length=20",
        "EML, secret=test, domain=masked.example",
        "EML, secret=test, method=ff1",
        "EML, method=transpose, key=4711",
        "EML, method=transpose, key=4711, prefix=1, domain=masked.example",
        "EML, method=transpose, key=5, case=keep",
    };

    explicit Eml(const provider::Operands& operands) {
        if (operands.isMethod("transpose")) {
            operands.require(kKey, L"KEY");
            operands.refuse(kLength, L"LENGTH");
            transposition_.emplace(operands);
            return;
        }
        operands.refuse(kKey, L"KEY");
        operands.refuse(kPrefix, L"PREFIX");
        operands.refuse(kCase, L"CASE");
        if (operands.isMethod("pseudonym")) {
            pseudonyms_.emplace(operands);
            return;
        }
        operands.refuse(kLength, L"LENGTH");
        if (operands.has(kDomain) && !provider::isWord(operands.wide(kDomain), L"KEEP")) {
            throw Error(kBadOperand, {{KORV_TOKID_PARMKEY, L"DOMAIN"},
                                      {KORV_TOKID_PARMVALUE, operands.wide(kDomain)}});
        }
        permutation_.emplace(provider::keyOf(operands));
    }

    template <class Char>
    void mask(Text<Char>& text) const {
        pseudonyms_ ? pseudonyms_->mask(text) : transposition_->mask(text);
    }

    const crypto::Permutation* permutation() const {
        return permutation_ ? &*permutation_ : nullptr;
    }

    template <class Char>
    void prepare(Text<Char>& text, crypto::Permuted& number) const {
        const int32_t user = userLength(text);
        const NumeralRange<Char> range(text.data, text.data + user, true);
        const Char* const foreign = range.findForeign();
        if (foreign != text.data + user) {
            throw Error(kBadCharacter,
                        {{KORV_TOKID_CHAR_POS, static_cast<int32_t>(foreign - text.data) + 1},
                         {KORV_TOKID_SRCLEN, text.length}});
        }
        range.read(number);
        range.appendPattern(number.tweak);
        if (number.tweak.empty()) throw Error(kNothingToMask, {{KORV_TOKID_SRCLEN, user}});
        appendDomain(text, user, number.tweak);
    }

    template <class Char>
    void finish(Text<Char>& text, crypto::Permuted& number) const {
        NumeralRange<Char>(text.data, text.data + userLength(text), true).write(number);
    }

    uint32_t promises() const {
        if (pseudonyms_) return pseudonyms_->promises();
        if (transposition_) return transposition_->promises();
        return PRV_PROMISE_ONE_TO_ONE | PRV_PROMISE_LENGTH_KEPT | PRV_PROMISE_FORMAT_KEPT |
               PRV_PROMISE_REVERSIBLE;
    }

  private:
    // The @ and the domain, in lower case.
    static void appendDomain(const Text<char>& text, int32_t user, std::string& tweak) {
        for (int32_t i = user; i < text.length; ++i) {
            tweak += static_cast<char>(provider::lowerAscii(text.data[i]));
        }
    }
    static void appendDomain(const Text<wchar_t>& text, int32_t user, std::string& tweak) {
        std::wstring domain(text.view().substr(static_cast<size_t>(user)));
        KORV_StrToWLower(domain.data());
        tweak += provider::toUtf8(domain);
    }

    // One of them.
    std::optional<Pseudonyms> pseudonyms_;
    std::optional<crypto::Permutation> permutation_;
    std::optional<Transposition> transposition_;
};

}  // namespace

KORV_PROVIDER("EML", provider::Permuting<Eml>, kMethods, kOperands, kErrors)
