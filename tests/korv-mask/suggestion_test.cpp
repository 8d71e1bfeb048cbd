// Rules to start from: what is recognised in columns with errors in them, and what is not.
#include "suggestion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>

#include "korv/mask.h"
#include "shape.h"
#include "text/utf8_text.h"

namespace {

using tool::ColumnGuess;

constexpr int kRows = 10000;

class Values {
  public:
    int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }
    int between(int first, int last) { return first + below(last - first + 1); }
    std::string digits(int count) {
        std::string text;
        for (int i = 0; i < count; ++i) text += static_cast<char>('0' + below(10));
        return text;
    }
    template <size_t Count>
    const char* oneOf(const char* const (&texts)[Count]) {
        return texts[below(static_cast<int>(Count))];
    }

  private:
    std::mt19937 random_{4711};
};

// A number with the check digit of cards.
std::string withCheckDigit(const std::string& digits) {
    int sum = 0;
    for (size_t i = 0; i < digits.size(); ++i) {
        const int product = (digits[digits.size() - 1 - i] - '0') * (i % 2 == 0 ? 2 : 1);
        sum += product / 10 + product % 10;
    }
    return digits + static_cast<char>('0' + (10 - sum % 10) % 10);
}

std::string card(Values& values) {
    const std::string number = withCheckDigit("4" + values.digits(14));
    switch (values.below(3)) {
        case 0:
            return number;
        case 1:
            return number.substr(0, 4) + " " + number.substr(4, 4) + " " + number.substr(8, 4) +
                   " " + number.substr(12);
        default:
            return number.substr(0, 4) + "-" + number.substr(4, 6) + "-" + number.substr(10);
    }
}

std::string eMail(Values& values) {
    static const char* const kUsers[] = {"anna.weiss", "j_doe", "o'neill", "x+tag", "李"};
    static const char* const kDomains[] = {"mail.example", "firma.co.example", "münchen.example"};
    return values.oneOf(kUsers) + values.digits(3) + "@" + values.oneOf(kDomains);
}

std::string personName(Values& values) {
    static const char* const kNames[] = {"Anna", "Zoë", "O'Neill", "Łukasz", "van der Berg", "李"};
    return values.oneOf(kNames);
}

// Every fiftieth value is an error.
ColumnGuess column(const std::string& name, const std::function<std::string(Values&)>& make,
                   int rows = kRows) {
    static const char* const kErrors[] = {"", "n/a", "unknown", "see note 7", "0", "???", "\xFF"};
    Values values;
    ColumnGuess guess(name);
    for (int i = 0; i < rows; ++i) guess.add(i % 50 == 7 ? values.oneOf(kErrors) : make(values));
    return guess;
}

std::string rule(const ColumnGuess& guess) {
    return guess.suggestion().rule;
}

// "9,8nn of 9,9nn values": 2 % are errors, and about 1 in 7 of these is empty.
void expectCounts(const std::string& reason) {
    EXPECT_TRUE(reason.starts_with("9,8") && reason.find(" of 9,9") == 5) << reason;
}

TEST(Suggestion, Cards) {
    const ColumnGuess guess = column("X", card);
    EXPECT_EQ("CCN, secret=?", rule(guess));
    EXPECT_NE(std::string::npos,
              guess.suggestion().reason.find("values are card numbers with a correct check digit"));
    expectCounts(guess.suggestion().reason);
}

TEST(Suggestion, NumbersWithoutTheirCheckDigitAreNotCards) {
    int64_t order = 4000000000000;
    EXPECT_EQ("NID, secret=?",
              rule(column("ORDER", [&](Values&) { return std::to_string(order++); })));
    EXPECT_EQ("NID, secret=?", rule(column("X", [](Values& v) { return "4" + v.digits(15); })));
    // 16 digits, and too many or too few of them.
    EXPECT_EQ("?", rule(column("X", [](Values& v) {
                  return withCheckDigit(v.digits(v.below(2) == 0 ? 10 : 19));
              })));
    EXPECT_EQ("?", rule(column("X", [](Values&) { return "0000000000000000"; })));
}

TEST(Suggestion, AFewCardsAreTooFew) {
    ColumnGuess guess("CARD");
    Values values;
    for (int i = 0; i < 4; ++i) guess.add(withCheckDigit("4" + values.digits(14)));
    EXPECT_EQ("?", rule(guess));
    guess.add(withCheckDigit("4" + values.digits(14)));
    EXPECT_EQ("CCN, secret=?", rule(guess));
    ColumnGuess constant("CARD");
    for (int i = 0; i < 1000; ++i) constant.add("4556737586899855");
    EXPECT_EQ("?", rule(constant));
    EXPECT_EQ(
        "not recognised; 1,000 of 1,000 values are card numbers with a correct check digit, which "
        "is not enough for a rule",
        constant.suggestion().reason);
}

TEST(Suggestion, EMails) {
    const ColumnGuess guess = column("CITY", eMail);
    EXPECT_EQ("EML, secret=?", rule(guess));
    expectCounts(guess.suggestion().reason);
    for (const char* other : {"@handle", "user@", "a@b@c.example", "a b@c.example", "user@host",
                              "a@.example", "a@example."}) {
        EXPECT_EQ("?", rule(column("X", [&](Values&) { return other; }))) << other;
    }
}

const char* const kMonths[] = {"January",   "February", "March",    "April",
                               "May",       "June",     "July",     "August",
                               "September", "October",  "November", "December"};

std::string written(std::string_view format, int year, int month, int day) {
    const auto twoDigits = [](int n) { return (n < 10 ? "0" : "") + std::to_string(n); };
    const std::pair<std::string_view, std::string> parts[] = {
        {"YYYY", std::to_string(year)},
        {"MONTH", kMonths[month - 1]},
        {"MON", std::string(kMonths[month - 1]).substr(0, 3)},
        {"MM", twoDigits(month)},
        {"M", std::to_string(month)},
        {"DD", twoDigits(day)},
        {"D", std::to_string(day)}};
    std::string text;
    while (!format.empty()) {
        const auto part = std::find_if(std::begin(parts), std::end(parts),
                                       [&](const auto& p) { return format.starts_with(p.first); });
        text += part == std::end(parts) ? std::string(1, format[0]) : part->second;
        format.remove_prefix(part == std::end(parts) ? 1 : part->first.size());
    }
    return text;
}

TEST(Suggestion, DatesOfEachFormat) {
    for (const std::string_view format : provider::kCommonDateFormats) {
        for (const char* time : {"", " 23:59:00", "T00:00:00Z"}) {
            const ColumnGuess guess = column("X", [&](Values& v) {
                return written(format, v.between(1930, 2020), v.between(1, 12), v.between(1, 28)) +
                       time;
            });
            const bool quoted = format.find_first_of(", ") != format.npos;
            const std::string operand = "format=" + std::string(format);
            EXPECT_EQ("AGE, secret=?, range=?, " + (quoted ? '"' + operand + '"' : operand),
                      rule(guess));
            expectCounts(guess.suggestion().reason);
        }
    }
}

TEST(Suggestion, DatesThatFitTwoFormatsMustBeDecided) {
    // The first days of months, and errors.
    const ColumnGuess guess = column("X", [](Values& v) {
        return written("MM/DD/YYYY", v.between(1930, 2020), v.between(1, 12),
                       v.below(100) == 0 ? 25 : 1);
    });
    EXPECT_EQ("AGE, secret=?, range=?, format=?", rule(guess));
    const std::string reason = guess.suggestion().reason;
    EXPECT_NE(reason.npos, reason.find("MM/DD/YYYY, and 9,6")) << reason;
    EXPECT_NE(reason.npos, reason.find("of the form DD/MM/YYYY; write the format that is meant"));

    // One date in twenty tells them apart.
    EXPECT_EQ("AGE, secret=?, range=?, format=DD-MM-YYYY", rule(column("X", [](Values& v) {
                  return written("DD-MM-YYYY", v.between(1930, 2020), v.between(1, 12),
                                 v.below(20) == 0 ? 25 : v.between(1, 12));
              })));
}

TEST(Suggestion, NumbersThatAreNoDates) {
    for (const char* format : {"YYYY-DD-MM", "DDMMYYYY", "YY-MM-DD"}) {
        const std::string found = rule(column("X", [&](Values& v) {
            return written(format, v.between(1930, 2020), v.between(1, 12), v.between(13, 28));
        }));
        EXPECT_FALSE(found.starts_with("AGE")) << format;
    }
    // 8 digits that happen to be dates of the years 1000 to 1799.
    EXPECT_EQ("NID, secret=?", rule(column("X", [](Values& v) {
                  return written("YYYYMMDD", v.between(1000, 1799), v.between(1, 12),
                                 v.between(1, 28));
              })));
    EXPECT_EQ(
        "AGE, secret=?, range=?, format=YYYY-MM-DD",
        rule(column("X", [](Values& v) { return v.below(2) != 0 ? "9999-12-31" : "1984-05-17"; })));
}

TEST(Suggestion, TelephoneNumbers) {
    const auto international = [](Values& v) {
        return "+4" + v.digits(1) + " " + v.digits(3) + " " + v.digits(v.between(5, 7));
    };
    EXPECT_EQ("NID, secret=?", rule(column("X", international)));
    EXPECT_EQ("NID, secret=?", rule(column("X", [](Values& v) {
                  return "(" + v.digits(3) + ") " + v.digits(3) + "-" + v.digits(4);
              })));
    const auto local = [](Values& v) {
        return "0" + v.digits(3) + "/" + v.digits(v.between(4, 8));
    };
    EXPECT_EQ("?", rule(column("X", local)));
    for (const char* name : {"PHONE", "Home Phone", "mobilePhone", "TELEPHONE1", "tel.", "Fax",
                             "Telefonnummer", "Mobiltelefon", "téléphone", "TÉLÉPHONE_PORTABLE",
                             "móvil", "cellulare", "telemóvel", "GSM", "komórka", "puhelin"}) {
        const ColumnGuess guess = column(name, local);
        EXPECT_EQ("NID, secret=?", rule(guess)) << name;
        EXPECT_EQ(0u, guess.suggestion().reason.find("the column's name stands for telephone"));
    }
    EXPECT_EQ("?", rule(column("PHONE", [](Values& v) { return "ext. " + v.digits(3); })));
    EXPECT_EQ("?", rule(column("HOTEL", local)));
}

TEST(Suggestion, IdentityNumbers) {
    const std::function<std::string(Values&)> kinds[] = {
        [](Values& v) { return v.digits(3) + "-" + v.digits(2) + "-" + v.digits(4); },
        [](Values& v) { return v.digits(11); },
        [](Values& v) { return v.digits(8) + static_cast<char>('A' + v.below(26)); },
        [](Values& v) {
            return v.digits(3) + "." + v.digits(3) + "." + v.digits(3) + "-" + v.digits(2);
        },
        [](Values& v) {
            return "AB " + v.digits(2) + " " + v.digits(2) + " " + v.digits(2) + " C";
        }};
    for (const auto& kind : kinds) {
        const ColumnGuess guess = column("X", kind);
        EXPECT_EQ("NID, secret=?", rule(guess));
        EXPECT_NE(std::string::npos,
                  guess.suggestion().reason.find("have the same layout of digits"));
        EXPECT_EQ("NID, secret=?", rule(column("X", kind, 20)));
        EXPECT_EQ("?", rule(column("X", kind, 19)));
    }
    // Of several layouts, but named so.
    for (const char* name : {"ID", "customerId", "Tax ID", "Kontonummer", "Personalausweis", "DNI",
                             "compte", "fødselsnummer"}) {
        EXPECT_EQ("NID, secret=?",
                  rule(column(name, [](Values& v) { return v.digits(v.between(4, 9)); })))
            << name;
    }
}

TEST(Suggestion, OtherNumbersAreNotIdentityNumbers) {
    const std::function<std::string(Values&)> kinds[] = {
        [](Values& v) { return std::to_string(v.between(1, 99999)); },                  // amounts
        [](Values& v) { return std::to_string(v.between(10000, 99999)) + ".50"; },      // prices
        [](Values& v) { return "7" + std::to_string(v.between(10000, 10099)); },        // codes
        [](Values& v) { return v.digits(2) + ":" + v.digits(2) + ":" + v.digits(2); },  // times
        [](Values& v) { return "-" + v.digits(8); }};
    for (const auto& kind : kinds) EXPECT_EQ("?", rule(column("VALUE", kind)));
    EXPECT_EQ("?", rule(column("ID", [](Values& v) { return v.digits(2); })));
}

TEST(Suggestion, NamesAndPlacesByTheHeader) {
    const char* const kNames[] = {"NAME",      "First Name", "lastName", "SURNAME",    "given_name",
                                  "Vorname",   "NACHNAME",   "Prénom",   "nom",        "Nombre",
                                  "apellidos", "Cognome",    "NOME",     "achternaam", "imię",
                                  "Nazwisko",  "Jméno",      "PŘÍJMENÍ", "Keresztnév", "sukunimi",
                                  "Förnamn",   "etternavn"};
    for (const char* name : kNames) {
        const ColumnGuess guess = column(name, personName);
        EXPECT_EQ("HASH, secret=?, file=?", rule(guess)) << name;
        EXPECT_NE(std::string::npos, guess.suggestion().reason.find("the name of a person"))
            << name;
    }
    const char* const kPlaces[] = {"CITY",     "city_name",  "BirthPlace",  "Street 1",
                                   "Wohnort",  "STADT",      "Hauptstraße", "Rechnungsadresse",
                                   "ville",    "Ciudad",     "dirección",   "Città",
                                   "endereço", "woonplaats", "Miasto",      "ULICE",
                                   "Város",    "kaupunki",   "Gata"};
    for (const char* name : kPlaces) {
        const ColumnGuess guess = column(name, personName);
        EXPECT_EQ("HASH, secret=?, file=?", rule(guess)) << name;
        EXPECT_NE(std::string::npos, guess.suggestion().reason.find("stands for a place")) << name;
    }
    for (const char* name : {"X", "SPORT", "NAMED", "VELOCITY", "ADDRESSEE_COUNT", ""}) {
        EXPECT_EQ("?", rule(column(name, personName))) << name;
    }
    EXPECT_EQ("?", rule(column("NAME", [](Values& v) { return v.digits(3) + "a"; })));
    EXPECT_EQ("?", rule(column("IP_ADDRESS", [](Values& v) {
                  return v.digits(v.between(1, 3)) + "." + v.digits(v.between(1, 3));
              })));
}

TEST(Suggestion, WithoutValuesNothingIsKnown) {
    ColumnGuess guess("CARD");
    EXPECT_EQ("?", rule(guess));
    EXPECT_EQ("there are no rows", guess.suggestion().reason);
    for (int i = 0; i < 30; ++i) guess.add("");
    EXPECT_EQ("?", rule(guess));
    EXPECT_EQ("all rows are empty", guess.suggestion().reason);
}

TEST(Suggestion, HalfAColumnIsMentionedOnly) {
    const ColumnGuess guess =
        column("X", [](Values& v) { return v.below(10) < 7 ? eMail(v) : "none"; });
    EXPECT_EQ("?", rule(guess));
    const std::string reason = guess.suggestion().reason;
    EXPECT_NE(reason.npos, reason.find("are e-mail addresses, which is not enough for a rule"));
    EXPECT_EQ("not recognised",
              column("X", [](Values& v) { return v.below(10) < 4 ? eMail(v) : "none"; })
                  .suggestion()
                  .reason);
}

std::vector<ColumnGuess> named(const std::vector<std::string>& names) {
    return {names.begin(), names.end()};
}

TEST(SuggestedRules, AreWrittenOneBelowTheOther) {
    std::vector<ColumnGuess> columns = {column("CARD", card), ColumnGuess("NOTE")};
    const std::string rules = suggestRules(columns, "a.csv");
    EXPECT_EQ(0u, rules.find("# Rules for a.csv, suggested from its header and its first rows.\n"));
    const std::string reason = columns[0].suggestion().reason;
    EXPECT_TRUE(rules.ends_with("\n\n# CARD: " + reason +
                                "\nCARD = CCN, secret=?\n\n# NOTE: there are no rows\nNOTE = ?\n"))
        << rules;
}

TEST(SuggestedRules, QuoteOrNumberNames) {
    const struct {
        const char* name;
        const char* written;
    } cases[] = {
        {"CARD", "CARD"},
        {"e-mail_2.x", "e-mail_2.x"},
        {"First Name", "\"First Name\""},
        {" A ", "\" A \""},
        {"k=v", "\"k=v\""},
        {"c,d", "\"c,d\""},
        {"a \"b\"", "\"a \\\"b\\\"\""},
        {"\\", "\"\\\\\""},
        {"@3", "\"@3\""},
        {"#x", "\"#x\""},
        {"A*", "\"A*\""},
        {"A?", "\"A?\""},
        {"Größe", "\"Größe\""},
        {"Name", "\"Name\""},
        {"NAME", "\"NAME\""},
        {"TWICE", "@16"},
        {"TWICE", "@17"},
        {"", "@18"},
        {"two\nlines", "@19"},
        {"a\tb", "@20"},
        {"x\u202E", "@21"},
        {"S", "\"S\""},
        {"\u017F", "\"\u017F\""},  // the long s, whose upper case is S
        {"@24", "@24"},
    };
    std::vector<std::string> names;
    std::vector<const char*> header;
    for (const auto& c : cases) {
        names.push_back(c.name);
        header.push_back(c.name);
    }
    std::string rules = suggestRules(named(names), "a.csv");
    for (const auto& c : cases) {
        EXPECT_NE(rules.npos, rules.find("\n" + std::string(c.written) + " = ?\n")) << c.name;
    }

    // The engine refuses them until every ? is replaced. Then it reads the names as they are meant.
    KorvMaskSettings settings = {};
    settings.size = sizeof settings;
    settings.columns = header.data();
    settings.columnCount = static_cast<uint32_t>(header.size());
    settings.rules = rules.c_str();
    KorvMask* mask = nullptr;
    EXPECT_EQ(KORV_MASK_BAD_RULES, KorvMaskOpen(&settings, &mask));
    KorvMaskClose(mask);
    for (size_t at; (at = rules.find(" = ?\n")) != rules.npos;) rules.replace(at, 5, " = KEEP\n");
    settings.rules = rules.c_str();
    EXPECT_EQ(KORV_MASK_SUCCESS, KorvMaskOpen(&settings, &mask));
    uint32_t line = 0;
    for (uint32_t i = 0; i < settings.columnCount; ++i) {
        const KorvMaskColumn* column = KorvMaskGetColumn(mask, i);
        ASSERT_NE(nullptr, column);
        EXPECT_LT(line, column->rulesLine);
        line = column->rulesLine;
    }
    KorvMaskClose(mask);
}

TEST(SuggestedRules, HoldNoValueAndNoControlCharacter) {
    Values values;
    std::vector<std::string> clear;
    std::vector<ColumnGuess> columns =
        named({"CARD", "E-MAIL", "NAME", "BORN", "ID", "\x1B[31m\xFF\r\n\u202E", "X"});
    for (int i = 0; i < 300; ++i) {
        const std::string row[] = {card(values),
                                   eMail(values),
                                   "Petrosilius" + values.digits(2),
                                   written("D MON YYYY", 1950 + i % 50, i % 12 + 1, i % 28 + 1),
                                   values.digits(9),
                                   "\x1B\xFF" + values.digits(5),
                                   "Gänseburg"};
        for (size_t k = 0; k < columns.size(); ++k) {
            columns[k].add(row[k]);
            clear.push_back(row[k]);
        }
    }
    std::string rules = suggestRules(columns, "\x1B]0;x\a.csv");
    for (const std::string& value : clear) EXPECT_EQ(rules.npos, rules.find(value)) << value;
    EXPECT_EQ(rules.size(), text::validUtf8Length(rules.data(), rules.size()));
    std::erase(rules, '\n');
    EXPECT_EQ(rules, tool::printable(rules));
}

TEST(SuggestedRules, NeverKeepAColumn) {
    std::vector<ColumnGuess> columns = {column("A", card), column("B", personName),
                                        ColumnGuess("KEEP_ME"), column("", eMail)};
    const std::string rules = suggestRules(columns, "a.csv");
    EXPECT_EQ(rules.npos, rules.find("= KEEP"));
}

}  // namespace
