#include "base/text.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>

namespace base {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

template <class Input, class Expected>
struct Row {
    const char* name;
    Input input;
    Expected expected;
};

TEST(NumberText, WritesLikeTheFrenchLocale) {
    const Row<double, const char*> rows[] = {
        {"nan", kNaN, "NaN"},
        {"negative zero", -0.0, "0"},
        {"whole", 850, "850"},
        {"decimal comma", 8.3, "8,3"},
        {"negative fraction", -0.25, "-0,25"},
        {"noise hidden by 15 digits", 0.1 + 0.2, "0,3"},
        {"fifteen digits", 1.0 / 3, "0,333333333333333"},
        {"rounds into the exponent form", 999999999999999.9, "1E+15"},
        {"small", 1.5e-5, "1,5E-05"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(numberText(row.input), row.expected) << row.name;
}

TEST(ParseNumber, AcceptsOnlySignDigitsAndOneSeparator) {
    const Row<const char*, std::optional<double>> rows[] = {
        {"empty", "", std::nullopt},
        {"sign alone", "-", std::nullopt},
        {"exponent", "1e5", std::nullopt},
        {"two separators", "1,2,3", std::nullopt},
        {"inner blank", "1 2", std::nullopt},
        {"comma", "8,5", 8.5},
        {"point", "8.5", 8.5},
        {"leading separator", ",5", 0.5},
        {"trailing separator", "5,", 5.0},
        {"blanks around", " 12 ", 12.0},
        {"minus", "-0,25", -0.25},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(parseNumber(row.input), row.expected) << row.name;
        EXPECT_EQ(isNumeric(row.input), row.expected.has_value()) << row.name;
    }
    const std::string huge(100000, '9');
    EXPECT_TRUE(isNumeric(huge));
    EXPECT_EQ(parseNumber("-" + huge), -kInf);
    EXPECT_EQ(parseNumber("0," + std::string(100000, '0') + "1"), 0.0);
}

TEST(CompareValues, NumbersExactlyElseBytes) {
    const Row<std::pair<const char*, const char*>, int> rows[] = {
        {"text against number is bytes", {"abc", "10"}, 1},
        {"leading zeros", {"08", "8"}, 0},
        {"comma and point, trailing zero", {"8,50", "8.5"}, 0},
        {"signed zero", {"-0", "0,000"}, 0},
        {"more integer digits", {"10", "9"}, 1},
        {"longer fraction", {"1,25", "1,2"}, 1},
        {"negatives reversed", {"-10", "-9"}, -1},
        {"beyond double precision", {"000120000100000000100851", "120000100000000100850"}, 1},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(compareValues(row.input.first, row.input.second), row.expected) << row.name;
        EXPECT_EQ(compareValues(row.input.second, row.input.first), -row.expected) << row.name;
    }
}

TEST(Rounding, IntFloorsAndHalvesGoToEven) {
    EXPECT_EQ(Int(-0.5), -1.0);
    const Row<double, std::int64_t> rows[] = {
        {"nan", kNaN, 0},
        {"too large", 1e300, std::numeric_limits<std::int64_t>::max()},
        {"half down to even", 2.5, 2},
        {"half up to even", 3.5, 4},
        {"negative half", -2.5, -2},
    };
    for (const auto& row : rows)
        EXPECT_EQ(roundHalfEven(row.input), row.expected) << row.name;
    const Row<std::string, int> entiers[] = {
        {"no number reads as 0", "abc", 0},
        {"decimal comma, half to even", "2,5", 2},
        {"a table's integer", "850", 850},
    };
    for (const auto& row : entiers)
        EXPECT_EQ(toInteger(row.input), row.expected) << row.name;
    EXPECT_EQ(formatFixed(12.5, -1), "12");
    EXPECT_EQ(formatFixed(-0.001, 2), "0,00");
    EXPECT_EQ(formatFixed(12.5, 2), "12,50");
}

TEST(Cuts, CountCodePointsAndNeverSplitOne) {
    const std::string name = "Hélène";
    const std::string broken = "a\xE9z\xFE";  // a Latin-1 byte and a record mark: one character each
    EXPECT_EQ(Len(name), 6u);
    EXPECT_EQ(Len("\xF0\x9F\x98\x80\xE2\x82"), 3u);  // an emoji, then a truncated sequence
    const Row<std::string, const char*> rows[] = {
        {"mid start before 1", Mid("abcdef", -5, 2), "ab"},
        {"mid past the end", Mid("abcdef", 9), ""},
        {"left accented", Left(name, 2), "Hé"},
        {"right digits", Right("0000850", 4), "0850"},
        {"right accented", Right(name, 4), "lène"},
        {"mid", Mid("abcdef", 2, 3), "bcd"},
        {"invalid byte alone", Mid(broken, 2, 1), "\xE9"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.input, row.expected) << row.name;
}

TEST(UCaseAndZeroPad, FrenchLettersAndPaddedDigits) {
    EXPECT_EQ(UCase("a\xE9\xFE÷ßñ€"), "A\xE9\xFE÷ßÑ€");
    EXPECT_EQ(UCase("hélène çà ïôüÿ œuvre"), "HÉLÈNE ÇÀ ÏÔÜŸ ŒUVRE");
    EXPECT_EQ(zeroPad(850, 4), "0850");
    EXPECT_EQ(zeroPad(12345, 4), "12345");
    EXPECT_EQ(zeroPad(std::numeric_limits<std::int64_t>::min(), 1), "-9223372036854775808");
}

TEST(SearchKey, IgnoresCaseAccentsAndLigatures) {
    const std::pair<const char*, const char*> rows[] = {
        {"a\xE9×÷", "A\xE9×÷"},  // invalid bytes and signs stay
        {"hélène çà ïôüÿ", "HELENE CA IOUY"},
        {"Œuvre, cœur, Æsope", "OEUVRE, COEUR, AESOPE"},
        {"ÀÁÂÃÄÅ ÈÉÊË ÌÍÎÏ ÒÓÔÕÖØ ÙÚÛÜ Ý Ñ Ð Þ", "AAAAAA EEEE IIII OOOOOO UUUU Y N D TH"},
        {"S01 Toilette", "S01 TOILETTE"},
    };
    for (const auto& [text, key] : rows)
        EXPECT_EQ(searchKey(text), key) << text;
}

}  // namespace
}  // namespace base
