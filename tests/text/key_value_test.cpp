// Values after a key and a separator.
#include <cstdint>
#include <random>
#include <string>

#include "korv/text.h"
#include "reference/key_value.h"
#include "text/places.h"

namespace {

using reference::keyValue;
using reference::Value;

class KeyValue : public testing::Test {
  protected:
    static constexpr std::size_t room = 256;

    void expectValue(const std::string& text, int32_t maxCount, char separator) {
        const Value expected = keyValue(text, maxCount, separator);
        char* source = source_.data() + room - text.size() - 1;
        std::memcpy(source, text.c_str(), text.size() + 1);
        std::memset(output_.data(), output_.canary, room);
        // Exactly what is needed, up to an unreadable page.
        char* output = output_.data() + room - (expected.result ? 0 : expected.copied + 1);
        uint32_t length = 77;
        SCOPED_TRACE(testing::Message()
                     << '<' << text << "> max " << maxCount << " separator " << int(separator));
        ASSERT_EQ(expected.result, GetKeyValue(source, output, maxCount, &length, separator));
        ASSERT_EQ(expected.result ? 77 : expected.copied, length);
        if (expected.result == 0) {
            ASSERT_EQ(expected.text, output);
        }
        for (char* p = output_.data(); p < output; ++p) ASSERT_EQ(output_.canary, *p);
        ASSERT_EQ(text, source);
    }

    Fenced<char> source_ = Fenced<char>(room);
    Fenced<char> output_ = Fenced<char>(room);
};

TEST_F(KeyValue, KnownValues) {
    const struct {
        const char* source;
        int32_t maxCount;
        char separator;
        int32_t result;
        const char* text;
        uint32_t length;
    } rows[] = {
        {"KEY =  value  ", 20, '=', 0, "value", 7},
        {"KEY=value", 5, '=', 0, "value", 5},
        {"KEY=value", 4, '=', 0, "valu", 4},
        {"KEY=a  b", 3, '=', 0, "a", 3},
        {"KEY=value", 1, '=', 0, "v", 1},
        {"KEY=value", 0, '=', 0, "v", 1},
        {"KEY=value", -7, '=', 0, "v", 1},
        {"K=a=b", 9, '=', 0, "a=b", 3},
        {"=x", 9, '=', 0, "x", 1},
        {"K=\tx\t", 9, '=', 0, "\tx\t", 3},
        {"K x", 9, ' ', 0, "x", 1},
        {"K\xE9x", 9, '\xE9', 0, "x", 1},
        {"KEY", 9, '=', -1, "", 0},
        {"", 9, '=', -1, "", 0},
        {"KEY=", 9, '=', -1, "", 0},
        {"KEY=   ", 9, '=', -1, "", 0},
        {"KEY", 9, '\0', -1, "", 0},
    };
    for (const auto& row : rows) {
        char output[16] = "untouched";
        uint32_t length = 77;
        EXPECT_EQ(row.result, GetKeyValue(row.source, output, row.maxCount, &length, row.separator))
            << row.source;
        EXPECT_STREQ(row.result ? "untouched" : row.text, output) << row.source;
        EXPECT_EQ(row.result ? 77 : row.length, length) << row.source;
    }
}

TEST_F(KeyValue, LengthIsOptional) {
    char output[16];
    EXPECT_EQ(0, GetKeyValue("K=v ", output, 9, nullptr, '='));
    EXPECT_STREQ("v", output);
    EXPECT_EQ(KORV_FAILURE, GetKeyValue("K", output, 9, nullptr, '='));
}

TEST_F(KeyValue, EmptyArgumentsAreRefused) {
    char output[] = "untouched";
    uint32_t length = 77;
    EXPECT_EQ(KORV_FAILURE, GetKeyValue(nullptr, output, 9, &length, '='));
    EXPECT_EQ(KORV_FAILURE, GetKeyValue("K=v", nullptr, 9, &length, '='));
    EXPECT_EQ(KORV_FAILURE, GetKeyValue(nullptr, nullptr, 9, nullptr, '='));
    EXPECT_STREQ("untouched", output);
    EXPECT_EQ(77u, length);
}

TEST_F(KeyValue, EveryShortTextIsParsedAsTheStepsSay) {
    forEachText<char>(" =a\t\xE9", 6, [&](const std::string& text) {
        for (const char separator : {'=', ' ', '\xE9', '\0'}) {
            for (const int32_t maxCount : {INT32_MIN, -1, 0, 1, 2, 3, 5, INT32_MAX}) {
                expectValue(text, maxCount, separator);
                if (HasFatalFailure()) return;
            }
        }
    });
    EXPECT_TRUE(source_.intact());
    EXPECT_TRUE(output_.intact());
}

TEST_F(KeyValue, LongTextsAreParsedAtEveryLength) {
    std::mt19937 random(5);
    for (std::size_t key = 0; key <= 35; ++key) {
        for (std::size_t value = 0; value <= 70; ++value) {
            std::string text(key, 'k');
            text += '=' + std::string(random() % 3 * (random() % 30), ' ');
            const std::size_t begin = text.size();
            for (std::size_t i = 0; i < value; ++i) text += random() % 3 ? 'v' : ' ';
            text += std::string(random() % 3 * (random() % 30), ' ');
            const auto around = static_cast<int32_t>(text.size() - begin);
            for (const int32_t maxCount :
                 {around - 1, around, around + 1, static_cast<int32_t>(random() % 80)}) {
                expectValue(text, maxCount, '=');
                if (HasFatalFailure()) return;
            }
        }
    }
}

}  // namespace
