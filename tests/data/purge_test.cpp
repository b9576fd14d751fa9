#include "data/purge.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/error.h"
#include "base/text.h"
#include "mvdb/sqlite_store.h"
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

// Records of one tournée on given days, and what reading them back gives.
struct Historique {
    testing_support::MemoryDatabase m;

    static std::string cle(const base::Date& jour, const std::string& debut = "0750") {
        return "00100012" + std::to_string(jour.internalDay()) + debut;
    }
    void poser(const base::Date& jour, const std::string& fin) {
        m.put("SSIADTOURNEE", cle(jour), {fin, "P|Q"});
    }
    std::optional<std::string> lire(std::string_view fichier, const base::Date& jour) {
        return m.db->store().read(std::string(fichier), cle(jour));
    }
    std::size_t compte(std::string_view fichier) {
        return m.db->store().hasFile(std::string(fichier)) ? m.db->store().count(std::string(fichier)) : 0;
    }
    void apurer() {
        data::FichiersSSIAD fichiers;
        fichiers.TheDatabase = m.db;
        data::OuvrirFichiersSSIAD(fichiers);
        data::ApurerFichierSSIADTOURNEE(fichiers, m.clock.today(), {});
    }
};

constexpr std::string_view kTournees = "SSIADTOURNEE", kArchive = "SSIADTOURNEE_APURE";

TEST(Apurement, AFailureHalfwayLeavesBothFilesAsTheyWere) {
    struct Case {
        const char* name;
        int change;  // the change that fails: the archive's writes come before the deletes
    } cases[] = {
        {"first archive write", 1},
        {"last archive write", 3},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Historique h;
        for (const base::Date& jour : {d(1, 3, 2026), d(2, 3, 2026), d(3, 3, 2026), d(20, 11, 2026)})
            h.poser(jour, "0800");
        h.m.faults->failChange(c.change);
        EXPECT_THROW(h.apurer(), base::Error);
        h.m.faults->failChange(0);
        EXPECT_EQ(h.compte(kTournees), 4u);
        EXPECT_EQ(h.compte(kArchive), 0u);
    }
}

// Today 22/11/2026: the limit is 22/09/2026, the older window 6 to 19/10/2025.
TEST(Apurement, MovesEachRecordItRemovesIntoTheArchive) {
    Historique h;
    const base::Date parti = d(1, 3, 2026), fenetre = d(10, 10, 2025), recent = d(1, 11, 2026);
    for (const base::Date& jour : {parti, fenetre, recent})
        h.poser(jour, "0800");
    h.m.put("SSIADTOURNEE_APURE", Historique::cle(parti), {"ancienne version"});
    h.apurer();
    EXPECT_FALSE(h.lire(kTournees, parti));
    EXPECT_EQ(h.lire(kArchive, parti), "0800\xFEP\xFDQ") << "same attributes, the older copy replaced";
    EXPECT_EQ(h.compte(kArchive), 1u);
    EXPECT_EQ(h.compte(kTournees), 2u);
}

TEST(RestaurationApurees, PutsBackTheDaysOfTheRange) {
    const std::vector<base::Date> jours = {d(1, 3, 2026), d(2, 3, 2026), d(3, 3, 2026), d(4, 3, 2026)};
    struct Case {
        const char* name;
        std::optional<base::Date> du, au;
        std::vector<bool> remis;
    } cases[] = {
        {"a range that holds none", d(5, 3, 2026), d(31, 12, 2026), {false, false, false, false}},
        {"a range upside down", d(3, 3, 2026), d(2, 3, 2026), {false, false, false, false}},
        {"everything", std::nullopt, std::nullopt, {true, true, true, true}},
        {"from a day on", d(3, 3, 2026), std::nullopt, {false, false, true, true}},
        {"up to a day", std::nullopt, d(2, 3, 2026), {true, true, false, false}},
        {"one day", d(2, 3, 2026), d(2, 3, 2026), {false, true, false, false}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Historique h;
        for (const base::Date& jour : jours)
            h.poser(jour, "0800");
        h.apurer();
        ASSERT_EQ(h.compte(kTournees), 0u);
        const data::PurgedRestore fait = data::restorePurged(*h.m.db, c.du, c.au);
        const auto attendus = static_cast<std::size_t>(std::count(c.remis.begin(), c.remis.end(), true));
        EXPECT_EQ(fait.restored, attendus);
        EXPECT_EQ(fait.keptInArchive, 0u);
        for (std::size_t i = 0; i < jours.size(); ++i) {
            EXPECT_EQ(h.lire(kTournees, jours[i]).has_value(), c.remis[i]) << i;
            EXPECT_EQ(h.lire(kArchive, jours[i]).has_value(), !c.remis[i]) << i;
        }
        if (c.remis[0]) {
            EXPECT_EQ(h.lire(kTournees, jours[0]), "0800\xFEP\xFDQ");
        }
    }
}

TEST(RestaurationApurees, KeepsARecordPlannedAgainAndUndoesAFailure) {
    Historique h;
    const base::Date replanifie = d(1, 3, 2026), libre = d(2, 3, 2026);
    h.poser(replanifie, "0800");
    h.poser(libre, "0800");
    h.apurer();
    h.poser(replanifie, "0900");

    h.m.faults->failChange(2);  // the archive's remove after the first write back
    EXPECT_THROW(data::restorePurged(*h.m.db, std::nullopt, std::nullopt), base::Error);
    h.m.faults->failChange(0);
    EXPECT_EQ(h.compte(kArchive), 2u);
    EXPECT_FALSE(h.lire(kTournees, libre));

    const data::PurgedRestore fait = data::restorePurged(*h.m.db, std::nullopt, std::nullopt);
    EXPECT_EQ(fait.restored, 1u);
    EXPECT_EQ(fait.keptInArchive, 1u);
    EXPECT_EQ(h.lire(kTournees, replanifie), "0900\xFEP\xFDQ") << "the newer record stays";
    EXPECT_EQ(h.lire(kArchive, replanifie), "0800\xFEP\xFDQ");
    EXPECT_EQ(data::restoreSummaryText(fait),
              "1 enregistrement(s) remis dans SSIADTOURNEE ; 1 laissé(s) dans SSIADTOURNEE_APURE : leur clé "
              "existe de nouveau dans SSIADTOURNEE");
    EXPECT_EQ(data::restoreSummaryText({}), "0 enregistrement(s) remis dans SSIADTOURNEE");

    testing_support::MemoryDatabase jamais;
    EXPECT_EQ(data::restorePurged(*jamais.db, std::nullopt, std::nullopt).restored, 0u);
}

// Two screens opened on one database at the same time: each store read the catalog before either
// purge made the archive.
TEST(Apurement, TwoScreensOpenedTogetherBothPurge) {
    const std::string chemin = testing::TempDir() + "zandorel-purge-" + std::to_string(::getpid()) + ".db";
    const base::FixedClock horloge(*base::Date::fromDmy(22, 11, 2026), 8 * 3600);
    auto ouvrir = [&] {
        return std::make_shared<mvdb::Database>(
            mvdb::SqliteStore::open(chemin, mvdb::OpenMode::CreateIfMissing), horloge);
    };
    std::vector<std::shared_ptr<mvdb::Database>> ecrans = {ouvrir(), ouvrir()};
    ecrans[0]->store().write("SSIADTOURNEE", Historique::cle(d(1, 3, 2026)), "0800");
    for (const auto& db : ecrans) {
        data::FichiersSSIAD fichiers;
        fichiers.TheDatabase = db;
        data::OuvrirFichiersSSIAD(fichiers);
        EXPECT_NO_THROW(data::ApurerFichierSSIADTOURNEE(fichiers, horloge.today(), {}));
    }
    EXPECT_EQ(ecrans[1]->store().count("SSIADTOURNEE_APURE"), 1u);
    ecrans.clear();
    for (const char* suffixe : {"", "-wal", "-shm"})
        std::remove((chemin + suffixe).c_str());
}

}  // namespace
