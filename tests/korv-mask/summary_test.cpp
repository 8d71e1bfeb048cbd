// The counts of a run and their JSON form.
#include "summary.h"

#include <gtest/gtest.h>

#include <iterator>

namespace {

tool::ColumnSummary card() {
    tool::ColumnSummary column;
    column.number = 1;
    column.name = "CARD";
    column.action = "CCN";
    column.values = 3;
    column.masked = 2;
    column.failed = {{2, 1}};
    return column;
}

std::string named(const std::string& name) {
    tool::Summary summary;
    summary.columns.push_back({});
    summary.columns[0].name = name;
    const std::string json = toJson(summary);
    const std::string before = "\"name\":";
    const size_t start = json.find(before) + before.size();
    return json.substr(start, json.find(",\"action\"") - start);
}

TEST(Summary, HasTheDocumentedForm) {
    const tool::Summary summary = {1, 3, 3, {card()}};
    EXPECT_EQ(
        "{\"format\":1,\"status\":1,\"rows_in\":3,\"rows_out\":3,\"columns\":[{\"number\":1,"
        "\"name\":"
        "\"CARD\",\"action\":\"CCN\",\"values\":3,\"nulls\":0,\"masked\":2,\"unchanged\":0,"
        "\"failed\":"
        "{\"2\":1}}]}\n",
        toJson(summary));
}

TEST(Summary, ListsAreSeparated) {
    tool::Summary summary = {0, UINT64_MAX, 0, {card(), {}}};
    summary.columns[0].failed = {{9003, UINT64_MAX - 1}, {1, 1}};
    summary.columns[1].formulas = 4;
    const std::string json = toJson(summary);
    EXPECT_NE(json.npos, json.find("\"rows_in\":18446744073709551615,"));
    EXPECT_NE(json.npos, json.find("\"failed\":{\"1\":1,\"9003\":18446744073709551614}},{"));
    EXPECT_NE(json.npos, json.find("\"failed\":{},\"formulas\":4}]}\n"));
    EXPECT_EQ("{\"format\":1,\"status\":2,\"rows_in\":0,\"rows_out\":0,\"columns\":[]}\n",
              tool::toJson({2, 0, 0, {}}));
}

TEST(Summary, NamesAreEscaped) {
    EXPECT_EQ("\"\\\"\\\\/\"", named("\"\\/"));
    EXPECT_EQ("\"\\u000a\\u0009\\u001b\\u007f\"", named("\n\t\x1B\x7F"));
    EXPECT_EQ("\"\\u0000\"", named(std::string(1, '\0')));
    EXPECT_EQ("\"Größe €😀\"", named("Größe €😀"));
    EXPECT_EQ("\"a\\ufffdb\\ufffd\\ufffd\"", named("a\xFF"
                                                   "b\xE2\x82"));
    EXPECT_EQ("\"\"", named(""));
}

TEST(Summary, AddsStatisticsUp) {
    const KorvMaskFailures failures[] = {{1, 2}, {7, 3}};
    KorvMaskStatistics statistics = {};
    statistics.values = 100;
    statistics.nulls = 10;
    statistics.masked = 95;
    statistics.unchanged = 20;
    statistics.formulas = 30;
    statistics.failed = 5;
    statistics.failures = failures;
    statistics.failureCount = static_cast<uint32_t>(std::size(failures));
    tool::ColumnSummary column = card();
    column.add(statistics);
    column.add(statistics);
    EXPECT_EQ(203u, column.values);
    EXPECT_EQ(20u, column.nulls);
    EXPECT_EQ(192u, column.masked);
    EXPECT_EQ(40u, column.unchanged);
    EXPECT_EQ(60u, column.formulas);
    EXPECT_EQ((std::map<uint32_t, uint64_t>{{1, 4}, {2, 1}, {7, 6}}), column.failed);
    EXPECT_EQ(11u, column.failedValues());

    column.add(card());
    EXPECT_EQ(206u, column.values);
    EXPECT_EQ(194u, column.masked);
    EXPECT_EQ(12u, column.failedValues());
    const tool::Summary summary = {1, 0, 0, {column, card()}};
    EXPECT_EQ(13u, summary.failedValues());
}

TEST(Summary, NumbersForPeopleAreGrouped) {
    EXPECT_EQ("0", tool::grouped(0));
    EXPECT_EQ("999", tool::grouped(999));
    EXPECT_EQ("1,000", tool::grouped(1000));
    EXPECT_EQ("18,446,744,073,709,551,615", tool::grouped(UINT64_MAX));
}

}  // namespace
