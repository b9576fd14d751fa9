#include "mvdb/sentence.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "base/error.h"

namespace mvdb {
namespace {

// The error a call throws; a call that does not throw fails the test.
template <typename Call>
base::Error errorOf(Call&& call) {
    try {
        call();
    } catch (const base::Error& error) {
        return error;
    }
    ADD_FAILURE() << "no base::Error thrown";
    return base::Error(0, "");
}

Field attr(std::int32_t number) {
    return Field{number, {}};
}
Field named(std::string name) {
    return Field{-1, std::move(name)};
}

Condition when(Field field, CompareOp op, std::string value, std::size_t position, bool prefix = false) {
    return Condition{std::move(field), op, std::move(value), prefix, position};
}

struct FailingRow {
    const char* name;
    std::string text;
    std::string message;
};

TEST(ParseSentence, RejectsWithPositionAndWhatWasExpected) {
    const std::vector<FailingRow> rows = {
        {"empty", "", "Phrase incorrecte à la position 1 : SELECT attendu dans «  »"},
        {"other verb", "DELETE X", "Phrase incorrecte à la position 1 : SELECT attendu dans « DELETE X »"},
        {"SELECT glued to a word", "SELECTF",
         "Phrase incorrecte à la position 1 : SELECT attendu dans « SELECTF »"},
        {"no file", "SELECT", "Phrase incorrecte à la position 7 : nom de fichier attendu dans « SELECT »"},
        {"no field", "SELECT F AVEC",
         "Phrase incorrecte à la position 14 : champ attendu dans « SELECT F AVEC »"},
        {"operator instead of field", "SELECT F AVEC = \"1\"",
         "Phrase incorrecte à la position 15 : champ attendu dans « SELECT F AVEC = \"1\" »"},
        {"no operator", "SELECT F AVEC 1 \"1\"",
         "Phrase incorrecte à la position 17 : opérateur (= < > <= >= <>) attendu dans « SELECT F AVEC 1 "
         "\"1\" »"},
        {"value without quotes", "SELECT F AVEC 1 = 1",
         "Phrase incorrecte à la position 19 : valeur entre guillemets attendu dans « SELECT F AVEC 1 = 1 »"},
        {"unterminated value", "SELECT F AVEC 1 = \"1",
         "Phrase incorrecte à la position 19 : guillemet fermant attendu dans « SELECT F AVEC 1 = \"1 »"},
        {"quote followed by a word", "SELECT F AVEC 1 = \"1\"X",
         "Phrase incorrecte à la position 19 : guillemet fermant attendu dans « SELECT F AVEC 1 = \"1\"X »"},
        {"OR", "SELECT F AVEC 1 = \"1\" OR AVEC 2 = \"2\"",
         "Phrase incorrecte à la position 23 : AND AVEC, PAR, PAR-DECR ou fin de phrase attendu dans "
         "« SELECT F AVEC 1 = \"1\" OR AVEC 2 = \"2\" »"},
        {"AND without AVEC", "SELECT F AVEC 1 = \"1\" AND 2 = \"2\"",
         "Phrase incorrecte à la position 27 : AVEC attendu dans « SELECT F AVEC 1 = \"1\" AND 2 = \"2\" »"},
        {"AND at the end", "SELECT F AVEC 1 = \"1\"AND",
         "Phrase incorrecte à la position 25 : AVEC attendu dans « SELECT F AVEC 1 = \"1\"AND »"},
        {"prefix with <", "SELECT F AVEC 1 < \"x]\"",
         "Phrase incorrecte à la position 21 : « ] » ne s'emploie qu'avec = ou <> dans « SELECT F AVEC 1 < "
         "\"x]\" »"},
        {"prefix with >=", "SELECT F AVEC 1 >= \"]\"",
         "Phrase incorrecte à la position 21 : « ] » ne s'emploie qu'avec = ou <> dans « SELECT F AVEC 1 >= "
         "\"]\" »"},
        {"PAR without field", "SELECT F PAR",
         "Phrase incorrecte à la position 13 : champ attendu dans « SELECT F PAR »"},
        {"two sort fields", "SELECT F PAR 1 2",
         "Phrase incorrecte à la position 16 : fin de phrase attendu dans « SELECT F PAR 1 2 »"},
        {"PAR glued to a dash", "SELECT F PAR-1",
         "Phrase incorrecte à la position 10 : AVEC attendu dans « SELECT F PAR-1 »"},
        {"word after file", "SELECT F XYZ",
         "Phrase incorrecte à la position 10 : AVEC attendu dans « SELECT F XYZ »"},
        {"attribute beyond int32", "SELECT F AVEC 99999999999 = \"1\"",
         "Phrase incorrecte à la position 15 : numéro d'attribut trop grand dans "
         "« SELECT F AVEC 99999999999 = \"1\" »"},
        {"attribute one past int32", "SELECT F PAR 2147483648",
         "Phrase incorrecte à la position 14 : numéro d'attribut trop grand dans « SELECT F PAR 2147483648 "
         "»"},
        {"position counts characters", "SELECT F AVEC 1 = \"été\" X",
         "Phrase incorrecte à la position 25 : AND AVEC, PAR, PAR-DECR ou fin de phrase attendu dans "
         "« SELECT F AVEC 1 = \"été\" X »"},
    };
    for (const FailingRow& row : rows) {
        const base::Error error = errorOf([&] { parseSentence(row.text); });
        EXPECT_EQ(error.code(), base::codes::kSentence) << row.name;
        EXPECT_EQ(error.what(), row.message) << row.name;
    }
}

TEST(ParseSentence, QuotesOnlyTheFirst200CharactersOfALongSentence) {
    // 'é' is two bytes: the cut must fall after 200 characters, not 200 bytes.
    std::string text = "SELECT F AVEC 1 = \"";
    while (text.size() < 400)
        text += "é";
    const std::string expectedQuote = text.substr(0, 19 + 2 * 181) + "…";
    const base::Error error = errorOf([&] { parseSentence(text); });
    EXPECT_EQ(error.what(), "Phrase incorrecte à la position 19 : guillemet fermant attendu dans « " +
                                expectedQuote + " »");
}

struct ParsedRow {
    const char* name;
    std::string text;
    Sentence expected;
};

TEST(ParseSentence, ParsesTheSentencesOfTheScreens) {
    using enum CompareOp;
    const SortSpec byDate{named("DateTournee"), SortOrder::Ascending, 52};
    const std::vector<ParsedRow> rows = {
        {"no condition", "SELECT TPSTEMPO", {"TPSTEMPO", {}, std::nullopt}},
        {"prefix alone matches all",
         "SELECT SSIADCARACTTOURNEE AVEC 1 = \"]\" AND AVEC 9 <> \"1\" PAR 1",
         {"SSIADCARACTTOURNEE",
          {when(attr(1), Equal, "", 32, true), when(attr(9), NotEqual, "1", 49)},
          SortSpec{attr(1), SortOrder::Ascending, 62}}},
        {"sort by name",
         "SELECT SSIADTOURNEE AVEC DateTournee < \"21450\" PAR DateTournee",
         {"SSIADTOURNEE", {when(named("DateTournee"), Less, "21450", 26)}, byDate}},
        {"five conditions and a trailing blank",
         "SELECT SSIADTOURNEE AVEC CodeAide = \"00012\" AND AVEC DateTournee = \"21511\" AND AVEC HeureDebut "
         ">= "
         "\"0600\" AND AVEC HeureDebut <= \"1400\" AND AVEC CodeTournee <> \"001\" ",
         {"SSIADTOURNEE",
          {when(named("CodeAide"), Equal, "00012", 26), when(named("DateTournee"), Equal, "21511", 54),
           when(named("HeureDebut"), GreaterOrEqual, "0600", 85),
           when(named("HeureDebut"), LessOrEqual, "1400", 115),
           when(named("CodeTournee"), NotEqual, "001", 145)},
          std::nullopt}},
        {"descending sort",
         "SELECT SSIADTOURNEE AVEC CodeTournee = \"001\" AND AVEC DateTournee <= \"21511\" PAR-DECR "
         "DateTournee",
         {"SSIADTOURNEE",
          {when(named("CodeTournee"), Equal, "001", 26),
           when(named("DateTournee"), LessOrEqual, "21511", 55)},
          SortSpec{named("DateTournee"), SortOrder::Descending, 87}}},
        {"operator glued to field and value",
         "SELECT SSIADTOURNEE AVEC DateTournee = \"21511\" AND AVEC 2=\"000120000100000000100850\" AND AVEC "
         "CodeTournee <> \"002\" PAR CodeTournee",
         {"SSIADTOURNEE",
          {when(named("DateTournee"), Equal, "21511", 26),
           when(attr(2), Equal, "000120000100000000100850", 57),
           when(named("CodeTournee"), NotEqual, "002", 95)},
          SortSpec{named("CodeTournee"), SortOrder::Ascending, 120}}},
        {"prefix and glued operators",
         "SELECT SSIADTOURNEE AVEC DateTournee = \"21511\" AND AVEC 2 =\"000120000100000]\" AND AVEC "
         "CodeTournee "
         "<>\"001\"",
         {"SSIADTOURNEE",
          {when(named("DateTournee"), Equal, "21511", 26), when(attr(2), Equal, "000120000100000", 57, true),
           when(named("CodeTournee"), NotEqual, "001", 88)},
          std::nullopt}},
        {"AND glued to the quote",
         "SELECT SSIADCARACTTOURNEE AVEC 8 = \"S01\" AND AVEC 7 =\"I\"AND AVEC 5 > \"8,5\" AND AVEC 3 < "
         "\"9,25\"AND AVEC 2 =\"0\"",
         {"SSIADCARACTTOURNEE",
          {when(attr(8), Equal, "S01", 32), when(attr(7), Equal, "I", 51), when(attr(5), Greater, "8,5", 66),
           when(attr(3), Less, "9,25", 85), when(attr(2), Equal, "0", 104)},
          std::nullopt}},
        {"AND glued after a name condition",
         "SELECT SSIADTOURNEE AVEC DateTournee = \"21511\"AND AVEC CodeTournee = \"001\" PAR HeureDebut",
         {"SSIADTOURNEE",
          {when(named("DateTournee"), Equal, "21511", 26), when(named("CodeTournee"), Equal, "001", 56)},
          SortSpec{named("HeureDebut"), SortOrder::Ascending, 80}}},
        {"names and numbers mixed",
         "SELECT SSIADACCORDS AVEC CodeAide =\"00012\" AND AVEC 1 <= \"21511\" AND AVEC 2 >= \"21511\"",
         {"SSIADACCORDS",
          {when(named("CodeAide"), Equal, "00012", 26), when(attr(1), LessOrEqual, "21511", 53),
           when(attr(2), GreaterOrEqual, "21511", 75)},
          std::nullopt}},
        {"sort after numbers",
         "SELECT SSIADACCORDS AVEC 1 <= \"21511\" AND AVEC 2 >= \"21511\" PAR CodeAide",
         {"SSIADACCORDS",
          {when(attr(1), LessOrEqual, "21511", 26), when(attr(2), GreaterOrEqual, "21511", 48)},
          SortSpec{named("CodeAide"), SortOrder::Ascending, 65}}},
        {"keywords in lower case",
         "select ssiadtournee avec 1 = \"x\" par-decr 1",
         {"ssiadtournee", {when(attr(1), Equal, "x", 26)}, SortSpec{attr(1), SortOrder::Descending, 43}}},
        {"tabs and leading blanks",
         "\t SELECT\tF\tAVEC\t0\t=\t\"k\"\t",
         {"F", {when(attr(0), Equal, "k", 17)}, {}}},
        {"empty value", "SELECT F AVEC 1 = \"\"", {"F", {when(attr(1), Equal, "", 15)}, {}}},
        {"quote inside a prefix value",
         "SELECT F AVEC Nom = \"O\"BRIEN]\"",
         {"F", {when(named("Nom"), Equal, "O\"BRIEN", 15, true)}, {}}},
        {"PAR followed by letters is part of the value",
         "SELECT F AVEC 1 = \"X\"PARIS\" PAR 1",
         {"F", {when(attr(1), Equal, "X\"PARIS", 15)}, SortSpec{attr(1), SortOrder::Ascending, 33}}},
        {"PAR-DECR glued to the quote",
         "SELECT F AVEC 1 <> \"a\"par-decr Nom",
         {"F", {when(attr(1), NotEqual, "a", 15)}, SortSpec{named("Nom"), SortOrder::Descending, 32}}},
        {"largest attribute number",
         "SELECT F PAR 2147483647",
         {"F", {}, SortSpec{attr(2147483647), {}, 14}}},
        {"position after a two-byte character",
         "SELECT F AVEC 1 = \"é\" AND AVEC 2 = \"x\"",
         {"F", {when(attr(1), Equal, "é", 15), when(attr(2), Equal, "x", 32)}, {}}},
    };
    for (const ParsedRow& row : rows) {
        try {
            EXPECT_EQ(parseSentence(row.text), row.expected) << row.name;
        } catch (const base::Error& error) {
            ADD_FAILURE() << row.name << ": " << error.what();
        }
    }
}

// Sentences are typed by users and will be fuzzed: whatever the bytes, the parser either parses or
// fails with a sentence error whose position lies within the sentence or just past its end.
TEST(ParseSentence, AnyBytesParseOrFailWithASentenceError) {
    const std::vector<std::string> seeds = {
        "SELECT SSIADCARACTTOURNEE AVEC 8 = \"S01\" AND AVEC 7 =\"I\"AND AVEC 5 > \"8,5\" PAR-DECR 2",
        "SELECT F AVEC Nom = \"O\"BRIEN]\" PAR 1",
        "SELECT F AVEC 1 = \"\xC3\xA9\xFE\xFD\" AND AVEC 2 = \"\xFF\x80\"",
    };
    std::string alphabet = "\"] \t=<>-AaDdNnPpRr01\xFE\xFD\xFC\x80\xC3\xFF";
    alphabet += '\0';
    std::mt19937 random(20240611);
    for (int round = 0; round < 3000; ++round) {
        std::string text = seeds[random() % seeds.size()];
        for (int edits = random() % 4 + 1; edits > 0 && !text.empty(); --edits) {
            text[random() % text.size()] = alphabet[random() % alphabet.size()];
        }
        text.resize(random() % (text.size() + 1));
        try {
            parseSentence(text);
        } catch (const base::Error& error) {
            const std::string message = error.what();
            const std::string head = "Phrase incorrecte à la position ";
            ASSERT_EQ(error.code(), base::codes::kSentence) << message;
            ASSERT_EQ(message.rfind(head, 0), 0u) << message;
            const long position = std::stol(message.substr(head.size()));
            ASSERT_GE(position, 1) << message;
            ASSERT_LE(position, static_cast<long>(text.size()) + 1) << message;
        }
    }
}

TEST(ParseAttributeList, RejectsAnythingButNumbers) {
    const std::vector<FailingRow> rows = {
        {"empty", "", "Liste d'attributs vide"},
        {"blanks", " \t  ", "Liste d'attributs vide"},
        {"letter", "0 x", "Liste d'attributs incorrecte : « 0 x »"},
        {"negative", "0 -1", "Liste d'attributs incorrecte : « 0 -1 »"},
        {"plus sign", "+1", "Liste d'attributs incorrecte : « +1 »"},
        {"beyond int32", "1 2147483648", "Liste d'attributs incorrecte : « 1 2147483648 »"},
        {"comma", "1,2", "Liste d'attributs incorrecte : « 1,2 »"},
    };
    for (const FailingRow& row : rows) {
        const base::Error error = errorOf([&] { parseAttributeList(row.text); });
        EXPECT_EQ(error.code(), base::codes::kSentence) << row.name;
        EXPECT_EQ(error.what(), row.message) << row.name;
    }
}

TEST(ParseAttributeList, ReadsBlankSeparatedNumbers) {
    const struct {
        const char* name;
        std::string text;
        std::vector<std::int32_t> expected;
    } rows[] = {
        {"trailing blank", "0 1 2 ", {0, 1, 2}},
        {"two digits", "0 1 10", {0, 1, 10}},
        {"key only", "0", {0}},
        {"tabs and runs of blanks", "\t3  \t 4", {3, 4}},
        {"largest", "2147483647", {2147483647}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(parseAttributeList(row.text), row.expected) << row.name;
}

}  // namespace
}  // namespace mvdb
