// The request of one column: the I records and their X forms, made once and used for every value.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "korv/korv.hpp"
#include "method.h"
#include "operands.h"
#include "provider_module.h"
#include "records.h"
#include "rules.h"

namespace mask {

// An error from a request's chain, ready for a record.
struct CapturedError {
    uint32_t code;
    std::string message;
    std::vector<Token> tokens;
};

class Request {
  public:
    // Opens the provider for the rule. The key must outlive the request. Throws MaskError.
    Request(const Rules& rules, const Rule& rule, const ProviderModule& module,
            const MethodChoice& choice, const std::string& columnName,
            const std::string* relatedName);
    ~Request();
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;

    const ProviderModule& module() const { return module_; }
    void* state() const { return state_; }
    const std::vector<std::string>& files() const { return operands_.files(); }
    // A call without value, result and related value.
    const PrvCall& call(bool wide) const { return forms_[wide ? kWide : kNarrow].call; }

    bool hasErrors() const { return anchor_->head != nullptr; }
    // Takes the errors out of the chain. Tokens that hold one of the `clear` texts are withheld.
    std::vector<CapturedError> takeErrors(std::initializer_list<std::string_view> clear);

  private:
    enum FieldPosition { kNarrow = 0, kWide = 1, kRelated = 2 };
    struct Form {
        CtrlBlkI context = {};
        FieldRefI relatedReference = {};
        korv::Request converted;
        PrvCall call = {};
    };

    void describeField(FieldPosition position, int16_t type, const std::string& name);
    void convert(FieldPosition position);
    void renewAnchor();

    const ProviderModule& module_;
    OperandList operands_;
    bool hasRelated_;
    korv::FieldWithTexts fields_[3];
    SvcDefI service_ = {};
    korv::Owner<ErrorAnchor> anchor_;
    Form forms_[2];
    void* state_ = nullptr;
    bool isOpen_ = false;
};

}  // namespace mask
