#include "data/purge.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "base/text.h"
#include "support/memory_database.h"

namespace {

base::Date d(int day, int month, int year) {
    return *base::Date::fromDmy(day, month, year);
}

TEST(Apurement, FirstMondayOfOctober) {
    struct Case {
        const char* name;
        base::Date date, expected;
    } cases[] = {
        {"1 October on a Monday (2029)", d(15, 6, 2029), d(1, 10, 2029)},
        {"1 October on a Sunday (2023)", d(1, 1, 2023), d(2, 10, 2023)},
        {"1 October on a Tuesday (2024)", d(31, 12, 2024), d(7, 10, 2024)},
        {"1 October on a Thursday (2026)", d(22, 11, 2026), d(5, 10, 2026)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(data::PremierLundiOctobre(c.date), c.expected);
    }
}

TEST(Apurement, WindowsFollowTheCalendarOfTheYear) {
    // In 2026 the first Monday of October is the 5th: its window ends on 18 October.
    struct Case {
        const char* name;
        base::Date today, debut2, debut1;
    } cases[] = {
        {"January: the same October twice", d(15, 1, 2026), d(6, 10, 2025), d(6, 10, 2025)},
        {"end of February", d(28, 2, 2026), d(6, 10, 2025), d(6, 10, 2025)},
        {"1 March", d(1, 3, 2026), d(6, 10, 2025), d(7, 10, 2024)},
        {"the day before the window ends", d(17, 10, 2026), d(6, 10, 2025), d(7, 10, 2024)},
        {"today equal to the window's end", d(18, 10, 2026), d(5, 10, 2026), d(6, 10, 2025)},
        {"31 December", d(31, 12, 2026), d(5, 10, 2026), d(6, 10, 2025)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        data::FenetresApurement f = data::CalculerFenetres(c.today);
        EXPECT_EQ(f.DateLimite, c.today.addMonths(-2));
        EXPECT_EQ(f.DebutFenetre2, c.debut2);
        EXPECT_EQ(f.FinFenetre2, c.debut2.addDays(13));
        EXPECT_EQ(f.DebutFenetre1, c.debut1);
        EXPECT_EQ(f.FinFenetre1, c.debut1.addDays(13));
    }
}

TEST(Apurement, DeletesOldRecordsOutsideBothOctoberWindows) {
    testing_support::MemoryDatabase m;
    // Today 22/11/2026: limit 22/09/2026; windows 6-19/10/2025 and 5-18/10/2026 (the latter after the limit).
    auto key = [](const base::Date& day) { return "00100012" + std::to_string(day.internalDay()) + "0750"; };
    struct Row {
        const char* name;
        base::Date day;
        bool kept;
    } rows[] = {
        {"two years back", d(10, 10, 2024), false},
        {"before the older window", d(5, 10, 2025), false},
        {"first day of the older window", d(6, 10, 2025), true},
        {"last day of the older window", d(19, 10, 2025), true},
        {"after the older window", d(20, 10, 2025), false},
        {"spring", d(15, 3, 2026), false},
        {"the day before the limit", d(21, 9, 2026), false},
        {"the limit itself", d(22, 9, 2026), true},
        {"within two months", d(1, 11, 2026), true},
        {"ahead", d(30, 11, 2026), true},
    };
    for (const Row& r : rows)
        m.put("SSIADTOURNEE", key(r.day), {"0800", "P"});
    data::FichiersSSIAD fichiers;
    fichiers.TheDatabase = m.db;
    data::OuvrirFichiersSSIAD(fichiers);
    std::vector<std::string> calls;
    data::CommandeLongue commande{[&] { calls.push_back("entree"); }, [&] { calls.push_back("attente"); },
                                  [&] { calls.push_back("sortie"); }};
    data::ApurerFichierSSIADTOURNEE(fichiers, m.clock.today(), commande);
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        EXPECT_EQ(m.db->store().read("SSIADTOURNEE", key(r.day)).has_value(), r.kept);
    }
    EXPECT_EQ(calls, (std::vector<std::string>{"entree", "attente", "sortie"}));
}

// The store removes a few records one by one and most of a file by writing back what stays: the purge
// leaves the same records either way, and its record buffer holds the last record of its selection in
// the selection's order (by day, then key), deleted or kept, as reading each in turn left it.
TEST(Apurement, LeavesTheSameWhetherFewOrMostRecordsAreOld) {
    // Today 22/11/2026: limit 22/09/2026; the older window runs from 6 to 19/10/2025.
    const int fenetre = d(10, 10, 2025).internalDay(), ancien = d(1, 6, 2026).internalDay(),
              recent = d(1, 11, 2026).internalDay();
    struct Case {
        const char* name;
        int anciens, fenetres, recents;
    } cases[] = {
        {"few old records", 2, 1, 9},
        {"most records old", 20, 2, 3},
        {"only old records", 6, 0, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        testing_support::MemoryDatabase m;
        std::vector<std::string> gardees;
        auto poser = [&](int n, int jour, bool gardee) {
            for (int i = 0; i < n; ++i) {
                // Codes from the top down: the key order differs from the order of the days.
                const std::string cle = base::zeroPad(90 - i, 3) + "00012" + std::to_string(jour + i % 4) +
                                        base::zeroPad(700 + i, 4);
                m.put("SSIADTOURNEE", cle, {"0800", "P" + std::to_string(i)});
                if (gardee) gardees.push_back(cle);
            }
        };
        poser(c.anciens, ancien, false);
        poser(c.fenetres, fenetre, true);
        poser(c.recents, recent, true);
        // What the selection finds, in its order: the buffer ends on its last.
        const std::vector<std::string> selection =
            m.keys("SSIADTOURNEE", "SELECT SSIADTOURNEE AVEC DateTournee < \"" +
                                       std::to_string(d(22, 9, 2026).internalDay()) + "\" PAR DateTournee");
        ASSERT_FALSE(selection.empty());
        const std::optional<std::string> texteDernier = m.db->store().read("SSIADTOURNEE", selection.back());

        data::FichiersSSIAD fichiers;
        fichiers.TheDatabase = m.db;
        data::OuvrirFichiersSSIAD(fichiers);
        data::ApurerFichierSSIADTOURNEE(fichiers, m.clock.today(), {});

        std::vector<std::string> restantes;
        m.db->store().scanAll("SSIADTOURNEE", [&](const std::string& cle, const std::string&) {
            restantes.push_back(cle);
            return true;
        });
        std::sort(gardees.begin(), gardees.end());
        EXPECT_EQ(restantes, gardees);
        EXPECT_EQ(fichiers.EnregSSIADTOURNEE.key(), selection.back());
        EXPECT_TRUE(fichiers.EnregSSIADTOURNEE.isBound());
        EXPECT_EQ(fichiers.EnregSSIADTOURNEE.text(), texteDernier.value_or("absent"));
    }
}

}  // namespace
