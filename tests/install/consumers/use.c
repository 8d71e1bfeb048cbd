/* A consumer of the installed libraries, in C and in C++: it calls each of the two, and through one
 * into the other. */
#include <korv/datacnv.h>
#include <korv/korv.h>
#include <stdio.h>
#include <string.h>
#include <wchar.h>

static int failures = 0;

static void check(const char* what, int right) {
    if (right) return;
    printf("wrong: %s\n", what);
    ++failures;
}

int main(void) {
    char masked[13] = {0};
    const uint16_t units[] = {0xD83D, 0xDE00};
#ifndef SUPPORT_ALONE
    const int32_t number = -21;
    const uint32_t unused = 0;
#endif
    wchar_t text[8] = {0};
    uint32_t count = 0;

    check("digits are transposed", PXTransposeNum("123456789012", masked, 12, 5, 3) == 0 &&
                                       strcmp(masked, "408628640642") == 0);
    check("the exported texts", strlen(PXSpaces) == 256 && wcslen(PXSpacesW) == 256);
    check("the companion joins a pair",
          KORV_Utf16ToUtf32(units, 4, text, 4, &count) == 0 && count == 1 && text[0] == 0x1F600);
#ifndef SUPPORT_ALONE
    check("the companion writes a number",
          KORVCnvIntToWVarcharSz1(&number, &unused, text, sizeof text, &count, NULL) == 0 &&
              wcscmp(text, L"-21") == 0);
#endif
    if (failures == 0) printf("used with pointers of %u bytes\n", (unsigned)sizeof(void*));
    return failures != 0;
}
