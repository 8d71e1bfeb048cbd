// The companion's two conversions that descriptions need: they take the place of the library's.
#include "ctrlblk/scripted_companion.h"

#include <cstring>

#include "korv/datacnv.h"

namespace companion {

std::vector<Call> widened;
std::vector<Call> narrowed;
std::vector<Answer> answers;

void reset() {
    widened.clear();
    narrowed.clear();
    answers.clear();
}

namespace {

Answer nextAnswer() {
    const std::size_t calls = widened.size() + narrowed.size();
    return calls < answers.size() ? answers[calls] : Answer{};
}

Call record(const void* source, const std::uint32_t* sourceLen, const void* target,
            std::uint32_t capacity, const std::uint32_t* outLen, const CnvOptions* options) {
    Call call{source, *sourceLen, target, capacity, *outLen, 0, 0, true};
    const auto* bytes = reinterpret_cast<const unsigned char*>(options);
    std::memcpy(&call.codePage, bytes + 28, 4);
    call.flag = bytes[32];
    return call;
}

}  // namespace
}  // namespace companion

extern "C" std::int32_t KORVCnvCharToWVarcharSz(const char* source, const std::uint32_t* sourceLen,
                                                wchar_t* target, std::uint32_t targetCapacity,
                                                std::uint32_t* outLen, const CnvOptions* options) {
    const companion::Answer answer = companion::nextAnswer();
    auto call = companion::record(source, sourceLen, target, targetCapacity, outLen, options);
    for (std::uint32_t i = 0; i < targetCapacity / 4; ++i) call.targetZeroed &= target[i] == 0;
    companion::widened.push_back(call);
    std::memcpy(target, answer.text.data(), answer.text.size() * 4);
    *outLen = answer.outLen;
    return answer.status;
}

extern "C" std::int32_t KORVCnvWVarcharSzToVarcharSz(const wchar_t* source,
                                                     const std::uint32_t* sourceLen, char* target,
                                                     std::uint32_t targetCapacity,
                                                     std::uint32_t* outLen,
                                                     const CnvOptions* options) {
    const companion::Answer answer = companion::nextAnswer();
    companion::narrowed.push_back(
        companion::record(source, sourceLen, target, targetCapacity, outLen, options));
    *outLen = answer.outLen;
    return answer.status;
}
