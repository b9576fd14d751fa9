#include "companions/regles_service.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "support/small_service.h"

namespace {

using Liste = std::vector<std::string>;

TEST(CleProtocole, PutsTheAideDayElementSequenceAndStartAtTheirPlaces) {
    const std::string cle = control::cleProtocole("00012", "21519", "SSI001", '2', "0850");
    EXPECT_EQ(cle, "0001221519SSI00120850");
}

TEST(SequenceLibre, TakesTheLowestSequenceThatNoKeyOfTheSameStartHolds) {
    std::vector<std::string> neuf;
    for (char s = '1'; s <= '9'; ++s)
        neuf.push_back(control::cleProtocole("00012", "21519", "000001", s, "0800"));
    struct Cas {
        const char* nom;
        std::vector<std::string> cles;
        std::optional<char> attendu;
    } const cas[] = {
        {"all nine taken", neuf, std::nullopt},
        {"none yet", {}, '1'},
        {"the first taken", {"000122151900000110800"}, '2'},
        {"a hole after the first", {"000122151900000110800", "000122151900000130800"}, '2'},
        {"another start", {"000122151900000110900"}, '1'},
        {"another element", {"000122151900000210800"}, '1'},
        {"another first day", {"000122152000000110800"}, '1'},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        EXPECT_EQ(control::sequenceLibre(k.cles, "00012", "21519", "000001", "0800"), k.attendu);
    }
}

// Aidé 00012 with its accord, element, a protocole planned twice on Monday 23/11/2026 in tournée 001 and
// once on 30/11/2026; aidé 00013 with nothing of its own but its civil record.
struct Usages : testing_support::SmallService {
    Usages() {
        aide("00012", "DUPONT");
        cle = protocole("00012", "0800", "0900", "30", "0800");
        protocole("00012", "1000", "1100", "30", "1000");
        f.service.put("SSIADTOURNEE", "00100012215190800", {"0900", cle});
        f.service.put("CIVILAIDE", "00013", {"", "MARTIN", "Paul"});
        // An accord and a protocole of another element of the same aidé.
        f.service.put("SSIADACCORDS", "00012002SSI001", {"21000", "22000", ""});
        f.service.put("SSIADPROTOCOLE", "0001221000SSI00110800", {"", "0900", "S01", "30", "1", "21000", ""});
    }
    std::string cle;
};

TEST(Usages, NameTheRecordsThatStillUseAnAideATourneeOrAnElement) {
    Usages u;
    mvdb::Database& db = *u.f.service.db;
    EXPECT_EQ(
        control::usagesAide(db, "00012"),
        (Liste{"accord 00012001000001", "accord 00012002SSI001", "protocole 000122100000000110800",
               "protocole 000122100000000111000", "protocole 0001221000SSI00110800",
               "élément de gestion 00012000001", "tournée 001 du 23/11/2026", "tournée 001 du 30/11/2026"}));
    EXPECT_EQ(control::usagesTournee(db, "001"), (Liste{"planning du 23/11/2026", "planning du 30/11/2026"}));
    EXPECT_EQ(control::usagesElement(db, "00012000001"),
              (Liste{"accord 00012001000001", "protocole 000122100000000110800",
                     "protocole 000122100000000111000"}));
    EXPECT_EQ(control::usagesElement(db, "00012SSI001"),
              (Liste{"accord 00012002SSI001", "protocole 0001221000SSI00110800"}));
}

TEST(Listes, GiveTheAidesByCodeAndEachSectorOfTheTourneesOnce) {
    Usages u;
    u.f.service.put("SSIADCARACTTOURNEE", "002",
                    {"MARDI", "1", "6", "00", "14", "00", "M", "S2\xFDN1", "", "1"});
    u.f.service.put("SSIADCARACTTOURNEE", "003", {"MERCREDI", "2", "6", "00", "14", "00", "M", "", "", "1"});
    mvdb::Database& db = *u.f.service.db;
    EXPECT_EQ(control::listeAides(db), (Liste{"00012 DUPONT Marie", "00013 MARTIN Paul"}));
    EXPECT_EQ(control::secteursDesTournees(db), (Liste{"N1", "S2"}));
}

TEST(Usages, AreEmptyForWhatNothingUses) {
    Usages u;
    mvdb::Database& db = *u.f.service.db;
    EXPECT_EQ(control::usagesAide(db, "00013"), Liste{});
    EXPECT_EQ(control::usagesTournee(db, "002"), Liste{});
    EXPECT_EQ(control::usagesElement(db, "00013000001"), Liste{});
}

}  // namespace
