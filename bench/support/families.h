// The families of rows, one for each source family of the library.
#pragma once

namespace bench {

void addConvert();
void addErrorChain();
void addDigitCount();
void addDayNumbers();
void addNumericText();
void addTranspose();
void addPermutation();
void addReverse();
void addCase();
void addCompare();
void addElements();
void addTrim();
void addUnicode();
void addByteOrder();
void addBitFlip();
void addQuicksort();

}  // namespace bench
