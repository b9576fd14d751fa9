#include "data/gateway.h"

#include <gtest/gtest.h>

#include "base/error.h"
#include "data/layouts.h"
#include "support/memory_database.h"

namespace {

class GatewayTest : public ::testing::Test {
protected:
    void SetUp() override {
        m.put("CIVILAIDE", "00012", {"", "MARTIN", "Hélène"});
        fichiers.TheDatabase = m.db;
        data::OuvrirFichiersSSIAD(fichiers);
    }
    testing_support::MemoryDatabase m;
    data::FichiersSSIAD fichiers;
};

TEST_F(GatewayTest, LireEnregistrementKeepsTheBufferOnAMissingKey) {
    mvdb::DynamicRecord& buffer = fichiers.EnregCIVILAIDE;
    EXPECT_TRUE(data::LireEnregistrement(*fichiers.CIVILAIDE, buffer, "00012"));
    EXPECT_EQ(buffer(data::civilaide::kNom), "MARTIN");
    EXPECT_FALSE(data::LireEnregistrement(*fichiers.CIVILAIDE, buffer, "00099"));
    EXPECT_EQ(buffer(data::civilaide::kNom), "MARTIN") << "the buffer holds what it held";

    // A buffer changed since its read keeps its change on a missing key, and takes the next record read.
    buffer.set(data::civilaide::kNom, "DURAND");
    EXPECT_FALSE(data::LireEnregistrement(*fichiers.CIVILAIDE, buffer, "00099"));
    EXPECT_EQ(buffer(data::civilaide::kNom), "DURAND");
    EXPECT_EQ(buffer.key(), "00012");
    EXPECT_TRUE(data::LireEnregistrement(*fichiers.CIVILAIDE, buffer, "00012"));
    EXPECT_EQ(buffer.text(), m.db->store().read("CIVILAIDE", "00012"));
}

TEST_F(GatewayTest, LireEnregistrementOuVideMarksAMissingRecordOnlyWhenAsked) {
    EXPECT_EQ(data::LireEnregistrementOuVide(*fichiers.TPSTEMPO, "NONE", false).text(), "");
    mvdb::DynamicRecord marked = data::LireEnregistrementOuVide(*fichiers.TPSTEMPO, "NONE", true);
    EXPECT_EQ(marked(1), "Echec");
    mvdb::DynamicRecord found = data::LireEnregistrementOuVide(*fichiers.CIVILAIDE, "00012", true);
    EXPECT_EQ(found(3), "Hélène");
}

TEST_F(GatewayTest, ClosingReleasesEveryFileAndTheDatabaseLast) {
    std::weak_ptr<mvdb::Database> database = m.db;
    m.db.reset();
    data::FermerFichiersSSIAD(fichiers);
    EXPECT_EQ(fichiers.SSIADTOURNEE, nullptr);
    EXPECT_EQ(fichiers.TheDatabase, nullptr);
    EXPECT_TRUE(database.expired());
}

TEST(TourneeKey, PadsTheStartAndReadsItsPiecesBack) {
    std::string key = data::tournee::cle("001", "00012", "21511", "850");
    EXPECT_EQ(key, "00100012215110850");
    EXPECT_EQ(data::tournee::codeTournee(key), "001");
    EXPECT_EQ(data::tournee::codeAide(key), "00012");
    EXPECT_EQ(data::tournee::jourInterne(key), "21511");
    EXPECT_EQ(data::tournee::heureDebut(key), "0850");
}

}  // namespace
