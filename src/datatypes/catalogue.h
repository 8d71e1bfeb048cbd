// The catalogue of data types: one table that every question about a type is answered from.
#pragma once

#include "korv/datatypes.h"

namespace korv {

enum class Family : uint8_t {
    unknown,
    fixedText,       // its length comes with it
    variableText,    // led by a signed 16-bit length prefix
    terminatedText,  // zero-terminated
    number,
    opaqueNumber,  // a number whose length is taken as it stands
    moment,        // ODBC date, time, timestamp
};

struct DataType {
    int32_t code;
    const char* name;
    Family family;
    uint8_t unit;        // bytes of a character: 1 or 4 for text, otherwise 0
    uint8_t bytes;       // bytes of a value; 0 for text: field length times unit
    uint8_t textLength;  // characters of the text form; 0 for text: depends on the value
};

// The type of a code. A code without a row has the family unknown.
const DataType& dataType(int16_t code) noexcept;

inline bool isText(const DataType& type) noexcept {
    return type.unit != 0;
}

}  // namespace korv
