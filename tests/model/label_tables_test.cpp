#include "model/label_tables.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/error.h"
#include "base/text.h"

namespace model {
namespace {

constexpr const char* kCle = "000122150000001101850";
constexpr const char* kAutreCle = "000132150000001100900";

// A row of label `numEtq` with a start, a top and a type; the other cells fixed.
LabelRow ligne(int numEtq, int debut, int top, const std::string& type, const std::string& cle = kCle) {
    return {numEtq, debut, debut + 100, 30, top, cle, type};
}

// The rows of a table as "NumEtq:HeureDebut:TopEtq:TypeEtq", top to bottom.
std::string lignes(const LabelTables& t, Pane pane) {
    std::string out;
    const WorkTable& table = t.table(pane);
    for (std::int64_t i = 1; i <= table->DCount(); ++i) {
        if (!out.empty()) out += " ";
        out += table(i, col::NumEtq) + ":" + table(i, col::HeureDebut) + ":" + table(i, col::TopEtq) + ":" +
               table(i, col::TypeEtq);
    }
    return out;
}

LabelTables tablesNeuves() {
    LabelTables t;
    t.renew(Pane::Aide);
    t.renew(Pane::Detail);
    return t;
}

TEST(LabelTables, ATableThatDoesNotExistIsAFailureThatNamesIt) {
    struct Cas {
        const char* nom;
        std::function<void(LabelTables&)> operation;
        const char* message;
    } const cas[] = {
        {"find in the waiting list", [](LabelTables& t) { t.findByLabel(Pane::Aide, 1); },
         "La table TabTempoAide n'existe pas"},
        {"insert by start", [](LabelTables& t) { t.insertByStart(ligne(1, 800, 0, "I")); },
         "La table TabTempoAide n'existe pas"},
        {"insert by position", [](LabelTables& t) { t.insertByPosition(ligne(1, 800, 0, "I")); },
         "La table TabTempoDetail n'existe pas"},
        {"send back", [](LabelTables& t) { t.sendBack(1, TypeEtq("I")); },
         "La table TabTempoDetail n'existe pas"},
    };
    for (const Cas& c : cas) {
        LabelTables t;
        try {
            c.operation(t);
            ADD_FAILURE() << c.nom << ": no failure";
        } catch (const base::Error& e) {
            EXPECT_EQ(std::string(e.what()), c.message) << c.nom;
        }
    }
}

TEST(TypeEtq, PartsAreReadFromTheTextAndTheTextIsKept) {
    struct Cas {
        const char* nom;
        std::string texte;
        std::string kind;
        char figure;
    } const cas[] = {
        {"a kind never read", "", "", '\0'},
        {"one person", "I", "I", '\0'},
        {"two, both places free", "A|2", "A", '2'},
        {"two, one place", "M|1", "M", '1'},
        {"made by a return to a tournée of two", "I2", "I", '2'},
    };
    for (const Cas& c : cas) {
        const TypeEtq type(c.texte);
        EXPECT_EQ(type.text(), c.texte) << c.nom;
        EXPECT_EQ(type.kind(), c.kind) << c.nom;
        EXPECT_EQ(type.figure(), c.figure) << c.nom;
        EXPECT_EQ(type.pourDeuxPersonnes(), c.figure != '\0') << c.nom;
    }
}

TEST(TypeEtq, MadeAndChangedAsTheTablesWriteIt) {
    struct Cas {
        const char* nom;
        TypeEtq obtenu;
        const char* attendu;
    } const cas[] = {
        {"a kind lost before the start", TypeEtq::prevu("", "|", "0850").sansDebutPrevu(), ""},
        {"for one, start cut off", TypeEtq::prevu("I", "|", "0850").sansDebutPrevu(), "I"},
        {"for two, start cut off", TypeEtq::prevu("A", "|1|", "1015").sansDebutPrevu(), "A|1"},
        {"for two", TypeEtq::pourDeux("M", '2'), "M|2"},
        {"figure replaced", TypeEtq("I|2").avecFigure('1'), "I|1"},
        {"figure given to an act for one", TypeEtq("I").avecFigure('2'), "I2"},
        {"half waiting, then its figure", TypeEtq("I").avecMoitieEnAttente().avecFigure('2'), "I|2"},
        {"last character replaced", TypeEtq("A|2").avecDerniereFigure('1'), "A|1"},
    };
    for (const Cas& c : cas)
        EXPECT_EQ(c.obtenu.text(), c.attendu) << c.nom;
    EXPECT_EQ(TypeEtq::prevu("A", "|2|", "0905").debutPrevu(), "0905");
}

TEST(LabelTables, FindsByLabelOrKeyAsValuesCompare) {
    LabelTables t = tablesNeuves();
    t.insertAt(Pane::Aide, 1, ligne(3, 800, 0, "I"));
    t.insertAt(Pane::Aide, 2, ligne(12, 900, 0, "A|2", kAutreCle));
    EXPECT_EQ(t.findByLabel(Pane::Aide, 4), 0);
    EXPECT_EQ(t.findByKey(Pane::Aide, "000142150000001100900"), 0);
    EXPECT_EQ(t.findByLabel(Pane::Aide, 12), 2);
    EXPECT_EQ(t.findByKey(Pane::Aide, kAutreCle), 2);
    EXPECT_EQ(t.row(Pane::Aide, 9).CleProtocole, "");
    EXPECT_EQ(t.labelOfRow(Pane::Aide, 9), std::nullopt);
    EXPECT_EQ(t.labelOfRow(Pane::Aide, 2), 12);
}

TEST(LabelTables, TheTwoTieRules) {
    struct Cas {
        const char* nom;
        Pane pane;
        std::vector<int> existants;  // starts in pane "AIDE", tops in pane "DETAIL"
        int nouveau;
        std::int64_t rang;
    } const cas[] = {
        {"waiting list, empty", Pane::Aide, {}, 800, 1},
        {"waiting list, a tie goes after", Pane::Aide, {800, 850, 850, 900}, 850, 4},
        {"waiting list, before a later start", Pane::Aide, {800, 900}, 850, 2},
        {"waiting list, at the end", Pane::Aide, {800, 900}, 900, 3},
        {"tournée, empty", Pane::Detail, {}, 1500, 1},
        {"tournée, a tie goes before", Pane::Detail, {1000, 1500, 1500, 2000}, 1500, 2},
        {"tournée, equal to the last row goes before it", Pane::Detail, {1000, 2000}, 2000, 2},
        {"tournée, after the last row", Pane::Detail, {1000, 2000}, 2500, 3},
    };
    for (const Cas& c : cas) {
        LabelTables t = tablesNeuves();
        for (std::size_t i = 0; i < c.existants.size(); ++i) {
            const int v = c.existants[i];
            t.insertAt(c.pane, static_cast<std::int64_t>(i) + 1, ligne(static_cast<int>(i) + 1, v, v, "I"));
        }
        const LabelRow nouvelle = ligne(99, c.nouveau, c.nouveau, "I");
        const std::int64_t rang =
            c.pane == Pane::Aide ? t.insertByStart(nouvelle) : t.insertByPosition(nouvelle);
        EXPECT_EQ(rang, c.rang) << c.nom;
        EXPECT_EQ(t.findByLabel(c.pane, 99), c.rang) << c.nom;
    }
}

TEST(LabelTables, MovesBetweenAndWithinThePanes) {
    LabelTables t = tablesNeuves();
    t.insertAt(Pane::Aide, 1, ligne(1, 800, 1120, "I"));
    t.insertAt(Pane::Aide, 2, ligne(2, 900, 1920, "A|2"));
    t.insertAt(Pane::Detail, 1, ligne(3, 700, 760, "M"));
    t.insertAt(Pane::Detail, 2, ligne(4, 750, 2000, "I|1"));

    t.moveInDetail(3, 3000);
    EXPECT_EQ(lignes(t, Pane::Detail), "4:750:2000:I|1 3:700:3000:M");
    // A label without a row gets one, with empty cells.
    t.moveInDetail(8, 500);
    EXPECT_EQ(lignes(t, Pane::Detail), "8:0:500: 4:750:2000:I|1 3:700:3000:M");

    EXPECT_EQ(t.sendBack(4, TypeEtq("I|2")), 1);
    EXPECT_EQ(lignes(t, Pane::Aide), "4:750:2000:I|2 1:800:1120:I 2:900:1920:A|2");
    EXPECT_EQ(lignes(t, Pane::Detail), "8:0:500: 3:700:3000:M");

    // The split: the waiting half comes first, the row of the label that went right behind it.
    EXPECT_EQ(t.split(3, 7), 3);
    EXPECT_EQ(lignes(t, Pane::Aide), "4:750:2000:I|2 1:800:1120:I 7:900:1920:A|1 2:900:1920:A|1");
    t.join(3);
    EXPECT_EQ(t.typeEtq(Pane::Aide, 3).text(), "A|2");
}

TEST(LabelTables, ClosingALineKeepsARowThatStillWaitsForItsSecondIntervenant) {
    struct Cas {
        const char* nom;
        const char* type;
        const char* reste;
    } const cas[] = {
        {"one person: the row goes", "I", "3:900:1920:I"},
        {"one place was free: the row goes", "I|1", "3:900:1920:I"},
        {"both places were free: the row stays, a line up", "I|2", "2:850:1120:I|2 3:900:1920:I"},
    };
    for (const Cas& c : cas) {
        LabelTables t = tablesNeuves();
        t.insertAt(Pane::Aide, 1, ligne(2, 850, 1920, c.type));
        t.insertAt(Pane::Aide, 2, ligne(3, 900, 2720, "I"));
        t.closeLine(1, 800);
        EXPECT_EQ(lignes(t, Pane::Aide), c.reste) << c.nom;
    }
}

TEST(LabelTables, ScrollRangeColoursAndSnapshots) {
    LabelTables t = tablesNeuves();
    for (int i = 1; i <= 7; ++i)
        t.insertByStart(ligne(i, 800, 0, "I"));
    EXPECT_EQ(t.scrollMax(), 0);
    t.insertByStart(ligne(8, 800, 0, "I"));
    EXPECT_EQ(t.scrollMax(), 8);
    const std::string un = "1", deux = "2";
    EXPECT_EQ(LabelTables::alternatingColour(1, un, deux), "1");
    EXPECT_EQ(LabelTables::alternatingColour(4, un, deux), "2");

    const LabelTables::Snapshot avant = t.snapshot();
    t.remove(Pane::Aide, 1);
    t.release(Pane::Detail);
    EXPECT_NE(t.snapshot(), avant);
    t.restore(avant);
    EXPECT_EQ(t.snapshot(), avant);
    EXPECT_TRUE(t.exists(Pane::Detail));
}

TEST(LabelTables, PlannedStartLeavesTheDetailRow) {
    LabelTables t = tablesNeuves();
    t.insertAt(Pane::Detail, 1, ligne(1, 800, 0, TypeEtq::prevu("A", "|1|", "0850").text()));
    EXPECT_EQ(t.takePlannedStart(1), "0850");
    EXPECT_EQ(t.typeEtq(Pane::Detail, 1).text(), "A|1");
}

}  // namespace
}  // namespace model
