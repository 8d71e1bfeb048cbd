// Texts of the C++ header: views of the texts of records, and the elements of lists.
#include <clocale>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "korv/korv.hpp"
#include "support/heap.h"

namespace {

TEST(TextViews, EndBeforeTheTerminator) {
    const wchar_t wide[] = L"NAME\0REST";
    const char narrow[] = "NAME\0REST";
    FieldDefX field{};
    field.wideText = const_cast<wchar_t*>(wide);
    field.narrowText = const_cast<char*>(narrow);
    EXPECT_EQ(L"NAME", korv::view(field.wideText));
    EXPECT_EQ("NAME", korv::view(field.narrowText));
    EXPECT_EQ(field.wideText, korv::view(field.wideText).data());
}

TEST(TextViews, AreEmptyForNullAndForEmptyTexts) {
    const OprDefX operand{};
    EXPECT_TRUE(korv::view(operand.wideValue).empty());
    EXPECT_TRUE(korv::view(operand.narrowValue).empty());
    EXPECT_TRUE(korv::view("").empty());
    EXPECT_TRUE(korv::view(L"").empty());
}

using Names = std::vector<std::wstring>;

class ListElements : public HeapTest {
  protected:
    static Names walk(korv::Elements& elements) {
        Names found;
        for (const std::wstring_view element : elements) {
            EXPECT_EQ(L'\0', element.data()[element.size()]);
            found.emplace_back(element);
        }
        return found;
    }
    static Names walk(const wchar_t* list, wchar_t delimiter = L',') {
        korv::Elements elements(list, delimiter);
        const Names found = walk(elements);
        EXPECT_EQ(korv::Status::success, elements.status()) << "list " << list;
        return found;
    }
};

TEST_F(ListElements, ComeAsTheLibraryCutsThem) {
    EXPECT_EQ((Names{L"ID", L"\"Last Name\"", L"CITY"}), walk(L"id, \"Last Name\", city"));
    EXPECT_EQ((Names{L"A,B", L"C"}), walk(L"a,b;c", L';'));
    EXPECT_EQ((Names{L"\"a\"b\"", L"C"}), walk(L"\"a\\\"b\" dropped, c"));
    EXPECT_EQ((Names{L"\"never closed, b"}), walk(L"\"never closed, b"));
}

TEST_F(ListElements, MayBeEmptyButDoNotFollowALastDelimiter) {
    EXPECT_EQ((Names{L"A", L"", L"", L"B"}), walk(L"a,, ,b"));
    EXPECT_EQ((Names{L"", L"A"}), walk(L",a"));
    EXPECT_EQ((Names{L"A"}), walk(L"a,"));
    EXPECT_EQ((Names{L"A", L""}), walk(L"a,,  "));
    EXPECT_EQ((Names{L""}), walk(L"\\"));
}

TEST_F(ListElements, OfAnEmptyListAreNone) {
    for (const wchar_t* const list : {L"", L"   ", static_cast<const wchar_t*>(nullptr)}) {
        korv::Elements elements(list);
        EXPECT_EQ(elements.end(), elements.begin());
        EXPECT_EQ(korv::Status::success, elements.status());
    }
}

TEST_F(ListElements, FillTheirBufferToTheLastCharacter) {
    const std::wstring longest(5000, L'x');
    korv::Elements elements(longest.c_str());
    const std::wstring_view element = *elements.begin();
    EXPECT_EQ(std::wstring(5000, L'X'), element);
    EXPECT_EQ(5001 * sizeof(wchar_t), heap::sizeOf(element.data()));
}

TEST_F(ListElements, EndAtMalformedInputAndSaySo) {
    korv::Elements elements(L"a, b\"c, d");
    EXPECT_EQ((Names{L"A"}), walk(elements));
    EXPECT_EQ(korv::Status::failure, elements.status());
    EXPECT_EQ(2u, elements.position());
    // Also where the first element is the malformed one, and in another walk.
    EXPECT_EQ((Names{L"A"}), walk(elements));
    korv::Elements first(L"a\"");
    EXPECT_EQ(Names{}, walk(first));
    EXPECT_EQ(korv::Status::failure, first.status());
    EXPECT_EQ(0u, first.position());
}

TEST_F(ListElements, KnowWhereTheyBegin) {
    korv::Elements elements(L"ab,c, d");
    std::vector<std::size_t> positions;
    for ([[maybe_unused]] const std::wstring_view element : elements) {
        positions.push_back(elements.position());
    }
    EXPECT_EQ((std::vector<std::size_t>{0, 3, 5}), positions);
}

TEST_F(ListElements, CanBeWalkedAgainAndMoved) {
    korv::Elements elements(L"a, b");
    EXPECT_EQ(L"A", *elements.begin());
    EXPECT_EQ((Names{L"A", L"B"}), walk(elements));
    korv::Elements moved = std::move(elements);
    EXPECT_EQ((Names{L"A", L"B"}), walk(moved));
    EXPECT_EQ(Names{}, walk(elements));  // NOLINT(bugprone-use-after-move)
}

TEST_F(ListElements, AreNoneWithoutMemoryAndSaySo) {
    heap::failAt(1);
    korv::Elements elements(L"a, b");
    EXPECT_EQ(korv::Status::noMemoryBuffer, elements.status());
    EXPECT_EQ(Names{}, walk(elements));
    EXPECT_EQ(korv::Status::noMemoryBuffer, elements.status());
}

}  // namespace
