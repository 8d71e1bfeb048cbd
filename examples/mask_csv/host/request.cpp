// A request from the I records to the release of everything that was made for it.
#include "host/request.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "host/host_error.h"
#include "text/utf8_text.h"

namespace host {

namespace {

// Room for results that are longer than their source.
constexpr uint64_t kSpareCharacters = 1024;

void check(int32_t status) {
    if (status != 0) throw RequestError(status);
}

template <typename Record>
Record* allocate() {
    void* record = std::calloc(1, sizeof(Record));
    if (record == nullptr) throw std::bad_alloc();
    return static_cast<Record*>(record);
}

struct Release {
    void operator()(ErrorAnchor* anchor) const { TermErrors(anchor); }
    void operator()(CtrlBlkX* block) const { CleanCtrlBlkX(block); }
    void operator()(SvcDefX* service) const { CleanSvcDefX(service); }
};

}  // namespace

void Request::Buffer::ensure(uint64_t needed) {
    if (needed <= size) return;
    if (needed > INT32_MAX / 2) throw std::bad_alloc();
    // The library would give up a block that it cannot resize.
    std::free(bytes);
    bytes = nullptr;
    size = 0;
    check(KORVAllocateBuffer(&bytes, &size, static_cast<int32_t>(needed * 2)));
}

Request::Buffer::~Buffer() {
    std::free(bytes);
}

Request::Request(const Rules& rules, const Rule& rule, const Provider& provider,
                 const std::string& columnName, ErrorListener& listener)
    : provider_(provider),
      columnName_(columnName),
      alwaysWide_(rule.wide),
      operands_(rules, rule, *provider.entry) {
    block_.blkCode = 1;  // a provider's KORV_IsZeroOrZeroLength copies the value to its target
    service_.svcCode1 = static_cast<uint8_t>(provider.number);
    service_.oprDefs = operands_.first();
    try {
        describeFields();
        selectField(alwaysWide_ ? kWide : kNarrow);
        const auto open = [this](const PrvCall& call) {
            return provider_.entry->open(&call, &state_);
        };
        if (walk(nullptr, nullptr, listener, open) != 0) {
            rules.fail(rule, rule.providerPosition,
                       "provider " + rule.provider + " does not accept this rule");
        }
    } catch (const RequestError& error) {
        releaseFields();
        rules.fail(rule, rule.providerPosition, "provider " + rule.provider + ": " + error.what());
    } catch (...) {
        releaseFields();
        throw;
    }
}

Request::~Request() {
    if (state_ != nullptr) provider_.entry->close(state_);
    releaseFields();
}

// The column as two fields of one list: a value is handed on as the one or the other.
void Request::describeFields() {
    const TextDesc name = {{nullptr}, KORV_CODEPAGE_NOT_GIVEN, columnName_.c_str()};
    for (const FieldPosition position : {kNarrow, kWide}) {
        FieldDesc description = {};
        description.dataType = position == kNarrow ? VARCHAR_SZ : WVARCHAR_SZ;
        description.textMode = KORV_TEXT_NARROW;
        description.text = &name;
        description.textLen = static_cast<int32_t>(columnName_.size());
        check(CopyFieldStruct(&description, &fields_[position], text::kUtf8CodePage, 0));
    }
    fields_[kNarrow].link = &fields_[kWide];
    block_.fieldDefs = &fields_[kNarrow];
}

void Request::releaseFields() {
    for (const FieldDefI& field : fields_) {
        std::free(field.wideText);
        std::free(field.narrowText);
    }
}

void Request::selectField(FieldPosition position) {
    block_.fieldRefs.fieldPos = position;
    block_.fieldRefs.fieldDef = &fields_[position];
}

// Converts the request, lets the provider work on it, hands its errors to the listener and releases
// everything again. Returns the provider's status.
template <typename Step>
int32_t Request::walk(ValueRecord* value, ValueRecord* result, ErrorListener& listener, Step step) {
    const std::unique_ptr<ErrorAnchor, Release> anchor(allocate<ErrorAnchor>());
    const std::unique_ptr<CtrlBlkX, Release> block(allocate<CtrlBlkX>());
    const std::unique_ptr<SvcDefX, Release> service(allocate<SvcDefX>());
    block_.errorAnchor = anchor.get();
    check(KORVCnvCtrlBlkFromIToX(&block_, block.get()));
    check(KORVCnvSvcDefFromIToX(block.get(), &service_, service.get()));

    const PrvCall call = {&block_, block.get(), service.get(), value, result};
    const int32_t status = step(call);
    for (const ErrorRecord* record = anchor->head; record != nullptr; record = record->next) {
        listener.error(provider_, *record);
    }
    if (status != 0 && anchor->head == nullptr) listener.failure(provider_, status);
    block_.errorAnchor = nullptr;
    return status;
}

bool Request::mask(std::string_view value, std::string_view& masked, ErrorListener& listener) {
    try {
        return maskValue(value, masked, listener);
    } catch (const RequestError& error) {
        listener.failure(provider_, error.status);
        return false;
    }
}

bool Request::maskValue(std::string_view value, std::string_view& masked, ErrorListener& listener) {
    const bool wide = alwaysWide_ || !text::isAscii(value.data(), value.size());
    const uint64_t unit = wide ? sizeof(wchar_t) : 1;
    selectField(wide ? kWide : kNarrow);

    ValueRecord record = {};
    ValueRecord result = {};
    record.data = const_cast<char*>(value.data());
    if (value.empty()) {
        record.data = nullptr;
        record.nullIndicator = 1;
    } else if (wide) {
        source_.ensure((value.size() + 1) * unit);
        const auto length = static_cast<uint32_t>(value.size());
        uint32_t characters = 0;
        check(KORVCnvCharToWVarcharSz(value.data(), &length, static_cast<wchar_t*>(source_.bytes),
                                      source_.size, &characters, &text::kUtf8Options));
        record.data = source_.bytes;
    }
    target_.ensure((value.size() + kSpareCharacters) * unit);
    record.target = target_.bytes;
    record.capacity = static_cast<int32_t>(target_.size);

    const auto step = [this](const PrvCall& call) { return provider_.entry->mask(state_, &call); };
    if (walk(&record, &result, listener, step) != 0) return false;

    if (result.nullIndicator == 1) {
        masked = "";
        return true;
    }
    const auto bytes = static_cast<uint32_t>(result.length);
    masked = {static_cast<const char*>(target_.bytes), bytes};
    if (wide) {
        auto* const text = static_cast<wchar_t*>(target_.bytes);
        uint32_t characters = bytes / sizeof(wchar_t);
        uint32_t length = 0;
        narrowed_.ensure(bytes + 4);
        if (characters > 0) {
            text[characters] = 0;
            check(KORVCnvWVarcharSzToVarcharSz(text, &characters,
                                               static_cast<char*>(narrowed_.bytes), narrowed_.size,
                                               &length, &text::kUtf8Options));
        }
        masked = {static_cast<const char*>(narrowed_.bytes), length};
    }
    return true;
}

}  // namespace host
