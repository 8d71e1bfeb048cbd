/* Examples of the companion library for its reference. What a line prints is in its comment. */
#include <korv/datacnv.h>
#include <stdio.h>
#include <string.h>
#include <wchar.h>

static void widenText(void) {
    CnvOptions options = {0};
    options.codePage = 65001;  // UTF-8
    const char* source = "Z\xC3\xBCrich";
    const uint32_t bytes = 7, none = 0;
    wchar_t target[16];
    uint32_t length;
    if (KORVCnvCharToWVarcharSz(source, &bytes, target, sizeof target, &length, &options) ==
        CNV_SUCCESS)
        printf("%u U+%04X\n", length, (unsigned)target[1]);  // 6 U+00FC
    if (KORVCnvVarcharSzToWVarcharSz(source, &none, target, sizeof target, &length, &options) ==
        CNV_SUCCESS)
        printf("%u\n", length);  // 6
}

static void widenCountedText(void) {
    const int16_t bytes = 6;
    char source[8];
    memcpy(source, &bytes, 2);  // the count comes first
    memcpy(source + 2, "Berlin", 6);
    const uint32_t none = 0;
    wchar_t target[16];
    uint32_t length;
    if (KORVCnvVarcharToWVarcharSz(source, &none, target, sizeof target, &length, NULL) ==
        CNV_SUCCESS)
        printf("%ls\n", target);  // Berlin
}

static void copyWideText(void) {
    const wchar_t source[] = L"Berlin";
    const uint32_t bytes = 4 * 3;
    wchar_t target[16];
    uint32_t length;
    if (KORVCnvWCharToWVarcharSz(source, &bytes, target, sizeof target, &length, NULL) ==
        CNV_SUCCESS)
        printf("%ls\n", target);  // Ber
}

static void copyCountedWideText(void) {
    const int16_t bytes = 4 * 6;
    char source[2 + 4 * 6];
    memcpy(source, &bytes, 2);
    memcpy(source + 2, L"Berlin", 4 * 6);
    const uint32_t none = 0;
    wchar_t target[16];
    uint32_t length;
    if (KORVCnvWVarcharToWVarcharSz(source, &none, target, sizeof target, &length, NULL) ==
        CNV_SUCCESS)
        printf("%ls\n", target);  // Berlin
}

static void integersAsText(void) {
    const int32_t number = -42;
    const uint32_t large = 4000000000, none = 0;
    const int16_t small = -7;
    const uint16_t port = 65000;
    wchar_t target[16];
    uint32_t length;
    if (KORVCnvIntToWVarcharSz1(&number, &none, target, sizeof target, &length, NULL) ==
        CNV_SUCCESS)
        printf("%ls\n", target);  // -42
    if (KORVCnvUIntToWVarcharSz(&large, &none, target, sizeof target, &length, NULL) == CNV_SUCCESS)
        printf("%ls\n", target);  // 4000000000
    if (KORVCnvSmallIntToWVarcharSz(&small, &none, target, sizeof target, &length, NULL) ==
        CNV_SUCCESS)
        printf("%ls\n", target);  // -7
    if (KORVCnvSmallUIntToWVarcharSz(&port, &none, target, sizeof target, &length, NULL) ==
        CNV_SUCCESS)
        printf("%ls\n", target);  // 65000
}

static void narrowText(void) {
    CnvOptions options = {0};
    options.codePage = 1252;
    const uint32_t none = 0;  // up to the terminator
    char target[16];
    uint32_t length;
    if (KORVCnvWVarcharSzToVarcharSz(L"Z\u00FCrich", &none, target, sizeof target, &length,
                                     &options) == CNV_SUCCESS)
        printf("%u %X\n", length, (unsigned)(unsigned char)target[1]);  // 6 FC
}

static void dateAsText(void) {
    const uint16_t numbers[] = {2024, 2, 29, 14, 7, 9};
    wchar_t target[32];
    uint32_t length;
    if (KORVGetStringFromTS(numbers, target, sizeof target, &length) == CNV_SUCCESS)
        printf("%ls\n", target);  // 2024-02-29 14:07:09
}

static void convertUnits(void) {
    const uint16_t units[] = {0xD83D, 0xDE00};  // U+1F600
    wchar_t wide[2];
    uint32_t count;
    if (Convert16To32(units, 2, wide, 2, &count) == CNV_SUCCESS)
        printf("%u U+%X\n", count, (unsigned)wide[0]);  // 1 U+1F600
    uint16_t back[2];
    if (Convert32To16(wide, 1, back, 2, &count) == CNV_SUCCESS)
        printf("%u %X %X\n", count, back[0], back[1]);  // 2 D83D DE00
}

int main(void) {
    widenText();
    widenCountedText();
    copyWideText();
    copyCountedWideText();
    integersAsText();
    narrowText();
    dateAsText();
    convertUnits();
    return 0;
}
