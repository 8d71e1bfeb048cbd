/* Beside a header that uses the plain names of data types for something else. */
#define KORV_PREFIXED_TYPES_ONLY
typedef char CHAR;
typedef int INTEGER;
typedef double DOUBLE;
#include "korv/korv.h"

int korvPrefixedTypes(void);
int korvPrefixedTypes(void) {
    const CHAR letter = 'a';
    const INTEGER codes = KORV_TYPE_CHAR + KORV_TYPE_INTEGER + KORV_TYPE_DOUBLE + KORV_TYPE_101;
    return letter + codes + (int)(DOUBLE)KORV_VERSION_NUM;
}
