// The rules that a provider's record and its tables must keep.
#pragma once

#include <string>
#include <string_view>

#include "korv/provider.h"

namespace mask {

// A name of a provider, an operand or, in capitals, a method. It is also part of a file name:
// nothing in it may lead to another folder.
bool isName(std::string_view name);

std::string inLowerCase(std::string name);
std::string inCapitals(std::string name);

// The name of the module that has a provider. COL is AFF by another name: GetProviderID gives both
// the same number.
std::string moduleName(const std::string& name);

// What is wrong with one part of the record; an empty text when nothing is. Each function takes
// any record whose pointers are valid or NULL, and expects nothing of the parts that the functions
// before it check.
std::string versionFault(const PrvEntry& entry);
std::string nameFault(const PrvEntry& entry);
std::string functionsFault(const PrvEntry& entry);
std::string operandKeysFault(const PrvEntry& entry);
std::string operandKindsFault(const PrvEntry& entry);
std::string operandBoundsFault(const PrvEntry& entry);
std::string errorsFault(const PrvEntry& entry);
std::string samplesFault(const PrvEntry& entry);
std::string methodsFault(const PrvEntry& entry);

// All of them, for a module that rules call `name`; `entry` may be NULL.
std::string entryFault(const PrvEntry* entry, const std::string& name);

}  // namespace mask
