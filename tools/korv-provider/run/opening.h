// Direct calls of open with operands that the engine would refuse.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "session.h"

namespace kit {

// A copy of a service definition whose operands can be changed.
class Operands {
  public:
    explicit Operands(const SvcDefX& service);

    std::vector<OprDefX>& list() { return operands_; }
    void setText(OprDefX& operand, const std::wstring& text);
    // The service definition with the operands as they are now.
    const SvcDefX* linked();

  private:
    SvcDefX service_;
    std::vector<OprDefX> operands_;
    std::deque<std::wstring> wide_;
    std::deque<std::string> narrow_;
};

struct Opening {
    int32_t status = 0;
    bool threw = false;
    std::vector<SeenError> errors;
    std::vector<std::string> messages;
};

// Calls open, and close when it succeeds. `session` has the request.
Opening openOnce(Session& session, const PrvCall& call);

// Calls open with these operands, several times, and says what is wrong: an exception, no record of
// a failure, memory that is kept; or, for operands that are accepted, nothing.
std::string openingFault(Session& session, PrvCall call, Operands& operands);

}  // namespace kit
