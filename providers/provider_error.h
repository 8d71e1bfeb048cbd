// Errors of a provider, and the codes that all providers share.
#pragma once

#include <cstdint>
#include <exception>
#include <initializer_list>
#include <string>
#include <variant>
#include <vector>

#include "korv/provider.h"

namespace provider {

// Codes that any provider may report; its own are below 100.
enum CommonError : uint32_t {
    kValueTooLong = 100,
    kResultTooLong = 101,
    kNotText = 102,
    kNoMemory = 103,
    kBadFile = 104,
    kNotConverted = 105,
    kUnexpected = 106,
    kMissingOperand = 107,
    kUnfitOperand = 108,
};
#define KORV_COMMON_ERRORS                                                                     \
    {provider::kValueTooLong, "the value is too long"},                                        \
        {provider::kResultTooLong, "the masked value is too long"},                            \
        {provider::kNotText, "the field is not text"}, {provider::kNoMemory, "out of memory"}, \
        {provider::kBadFile, "the file cannot be read or is not UTF-8 text"},                  \
        {provider::kNotConverted, "the text cannot be converted"},                             \
        {provider::kUnexpected, "the provider failed unexpectedly"},                           \
        {provider::kMissingOperand, "the method needs this operand"}, {                        \
        provider::kUnfitOperand, "the operand does not go with the method"                     \
    }

struct Token {
    uint32_t id;
    std::variant<int32_t, std::wstring> value;
};

// An error of the value or the rule at hand. The column's name is added to its tokens.
class Error : public std::exception {
  public:
    Error(uint32_t errorCode, std::initializer_list<Token> errorTokens)
        : code(errorCode), tokens(errorTokens) {}
    const char* what() const noexcept override { return "provider error"; }

    uint32_t code;
    std::vector<Token> tokens;
};

}  // namespace provider
