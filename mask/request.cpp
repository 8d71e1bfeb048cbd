// Preparation of requests, and the errors that providers capture in them.
#include "request.h"

#include <algorithm>
#include <new>
#include <utility>

#include "mask_error.h"
#include "secrets/keys.h"
#include "text/utf8_text.h"

namespace mask {

namespace {

// A hostile provider may capture any number of errors, and texts of any length.
constexpr size_t kMostErrors = 16;
constexpr size_t kLongestToken = 200;
// A clear value this short is also a part of lengths, positions and names.
constexpr size_t kShortestWithheld = 4;

// One line, whatever the text holds, and also where it cannot be converted.
std::string printable(const wchar_t* characters) {
    if (characters == nullptr) return "?";
    std::wstring copy(characters, wcsnlen(characters, kLongestToken));
    for (wchar_t& c : copy) {
        if (c < L' ' || (c >= 0x7F && c < 0xA0)) c = L'?';
    }
    try {
        return text::toUtf8(copy);
    } catch (const text::ConversionError&) {
        return "?";
    }
}

bool isNumber(std::string_view text) {
    return text.find_first_not_of("0123456789-") == std::string_view::npos;
}

bool holdsClear(std::string_view token, std::initializer_list<std::string_view> clear) {
    return std::any_of(clear.begin(), clear.end(), [token](std::string_view value) {
        if (value.empty()) return false;
        if (value.size() < kShortestWithheld) return token == value && !isNumber(token);
        return token.find(value) != std::string_view::npos;
    });
}

// A status of the library or its companion. Most failures mean that there is no memory.
void check(int32_t result) {
    const korv::Status status{result};
    if (korv::succeeded(status)) return;
    if (status == korv::Status::badTextLength || status == korv::Status::malformedSource) {
        throw text::ConversionError(result);
    }
    throw std::bad_alloc();
}

// The catalogue's names are ASCII.
std::string nameOf(uint32_t tokenId) {
    const std::wstring_view name = gTokenIds[tokenId];
    return std::string(name.begin(), name.end());
}

}  // namespace

Request::Request(const Rules& rules, const Rule& rule, const ProviderModule& module,
                 const MethodChoice& choice, const std::string& columnName,
                 const std::string* relatedName)
    : module_(module), operands_(rules, rule, *module.entry), hasRelated_(relatedName != nullptr) {
    renewAnchor();
    service_.svcCode1 = static_cast<uint8_t>(GetProviderID(module.name.c_str()));
    service_.oprDefs = operands_.first();
    describeField(kNarrow, VARCHAR_SZ, columnName);
    describeField(kWide, WVARCHAR_SZ, columnName);
    fields_[kNarrow]->link = fields_[kWide].get();
    if (hasRelated_) {
        describeField(kRelated, VARCHAR_SZ, *relatedName);
        fields_[kWide]->link = fields_[kRelated].get();
    }
    for (const FieldPosition position : {kNarrow, kWide}) {
        convert(position);
        PrvCall& prepared = forms_[position].call;
        prepared.key = choice.key;
        prepared.keyLength = choice.key == nullptr ? 0 : secrets::kKeyBytes;
        prepared.method = choice.method == nullptr ? nullptr : choice.method->name;
    }

    const PrvCall& opening = call(rule.wide);
    if (module_.entry->open(&opening, &state_) == 0 && !hasErrors()) {
        isOpen_ = true;
        return;
    }
    std::string why;
    for (const CapturedError& error : takeErrors({})) why += ": " + error.message;
    rules.fail(rule, rule.actionPosition,
               "provider " + rule.action + " does not accept this rule" + why);
}

Request::~Request() {
    if (isOpen_) module_.entry->close(state_);
}

void Request::describeField(FieldPosition position, int16_t type, const std::string& name) {
    const TextDesc nameText = {{nullptr}, KORV_CODEPAGE_NOT_GIVEN, name.c_str()};
    FieldDesc description = {};
    description.dataType = type;
    description.textMode = KORV_TEXT_NARROW;
    description.text = name.empty() ? nullptr : &nameText;
    description.textLen = static_cast<int32_t>(name.size());
    check(CopyFieldStruct(&description, fields_[position].get(), text::kUtf8CodePage, 0));
}

// One form of the request: its first field reference picks the narrow or the wide field.
void Request::convert(FieldPosition position) {
    Form& form = forms_[position];
    CtrlBlkI& context = form.context;
    context.blkCode = 1;  // KORV_IsZeroOrZeroLength copies the value to its target
    context.fieldDefs = fields_[kNarrow].get();
    context.fieldRefs.fieldPos = position;
    context.fieldRefs.fieldDef = fields_[position].get();
    if (hasRelated_) {
        form.relatedReference.fieldPos = kRelated;
        form.relatedReference.fieldDef = fields_[kRelated].get();
        context.fieldRefs.link = &form.relatedReference;
    }
    context.errorAnchor = anchor_.get();
    check(static_cast<int32_t>(korv::Request::convert(context, service_, form.converted)));
    form.call.context = &context;
    form.call.block = form.converted.block();
    form.call.service = form.converted.service();
}

void Request::renewAnchor() {
    korv::Owner<ErrorAnchor> fresh = korv::make<ErrorAnchor>();
    if (fresh == nullptr) throw std::bad_alloc();
    anchor_ = std::move(fresh);
    for (Form& form : forms_) form.context.errorAnchor = anchor_.get();
}

std::vector<CapturedError> Request::takeErrors(std::initializer_list<std::string_view> clear) {
    std::vector<CapturedError> errors;
    for (const ErrorRecord& record : korv::errors(*anchor_)) {
        if (errors.size() == kMostErrors) break;
        CapturedError& error = errors.emplace_back();
        error.code = record.firstCode;
        error.message = module_.name + " error " + std::to_string(error.code) + ", " +
                        module_.meaning(error.code);
        const char* separator = ": ";
        for (const TokenSlot& slot : korv::tokens(record)) {
            if (slot.tokenId == KORV_TOKID_UNUSED || slot.tokenId >= KORV_TOKID_COUNT) continue;
            Token token = {slot.tokenId, nameOf(slot.tokenId), printable(slot.text)};
            if (holdsClear(token.text, clear)) token.text = "(withheld)";
            error.message += separator + token.name + "=" + token.text;
            error.tokens.push_back(std::move(token));
            separator = " ";
        }
    }
    if (hasErrors()) renewAnchor();
    return errors;
}

}  // namespace mask
