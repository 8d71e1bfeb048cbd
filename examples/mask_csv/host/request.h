// The requests of one rule: the I records, prepared once, and the road that each value takes.
#pragma once

#include <string_view>

#include "host/operands.h"
#include "host/provider_loader.h"
#include "host/rules.h"

namespace host {

// Hears of the errors in a request's chain before the chain is released.
class ErrorListener {
  public:
    virtual ~ErrorListener() = default;
    virtual void error(const Provider& provider, const ErrorRecord& record) = 0;
    // The request failed with a status and without an error of the provider's.
    virtual void failure(const Provider& provider, int32_t status) = 0;
};

class Request {
  public:
    // `columnName` is the name in the header. Opens the provider for the rule; throws HostError
    // when that fails, after `listener` has heard why.
    Request(const Rules& rules, const Rule& rule, const Provider& provider,
            const std::string& columnName, ErrorListener& listener);
    ~Request();
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;

    // Masks one value: valid UTF-8, zero-terminated; an empty one is handed on as null. The masked
    // text, also UTF-8, lives until the next call. False when it failed, after `listener` has heard
    // why.
    bool mask(std::string_view value, std::string_view& masked, ErrorListener& listener);

    const std::string& columnName() const { return columnName_; }

  private:
    enum FieldPosition { kNarrow = 0, kWide = 1 };
    // A work buffer of the library's, whose contents are lost when it grows.
    struct Buffer {
        void* bytes = nullptr;
        uint32_t size = 0;
        void ensure(uint64_t needed);
        ~Buffer();
    };

    bool maskValue(std::string_view value, std::string_view& masked, ErrorListener& listener);
    void describeFields();
    void selectField(FieldPosition position);
    template <typename Step>
    int32_t walk(ValueRecord* value, ValueRecord* result, ErrorListener& listener, Step step);
    void releaseFields();

    const Provider& provider_;
    std::string columnName_;
    bool alwaysWide_;
    OperandList operands_;
    FieldDefI fields_[2] = {};
    CtrlBlkI block_ = {};
    SvcDefI service_ = {};
    void* state_ = nullptr;
    Buffer source_;
    Buffer target_;
    Buffer narrowed_;
};

}  // namespace host
