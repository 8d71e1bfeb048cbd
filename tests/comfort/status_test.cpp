// Status codes of the C++ header: every one of the C interface has its name.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "korv/korv.hpp"

// Only who wants the companion's functions includes their header.
#ifdef KORV_DATACNV_H
#error "korv.hpp includes datacnv.h"
#endif
#include "korv/datacnv.h"

namespace {

// The constants that an enumeration of a header gives values to, as they stand there.
std::vector<std::pair<std::string, int>> constants(const char* header, const char* enumeration) {
    std::ifstream file(std::string(KORV_INCLUDE) + "/korv/" + header);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    const std::size_t begin = text.find(std::string("typedef enum ") + enumeration);
    EXPECT_NE(std::string::npos, begin) << header;
    const std::string body = text.substr(begin, text.find('}', begin) - begin);
    std::istringstream words(body);
    std::vector<std::pair<std::string, int>> found;
    std::string before;
    for (std::string word; words >> word; before = word) {
        int number = 0;
        if (word == "=" && words >> number) found.emplace_back(before, number);
    }
    return found;
}

void expectNames(const char* header, const char* enumeration, std::size_t atLeast) {
    const auto listed = constants(header, enumeration);
    EXPECT_LE(atLeast, listed.size());
    for (const auto& [name, number] : listed) {
        // The two successes are one.
        const std::string expected = number == 0 ? "KORV_SUCCESS" : name;
        EXPECT_EQ(expected, korv::to_string(korv::Status(number))) << number;
    }
}

TEST(StatusOfComfort, NamesEveryCodeOfTheLibrary) {
    expectNames("base.h", "KorvStatus", 20);
}

TEST(StatusOfComfort, NamesEveryCodeOfTheCompanion) {
    expectNames("datacnv.h", "CnvStatus", 6);
}

TEST(StatusOfComfort, KeepsUnknownCodes) {
    EXPECT_STREQ("unknown status", korv::to_string(korv::Status(4711)));
    EXPECT_EQ(4711, static_cast<int>(korv::Status(4711)));
}

TEST(StatusOfComfort, SuccessIsZeroAndTheLengthOfADateAndTime) {
    for (int code = -2; code < 300; ++code) {
        EXPECT_EQ(code == KORV_SUCCESS || code == KORV_TYPE_DATETIME,
                  korv::succeeded(korv::Status(code)))
            << code;
    }
    FieldDefI field{};
    field.dataType = DATETIME_SZ;
    std::uint32_t length = 0;
    EXPECT_TRUE(korv::succeeded(korv::Status(GetDataTypeLengths(&field, &length))));
    EXPECT_EQ(50u, length);
}

static_assert(korv::Status::noMemoryField == korv::Status(KORV_NO_MEMORY_FIELD));
static_assert(korv::Status::targetTooSmall == korv::Status(CNV_TARGET_TOO_SMALL));
static_assert(korv::Status::malformedSource == korv::Status(CNV_MALFORMED_SOURCE));
static_assert(korv::Status::unconvertible == korv::Status(CNV_UNCONVERTIBLE));
static_assert(korv::Status::unknownCodePage == korv::Status(CNV_UNKNOWN_CODE_PAGE));
static_assert(korv::Status::badLength == korv::Status(CNV_BAD_LENGTH));
static_assert(korv::Status::noMemory == korv::Status(CNV_NO_MEMORY));

}  // namespace
