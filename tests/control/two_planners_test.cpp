#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "base/clock.h"
#include "mvdb/database.h"
#include "mvdb/dynamic_record.h"
#include "mvdb/open_store.h"
#include "mvdb/pg_store.h"
#include "mvdb/store.h"
#include "shell/ctr_zandorel.h"
#include "support/pg_service.h"
#include "toolkit/form.h"
#include "toolkit/headless_host.h"
#include "toolkit/host.h"
#include "toolkit/input.h"

namespace {

namespace fs = std::filesystem;
namespace msgbox = toolkit::msgbox;

const std::string kQuestion =
    "Cette tournée a été modifiée sur un autre poste depuis son affichage. Voulez-vous remplacer sa version "
    "par la vôtre ?";
constexpr const char* kLundi = "21512";

enum class Base { Sqlite, Pg };

// A service on its own SQLite file or PostgreSQL schema, removed at the end.
class Service {
public:
    Service(Base base, const std::string& name) : m_base(base) {
        const std::string own =
            testing_support::pgSchemaName("zt_" + std::to_string(::getpid()) + "_" + name);
        if (base == Base::Pg) {
            m_schema = own;
            m_address = testing_support::pgServiceAddress(testing_support::pgTestServer(), own);
            mvdb::PgStore::dropSchema(testing_support::pgTestServer(), own);
        } else {
            m_address = (fs::temp_directory_path() / (own + ".db")).string();
            removeFiles();
        }
    }
    ~Service() {
        if (m_base == Base::Pg) {
            mvdb::PgStore::dropSchema(testing_support::pgTestServer(), m_schema);
        } else {
            removeFiles();
        }
    }
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;
    const std::string& address() const { return m_address; }

private:
    void removeFiles() {
        for (const char* suffix : {"", "-wal", "-shm"})
            fs::remove(m_address + suffix);
    }
    Base m_base;
    std::string m_address, m_schema;
};

// A host that fails the test when a box opens while its workstation holds a transaction open: the user
// could keep the other workstations waiting for as long as the box stays.
class CheckingHost : public toolkit::HeadlessHost {
public:
    mvdb::Database* db = nullptr;
    std::function<void()> onQuestion;  // runs when the box opens, as the user reads it
    int MsgBox(const std::string& prompt, int buttons, const std::string& title) override {
        if (db && db->store().inTransaction())
            ADD_FAILURE() << "a box opened inside a transaction: " << prompt;
        if (prompt == kQuestion && onQuestion) onQuestion();
        return HeadlessHost::MsgBox(prompt, buttons, title);
    }
};

// One planner's workstation: its own connection to the service, its host and its control.
struct Poste {
    base::FixedClock clock{*base::Date::fromDmy(22, 11, 2026), 8 * 3600};
    CheckingHost host;
    std::shared_ptr<mvdb::Database> db;
    control::Ctr_Zandorel c{host, clock};

    explicit Poste(const std::string& address)
        : db(std::make_shared<mvdb::Database>(mvdb::openStore(address, mvdb::OpenMode::CreateIfMissing),
                                              clock)) {
        host.db = db.get();
    }
    void start() {
        c.setTheClient(nullptr);
        c.setTheDatabase(db);
        c.setDroitsUtilisateur(std::make_shared<control::DroitsFixes>(2));
        c.Init();
    }
    void montrer() {
        c.Txt_CodeTournee.setText("");
        c.Txt_CodeTournee.setText("001");
        c.Cbo_Date.setText("23/11/2026");
        c.Cmd_Affichage.fireClick();
    }
    // Moves the detail label of an aidé to a new planned start, as a drop leaves it.
    void deplacer(const std::string& codeAide, const std::string& debut) {
        for (const toolkit::Control* e : c.Etq_Aide.elements()) {
            if (e->tag().rfind(codeAide, 0) == 0) c.Etq_Aide(e->index()).setLinkItem(debut);
        }
    }
    std::vector<std::string> debutsAffiches() const {
        std::vector<std::string> debuts;
        for (const toolkit::Control* e : c.Etq_Aide.elements()) {
            if (e->index() != 0) debuts.push_back(e->tag().substr(0, 5) + "@" + e->linkItem());
        }
        return debuts;
    }
};

void put(mvdb::Store& store, const std::string& file, const std::string& key,
         std::initializer_list<std::string> attributes) {
    mvdb::DynamicRecord r;
    std::int64_t a = 0;
    for (const std::string& attribute : attributes)
        r.set(++a, attribute);
    if (!store.hasFile(file)) store.createFile(file);
    store.write(file, key, r.text());
}

// Monday tournée 001 with two aidés planned at 8h00 and 9h00.
void remplir(mvdb::Store& store) {
    put(store, "SSIADCARACTTOURNEE", "001", {"LUNDI MATIN", "0", "6", "00", "14", "00", "M", "N1", "", "1"});
    put(store, "SSIADSOINS", "S01", {"Injection", "", "", "", "O"});
    for (const auto& [code, debut, fin] : std::initializer_list<std::array<std::string, 3>>{
             {"00012", "0800", "0950"}, {"00013", "0900", "1050"}}) {
        put(store, "CIVILAIDE", code, {"", "AIDE" + code, "Marie"});
        put(store, "SSIADACCORDS", code + "001000001", {"21000", "22000", ""});
        mvdb::DynamicRecord gestion;
        gestion.set(23, "N1");
        store.write("SSIADELEMGEST", code + "000001", gestion.text());
        const std::string cle = code + "210000000011" + debut;
        put(store, "SSIADPROTOCOLE", cle, {"", fin, "S01", "20", "1", "21000", ""});
        put(store, "SSIADTOURNEE", "001" + code + kLundi + debut, {fin, cle});
    }
    for (const char* file : {"TPSTEMPO"})
        if (!store.hasFile(file)) store.createFile(file);
}

std::vector<std::string> cles(Poste& p) {
    std::vector<std::string> keys;
    p.db->store().scanAll("SSIADTOURNEE", [&](const std::string& key, const std::string&) {
        keys.push_back(key);
        return true;
    });
    return keys;
}

// Two workstations on one filled service showing tournée 001 on the same day; B has moved 00012 to
// 8h30 and validated, and A still shows the day as it was.
struct BAvantA {
    Service service;
    Poste a, b;
    BAvantA(Base base, const std::string& name)
        : service(base, name), a(service.address()), b(service.address()) {
        remplir(a.db->store());
        a.start();
        b.start();
        a.montrer();
        b.montrer();
        b.deplacer("00012", "850");
        b.c.Cmd_Ok.fireClick();
    }
};

class TwoPlanners : public ::testing::TestWithParam<Base> {
protected:
    void SetUp() override {
        if (GetParam() == Base::Pg && testing_support::pgTestServer().empty())
            GTEST_SKIP() << "ZANDOREL_TEST_PG is not set: run under scripts/with_postgres.sh";
    }
};

const std::string kAvant12 = "00100012" + std::string(kLundi) + "0800";
const std::string kAvant13 = "00100013" + std::string(kLundi) + "0900";
const std::string kB12 = "00100012" + std::string(kLundi) + "0850";
const std::string kA13 = "00100013" + std::string(kLundi) + "0930";

TEST_P(TwoPlanners, AValidationOverAnotherWorkstationsSaveAsksFirst) {
    struct Case {
        const char* name;
        std::vector<int> reponses;        // A's answers to the question
        bool encoreModifiee;              // B saves once more while A reads the first question
        std::vector<std::string> cles;    // SSIADTOURNEE afterwards
        std::vector<std::string> ecranA;  // A's labels afterwards (aidé@start), empty when cleared
    } cases[] = {
        {"No keeps the other version and shows it",
         {msgbox::kNo},
         false,
         {kB12, kAvant13},
         {"00012@0850", "00013@0900"}},
        {"Yes replaces it with mine", {msgbox::kYes}, false, {kAvant12, kA13}, {}},
        {"changed again while asking: asked again", {msgbox::kYes, msgbox::kYes}, true, {kAvant12, kA13}, {}},
        {"changed again while asking, then No",
         {msgbox::kYes, msgbox::kNo},
         true,
         {"00100012" + std::string(kLundi) + "0845", kAvant13},
         {"00012@0845", "00013@0900"}},
    };
    int n = 0;
    for (const Case& k : cases) {
        SCOPED_TRACE(k.name);
        BAvantA postes(GetParam(), "ask" + std::to_string(++n));
        Poste& a = postes.a;
        Poste& b = postes.b;
        ASSERT_TRUE(b.host.takeShown().empty()) << "B validated first and is not asked";

        if (k.encoreModifiee) {
            a.host.onQuestion = [&] {
                a.host.onQuestion = nullptr;
                b.montrer();
                b.deplacer("00012", "845");
                b.c.Cmd_Ok.fireClick();
            };
        }
        a.deplacer("00013", "930");
        for (int r : k.reponses)
            a.host.queueAnswer(r);
        a.c.Cmd_Ok.fireClick();

        const auto boites = a.host.takeShown();
        ASSERT_EQ(boites.size(), k.reponses.size());
        for (std::size_t i = 0; i < boites.size(); ++i) {
            EXPECT_EQ(boites[i].title, "Message KORVELINE");
            EXPECT_EQ(boites[i].text, kQuestion);
            EXPECT_EQ(boites[i].style, msgbox::kYesNo | msgbox::kExclamation);
            EXPECT_EQ(boites[i].answer, k.reponses[i]);
        }
        EXPECT_EQ(cles(a), k.cles);
        EXPECT_EQ(a.debutsAffiches(), k.ecranA);
        EXPECT_EQ(a.c.ValidationAnomalies, k.reponses.back() == msgbox::kYes);
    }
}

TEST_P(TwoPlanners, AskedOnLeavingTheDayNoStaysOnTheDayShownAsStored) {
    struct Case {
        const char* name;
        int reponse;
        std::vector<std::string> cles;
        std::string date;
        std::vector<std::string> ecranA;
    } cases[] = {
        {"No: the day shown again as stored, the date box back on it",
         msgbox::kNo,
         {kB12, kAvant13},
         "23/11/2026",
         {"00012@0850", "00013@0900"}},
        {"Yes: mine saved, and the date chosen goes on", msgbox::kYes, {kAvant12, kA13}, "30/11/2026", {}},
    };
    int n = 0;
    for (const Case& k : cases) {
        SCOPED_TRACE(k.name);
        BAvantA postes(GetParam(), "leave" + std::to_string(++n));
        Poste& a = postes.a;
        a.deplacer("00013", "930");
        a.host.queueAnswer(msgbox::kYes);  // the question on saving
        a.host.queueAnswer(k.reponse);
        toolkit::input::choose(a.c.Cbo_Date, "30/11/2026");

        const auto boites = a.host.takeShown();
        ASSERT_EQ(boites.size(), 2u);
        EXPECT_EQ(boites[1].text, kQuestion);
        EXPECT_EQ(cles(a), k.cles);
        EXPECT_EQ(a.c.Cbo_Date.text(), k.date);
        EXPECT_EQ(a.debutsAffiches(), k.ecranA);
    }
}

TEST_P(TwoPlanners, OnePlannerAloneIsNeverAsked) {
    Service service(GetParam(), "alone");
    Poste a(service.address());
    Poste b(service.address());
    remplir(a.db->store());
    a.start();
    b.start();
    // B looks at the day and saves nothing; A saves three times, showing the day again in between.
    b.montrer();
    for (const char* debut : {"930", "945", "0900"}) {
        a.montrer();
        a.deplacer("00013", debut);
        a.c.Cmd_Ok.fireClick();
        EXPECT_TRUE(a.host.takeShown().empty()) << debut;
    }
    EXPECT_EQ(cles(a), (std::vector<std::string>{kAvant12, kAvant13}));
    // A day never saved, then saved by its own planner only.
    a.c.Txt_CodeTournee.setText("");
    a.c.Txt_CodeTournee.setText("001");
    a.c.Cbo_Date.setText("30/11/2026");
    a.c.Cmd_Affichage.fireClick();
    a.c.Cmd_Ok.fireClick();
    EXPECT_TRUE(a.host.takeShown().empty());
    EXPECT_EQ(cles(a).size(), 4u);
}

// A planned intervention left off the screen because a record it depends on is at fault: named once with
// the fault, and stored on exactly as it was through a validation of its day, on either store.
using KeptRecords = TwoPlanners;

std::string enregistrement(Poste& p, const std::string& key) {
    return p.db->store().read("SSIADTOURNEE", key).value_or("(absent)");
}

TEST_P(KeptRecords, AValidationStoresOnWhatTheDisplayLeftOffForAFaultElsewhere) {
    const std::string protocole12 = "000122100000000110800";
    const std::string accord12 = "00012001000001";
    const std::string garde =
        "\r\nInterventions planifiées non affichées, gardées telles quelles :\r\n"
        "SSIADTOURNEE « 00100012215120800 », qui dépend de ";
    struct Case {
        const char* name;
        std::string file, key;
        std::initializer_list<std::string> attributes;
        std::string message;  // the one box of the display
    } cases[] = {
        {"its protocole lasts -30 minutes",
         "SSIADPROTOCOLE",
         protocole12,
         {"", "0950", "S01", "-30", "1", "21000", ""},
         "SSIADPROTOCOLE « 000122100000000110800 », attribut 4 (durée) : « -30 » est hors de 1 à 1440 "
         "minutes" +
             garde + "SSIADPROTOCOLE « 000122100000000110800 »"},
        {"its protocole begins on no day",
         "SSIADPROTOCOLE",
         protocole12,
         {"", "0950", "S01", "20", "1", "2100O", ""},
         "SSIADPROTOCOLE « 000122100000000110800 », attribut 6 (premier jour) : « 2100O » n'est pas un jour "
         "interne (5 chiffres au plus)" +
             garde + "SSIADPROTOCOLE « 000122100000000110800 »"},
        {"its accord ends on no day",
         "SSIADACCORDS",
         accord12,
         {"21000", "2200a", ""},
         "SSIADACCORDS « 00012001000001 », attribut 2 (dernier jour) : « 2200a » n'est pas un jour interne "
         "(5 chiffres au plus)" +
             garde + "SSIADACCORDS « 00012001000001 »"},
        {"its accord ends on day -1, out of the day's accords",
         "SSIADACCORDS",
         accord12,
         {"21000", "-1", ""},
         "SSIADACCORDS « 00012001000001 », attribut 2 (dernier jour) : « -1 » n'est pas un jour interne "
         "(5 chiffres au plus)" +
             garde + "SSIADACCORDS « 00012001000001 »"},
    };
    int n = 0;
    for (const Case& k : cases) {
        SCOPED_TRACE(k.name);
        Service service(GetParam(), "kept" + std::to_string(++n));
        Poste a(service.address());
        remplir(a.db->store());
        put(a.db->store(), k.file, k.key, k.attributes);
        const std::string avant = enregistrement(a, kAvant12);
        a.start();
        a.montrer();

        const auto boites = a.host.takeShown();
        ASSERT_EQ(boites.size(), 1u);
        EXPECT_EQ(boites[0].title, "Message KORVELINE");
        EXPECT_EQ(boites[0].style, msgbox::kExclamation);
        EXPECT_EQ(boites[0].text, "Enregistrements incohérents, laissés de côté :\r\n" + k.message);
        EXPECT_EQ(a.debutsAffiches(), (std::vector<std::string>{"00013@0900"}));

        a.deplacer("00013", "930");
        a.c.Cmd_Ok.fireClick();
        EXPECT_TRUE(a.host.takeShown().empty());
        EXPECT_EQ(cles(a), (std::vector<std::string>{kAvant12, kA13}));
        EXPECT_EQ(enregistrement(a, kAvant12), avant);
    }
}

// A later Monday fits the version of 23/11: its validation writes the day's own version, and the record
// left off goes into it as it is stored, the version of 23/11 untouched.
TEST_P(KeptRecords, AValidationOfAFittedDayCarriesOnWhatItLeftOff) {
    Service service(GetParam(), "keptfit");
    Poste a(service.address());
    remplir(a.db->store());
    put(a.db->store(), "SSIADPROTOCOLE", "000122100000000110800",
        {"", "0950", "S01", "-30", "1", "21000", ""});
    const std::string avant12 = enregistrement(a, kAvant12);
    const std::string avant13 = enregistrement(a, kAvant13);
    a.start();
    a.c.Txt_CodeTournee.setText("001");
    a.c.Cbo_Date.setText("30/11/2026");
    a.c.Cmd_Affichage.fireClick();
    const auto boites = a.host.takeShown();
    ASSERT_EQ(boites.size(), 1u);
    EXPECT_NE(boites[0].text.find("\r\nSSIADTOURNEE « 00100012215120800 », qui dépend de SSIADPROTOCOLE"),
              std::string::npos)
        << boites[0].text;

    a.deplacer("00013", "930");
    a.c.Cmd_Ok.fireClick();
    EXPECT_TRUE(a.host.takeShown().empty());
    const std::string lundi30 = "21519";
    EXPECT_EQ(cles(a), (std::vector<std::string>{kAvant12, "00100012" + lundi30 + "0800", kAvant13,
                                                 "00100013" + lundi30 + "0930"}));
    EXPECT_EQ(enregistrement(a, "00100012" + lundi30 + "0800"), avant12);
    EXPECT_EQ(enregistrement(a, kAvant12), avant12);
    EXPECT_EQ(enregistrement(a, kAvant13), avant13);
}

TEST_P(KeptRecords, ALabelMovedOntoTheKeyOfAKeptRecordIsRefusedAndNothingChanges) {
    Service service(GetParam(), "keptkey");
    Poste a(service.address());
    remplir(a.db->store());
    // 00012's protocole of 8h00 lasts -30 minutes; his other one, of 9h00, is planned at 9h00.
    put(a.db->store(), "SSIADPROTOCOLE", "000122100000000110800",
        {"", "0950", "S01", "-30", "1", "21000", ""});
    const std::string neuf = "000122100000000110900";
    put(a.db->store(), "SSIADPROTOCOLE", neuf, {"", "1050", "S01", "20", "1", "21000", ""});
    put(a.db->store(), "SSIADTOURNEE", "00100012" + std::string(kLundi) + "0900", {"0920", neuf});
    a.start();
    a.montrer();
    a.host.takeShown();
    const std::vector<std::string> avant = cles(a);

    a.deplacer("00012", "800");  // outside its window: the anomaly list is answered Yes
    a.host.queueDialog("Frm_Anomalies", [](toolkit::Form& form) { form.find("Cmd_Ok")->fireClick(); });
    a.c.Cmd_Ok.fireClick();

    const auto boites = a.host.takeShown();
    ASSERT_EQ(boites.size(), 1u);
    EXPECT_EQ(boites[0].title, "Message KORVELINE");
    EXPECT_EQ(
        boites[0].text,
        "La tournée n'a pas pu être enregistrée : SSIADTOURNEE « 00100012215120800 » : une intervention "
        "planifiée non affichée, gardée telle quelle, a déjà ce début\r\nLa tournée enregistrée n'a pas été "
        "modifiée.");
    EXPECT_EQ(cles(a), avant);
    EXPECT_EQ(a.debutsAffiches(), (std::vector<std::string>{"00012@800", "00013@0900"}));
    EXPECT_FALSE(a.c.ValidationAnomalies);
}

INSTANTIATE_TEST_SUITE_P(Stores, KeptRecords, ::testing::Values(Base::Sqlite, Base::Pg),
                         [](const ::testing::TestParamInfo<Base>& i) {
                             return i.param == Base::Pg ? "PostgreSQL" : "SQLite";
                         });

INSTANTIATE_TEST_SUITE_P(Stores, TwoPlanners, ::testing::Values(Base::Sqlite, Base::Pg),
                         [](const ::testing::TestParamInfo<Base>& i) {
                             return i.param == Base::Pg ? "PostgreSQL" : "SQLite";
                         });

}  // namespace
