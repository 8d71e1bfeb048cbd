// The page: every text escaped, bars in proportion, no value.
#include "html_page.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

size_t occurrences(const std::string& text, const std::string& part) {
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

bool contains(const std::string& text, const std::string& part) {
    return occurrences(text, part) > 0;
}

tool::PageColumn column(uint32_t number, const std::string& name, const std::string& action,
                        const std::string& reason) {
    tool::PageColumn column;
    column.summary.number = number;
    column.summary.name = name;
    column.summary.action = action;
    column.summary.values = 10000;
    column.summary.masked = 10000;
    column.reason = reason;
    return column;
}

// A run with everything that a page can show.
tool::Page samplePage() {
    tool::Page page;
    page.input = "customers.csv";
    page.summary.status = 1;
    page.summary.rowsIn = 10000;
    page.summary.rowsOut = 9988;

    page.columns.push_back(column(1, "ID", "KEEP", "rule ID = KEEP (rules.txt:2)"));
    page.columns.back().samples = {{"999999", "999999"}};

    page.columns.push_back(column(2, "CARD", "CCN", "rule CARD = CCN (rules.txt:3)"));
    tool::PageColumn& card = page.columns.back();
    card.summary.values = 9400;
    card.summary.nulls = 600;
    card.summary.failed = {{1, 12}, {2, 388}};
    card.summary.masked = 9000;
    card.summary.unchanged = 1500;
    card.errorTexts = {{1, "a character that no card number has"}, {2, "too few digits"}};
    card.samples = {{"9999-9999-9999-9999", "9999-9999-9999-9999"},
                    {"9999 9999 9999 9999 999", "9999 9999 9999 9999 999"}};

    page.columns.push_back(column(3, "E-mail of the customer's representative", "EML",
                                  "rule \"E-mail*\" = EML (rules.txt:4)"));
    page.columns.back().summary.failed = {{9003, 1}};
    page.columns.back().summary.masked = 9999;
    page.columns.back().errorTexts = {{9003, "a result's length that cannot be"}};
    page.columns.back().samples = {{"aaaaaaa.aaaaaaaaaaaaaaaa99@aaaaaaaaaaaaa...",
                                    "aaaaaaa.aaaaaaaaaaaaaaaa99@aaaaaa.aaaaaa"}};

    page.columns.push_back(
        column(4, "<script>alert(1)</script>", "HASH", "rule @4 = HASH (rules.txt:5)"));
    page.columns.back().summary.formulas = 7;
    page.columns.back().samples = {{"Aaaa & <a>", ""}};

    page.columns.push_back(column(5, "NOTE", "DROP", "rule NOTE = DROP (rules.txt:6)"));
    page.columns.back().samples = {{"Aaaaa aa", std::nullopt}};
    page.columns.push_back(column(6, "STRASSE_UND_HAUSNUMMER_DES_RECHNUNGSEMPFAENGERS", "AFF",
                                  "rule STRASSE* = AFF (rules.txt:7)"));
    page.columns.back().summary.masked = 0;
    page.columns.back().summary.values = 0;
    page.columns.back().summary.nulls = 10000;
    return page;
}

TEST(HtmlPage, SaysWhatEachColumnGotAndWhy) {
    const std::string html = toHtml(samplePage());
    EXPECT_TRUE(contains(html, "<title>Masking of customers.csv</title>"));
    EXPECT_TRUE(contains(html, "but 401 values failed."));
    EXPECT_TRUE(contains(html, "<dt>Rows written</dt><dd>9,988</dd>"));
    EXPECT_TRUE(contains(html, "<dt>Columns in clear</dt><dd>1</dd>"));
    EXPECT_TRUE(contains(html, "<bdi>rule CARD = CCN (rules.txt:3)</bdi>"));
    EXPECT_TRUE(contains(html, "</svg>7,500 masked</li>"));
    EXPECT_TRUE(contains(html, "</svg>1,500 unchanged</li>"));
    EXPECT_TRUE(contains(html, "</svg>400 failed</li>"));
    EXPECT_TRUE(contains(html, "</svg>600 empty</li>"));
    EXPECT_TRUE(contains(html, "</svg>10,000 in clear</li>"));
    EXPECT_TRUE(contains(html, "left out of the output"));
    EXPECT_TRUE(contains(html, ">(left out)<"));
    EXPECT_TRUE(contains(html, ">(empty)<"));
    EXPECT_TRUE(contains(html, "7 masked values begin with ="));
    EXPECT_TRUE(contains(html, "CCN error 2: <bdi>too few digits</bdi>"));
    EXPECT_TRUE(contains(html, "</svg>1 value</li>"));
}

TEST(HtmlPage, StatusIsToldInWords) {
    tool::Page page;
    EXPECT_TRUE(contains(toHtml(page), "No value failed."));
    page.summary.status = 2;
    EXPECT_TRUE(contains(toHtml(page), "There is no output."));
}

TEST(HtmlPage, TextsAreEscaped) {
    tool::Page page = samplePage();
    const std::string hostile = "</title></bdi>'\"&<script src=//x>\x01\xFF\u202E";
    page.input = hostile;
    page.columns[0].summary.name = hostile;
    page.columns[0].summary.action = hostile;
    page.columns[0].reason = hostile;
    page.columns[1].errorTexts[2] = hostile;
    page.columns[1].samples = {{hostile, hostile}};
    const std::string html = toHtml(page);
    EXPECT_FALSE(contains(html, "<script"));
    EXPECT_FALSE(contains(html, "</bdi>'"));
    EXPECT_FALSE(contains(html, "\x01"));
    EXPECT_FALSE(contains(html, "\xFF"));
    EXPECT_FALSE(contains(html, "\u202E"));
    const std::string harmless =
        "&lt;/title&gt;&lt;/bdi&gt;&#39;&quot;&amp;&lt;script src=//x&gt;\uFFFD\uFFFD\uFFFD";
    EXPECT_EQ(7u, occurrences(html, harmless));
}

TEST(HtmlPage, NothingIsLoadedOrRun) {
    const std::string html = toHtml(samplePage());
    EXPECT_TRUE(contains(html, "content=\"default-src 'none'; style-src 'unsafe-inline'\""));
    for (const char* part : {"http:", "https:", "<script", "<link", "<img", "url(", "@import"}) {
        EXPECT_FALSE(contains(html, part)) << part;
    }
}

TEST(HtmlPage, OnlyTheShapesOfValuesAreShown) {
    tool::Page page = samplePage();
    page.columns[1].samples = {{"4556-7375-8689-9855", "Müller"}};
    const std::string html = toHtml(page);
    EXPECT_FALSE(contains(html, "4556"));
    EXPECT_FALSE(contains(html, "ller"));
    EXPECT_TRUE(contains(html,
                         "<td><code><bdi>9999-9999-9999-9999</bdi></code></td>"
                         "<td><code><bdi>Aaaaaa</bdi></code></td>"));
}

// The widths of the segments of a page's first bar.
std::vector<int> widths(const std::string& html) {
    const size_t start = html.find("class=\"bar\"");
    const std::string bar = html.substr(start, html.find("</svg>", start) - start);
    std::vector<int> result;
    const std::string attribute = " width=\"";
    for (size_t at = 0; (at = bar.find(attribute, at)) != bar.npos;) {
        at += attribute.size();
        result.push_back(std::stoi(bar.substr(at)));
    }
    return result;
}

TEST(HtmlPage, BarsAreInProportionAndFull) {
    tool::Page page;
    page.columns.push_back(column(1, "A", "CCN", ""));
    tool::ColumnSummary& summary = page.columns[0].summary;
    EXPECT_EQ(std::vector<int>{1000}, widths(toHtml(page)));

    summary.values = 750;
    summary.masked = 500;
    summary.unchanged = 250;
    summary.failed = {{2, 250}};
    summary.nulls = 250;
    EXPECT_EQ((std::vector<int>{250, 250, 250, 250}), widths(toHtml(page)));

    // One value in 10^18 can be seen.
    summary.values = summary.masked = 1000000000000000000;
    summary.unchanged = summary.nulls = 0;
    summary.failed = {{2, 1}};
    const std::vector<int> extreme = widths(toHtml(page));
    ASSERT_EQ(2u, extreme.size());
    EXPECT_EQ(8, extreme[1]);
    EXPECT_EQ(992, extreme[0]);
}

TEST(HtmlPage, WithoutValuesThereIsNoBar) {
    tool::Page page;
    page.columns.push_back(column(1, "A", "CCN", ""));
    page.columns[0].summary.values = page.columns[0].summary.masked = 0;
    const std::string html = toHtml(page);
    EXPECT_FALSE(contains(html, "<svg"));
    EXPECT_TRUE(contains(html, "no values"));
    EXPECT_FALSE(contains(html, "Failed values"));
    EXPECT_FALSE(contains(html, "Shapes before and after"));
}

}  // namespace
