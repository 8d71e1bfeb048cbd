// Case, comparison, parsing, Unicode units and byte order.
#include "concurrency/run.h"

namespace {

// What the C locale makes of a text, letter by letter.
template <class Char>
Char inCase(Char character, bool upper) {
    const Char from = upper ? 'a' : 'A';
    const Char to = upper ? 'A' : 'a';
    const bool letter = character >= from && character < from + 26;
    return static_cast<Char>(letter ? character - from + to : character);
}

template <class Char>
bool isInCase(const Char* text, const Char* original, bool upper) {
    for (; *text && *text == inCase(*original, upper); ++original) ++text;
    return !*text && !*original;
}

}  // namespace

void changeCase(Run& run) {
    const Text<char> original(run.number());
    const Text<wchar_t> wideOriginal(run.number());
    Text<char> text = original;
    Text<wchar_t> wide = wideOriginal;
    CHECK(CALL(KORV_StrToUpper, text.characters) == text.characters);
    CHECK(isInCase(text.characters, original.characters, true));
    CHECK(CALL(KORV_StrToLower, text.characters) == text.characters);
    CHECK(isInCase(text.characters, original.characters, false));
    CHECK(CALL(KORV_StrToWUpper, wide.characters) == wide.characters);
    CHECK(isInCase(wide.characters, wideOriginal.characters, true));
    CHECK(CALL(KORV_StrToWLower, wide.characters) == wide.characters);
    CHECK(isInCase(wide.characters, wideOriginal.characters, false));
    CHECK(CALL(toportwupper, 'a' + static_cast<int32_t>(run.thread)) ==
          'A' + static_cast<int32_t>(run.thread));
    CHECK(CALL(toportwlower, 'A' + static_cast<int32_t>(run.thread)) ==
          'a' + static_cast<int32_t>(run.thread));
}

// Each thread has a last character of its own, and one for each of the functions.
void compareText(Run& run) {
    const auto letter = static_cast<int32_t>('a' + run.thread);
    const auto other = static_cast<int32_t>('i' + run.thread);
    const wchar_t first[] = {L'X', static_cast<wchar_t>(letter), 0};
    const wchar_t second[] = {L'x', static_cast<wchar_t>(letter - 'a' + 'A'), 0};
    const wchar_t third[] = {static_cast<wchar_t>(other), 0};
    CHECK(CALL(StringWCaseCompare, first, second) == 0);
    CHECK(CALL(StringWNCaseCompare, third, third, 5) == 0);
    for (int i = 0; i < 20; ++i) {
        CHECK(CALL(StringWCaseCompare, L"", L"?") == -letter);
        CHECK(CALL(StringWNCaseCompare, L"?", L"", 5) == other);
    }
    const Text<wchar_t> same(run.number());
    Text<wchar_t> greater = same;
    ++greater.characters[41];
    CHECK(CALL(StringWCaseCompare, same.characters, greater.characters) == -1);
    CHECK(CALL(StringWNCaseCompare, same.characters, greater.characters, 41) == 0);
}

void parseText(Run& run) {
    Text<wchar_t> list(run.number());
    const Text<wchar_t> original(run.number());
    wchar_t output[64], work[64];
    char value[64];
    uint32_t length = 0;
    const int32_t next = CALL(KORV_GetNextElement, list.characters, output, &length, L',', 0, 0);
    CHECK(next == 10 && length == 9 && std::wcslen(output) == 9);
    output[9] = 0;
    for (int i = 4; i < 9; ++i) CHECK(output[i] == original.characters[i]);
    CHECK(CALL(KORV_GetNextElement, list.characters, output, &length, L',', 0, 10) == -1);
    CHECK(equal(output, L"THE QUICK BROWN FOX AND LAZY DOGS"));

    const Text<char> pair(run.number());
    CHECK(CALL(GetKeyValue, pair.characters, value, 60, &length, 'R') == 0);
    CHECK(length == pair.length - 1 && equal(value, pair.characters + 1));
    CHECK(CALL(TrimSourceW, list.characters, &length, L" ,", work, 1) == 0);
    CHECK(length == 35 && list.characters[3] == original.characters[4]);
    CHECK(CALL(NormalizeColName, list.characters, 35) == 0);
    CHECK(list.characters[1] == L'U' && equal(list.characters + 8, L"THEQUICKBROWNFOXANDLAZYDOGS"));
}

void convertUnits(Run& run) {
    // One character beyond 16 bits, at another place in each run.
    Text<wchar_t> text(run.number());
    text.characters[run.number() % text.length] = 0x1F600;
    uint16_t units[64];
    wchar_t back[64];
    uint32_t count = 0;
    const auto characters = static_cast<int32_t>(text.length);
    const auto unitCount = characters + 1;
    CHECK(CALL(KORV_Utf32ToUtf16, text.characters, 4 * characters, units, sizeof units, &count) ==
          0);
    CHECK(count == text.length + 1);
    CHECK(CALL(KORV_Utf16ToUtf32, units, 2 * unitCount, back, sizeof back, &count) == 0);
    CHECK(count == text.length && std::wmemcmp(back, text.characters, count) == 0);
    CHECK(CALL(Convert32To16, text.characters, characters, units, 64, &count) == 0);
    CHECK(CALL(Convert16To32, units, unitCount, back, 64, &count) == 0);
    CHECK(count == text.length && std::wmemcmp(back, text.characters, count) == 0);
    uint16_t* block = nullptr;
    CHECK(CALL(KORVGetXMLCHARFromWCHAR, text.characters, &block, 1) == 0);
    CHECK(block[run.number() % text.length] == 0xF600 && block[text.length] == 0);
    std::free(block);
}

void swapBytes(Run& run) {
    constexpr int count = 40;
    uint16_t shorts[count + 1] = {};
    uint32_t longs[count + 1] = {};
    uint8_t bits[count], flipped[count];
    const auto low = static_cast<uint8_t>(run.thread);
    for (int i = 0; i < count; ++i) {
        shorts[i] = static_cast<uint16_t>(0x1200 | low);
        longs[i] = 0x12345600u | low;
        bits[i] = low;
    }
    const uint32_t swappedLong = static_cast<uint32_t>(low) << 24 | 0x563412;
    const auto swappedShort = static_cast<uint16_t>(low << 8 | 0x12);
    CHECK(CALL(RTENDIAN_SWAP_UINT, longs[0]) == swappedLong);
    CHECK(CALL(RTENDIAN_SWAP_USHORT, shorts[0]) == swappedShort);
    CHECK(CALL(SwapBytes_2, shorts) == shorts && shorts[count - 1] == swappedShort);
    CHECK(CALL(SwapnBytes_2, shorts, 2 * count - 2) == shorts);
    CHECK(shorts[0] == (0x1200 | low) && shorts[count - 1] == swappedShort);
    CHECK(CALL(SwapBytes_4, longs) == longs && longs[count - 1] == swappedLong);
    CHECK(CALL(SwapnBytes_4, longs, 4 * count - 4) == longs);
    CHECK(longs[0] == (0x12345600u | low) && longs[count - 1] == swappedLong);
    CALL(RTBITFIELD_FLIP, flipped, bits, count);
    for (const uint8_t byte : flipped) {
        CHECK(byte == ((low & 1) << 7 | (low & 2) << 5 | (low & 4) << 3));
    }
    CHECK(CALL(KORV_IsPlatformBigEndian) == 0);
}
