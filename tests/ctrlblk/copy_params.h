// A parameter description without texts, and the fixture that copies such descriptions.
#pragma once

#include "ctrlblk/records.h"

constexpr std::uint32_t kUtf8 = 1208;

// A description without texts. Its other members, and those of the target, are rubbish.
inline ParamDesc describe(std::int32_t kind) {
    ParamDesc source = rubbish<ParamDesc>(31);
    source.oprTextMode = 'x';
    source.oprText = nullptr;
    source.valueKind = kind;
    source.valueLen = 0;
    source.value.text = nullptr;
    return source;
}

class CopyParams : public HeapTest {
  protected:
    OprDefI target = rubbish<OprDefI>(32);
    OprDefI expected = target;

    // Copies with UTF-8 as the default and compares every member with `expected`.
    void copy(const ParamDesc& source, std::int32_t status) {
        expected.oprCode = source.oprCode;
        expected.valueKind = source.valueKind;
        ASSERT_EQ(status, CopyParamsStruct(&source, &target, kUtf8, 1));
    }
    void reset() { expected = target = rubbish<OprDefI>(32); }
};
