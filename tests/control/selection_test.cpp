#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "base/text.h"
#include "shell/ctr_zandorel.h"
#include "support/control_fixture.h"
#include "toolkit/input.h"

namespace {

namespace input = toolkit::input;
namespace msgbox = toolkit::msgbox;
using Boites = std::vector<std::tuple<std::string, std::string, int>>;

// The box expected, none for an empty text.
Boites boite(const std::string& texte, int style) {
    if (texte.empty()) return {};
    return {{"Message KORVELINE", texte, style}};
}

// Tournées of 7h30 to 13h45: 001 on Monday, 005 on Sunday, 003 and 004 deleted. Today is in November.
struct Service : testing_support::ControlFixture {
    control::Ctr_Zandorel& c = *ctl;
    explicit Service(int aujourdhui = 22) {
        service.clock.setToday(*base::Date::fromDmy(aujourdhui, 11, 2026));
        for (const auto& [code, libelle, jour, marque] :
             std::vector<std::tuple<std::string, std::string, std::string, std::string>>{
                 {"001", "MATIN NORD", "0", ""},
                 {"003", "MATIN SUD", "0", "1"},
                 {"004", "APRES-MIDI", "0", "X"},
                 {"005", "SOIR EST", "6", ""}}) {
            service.put("SSIADCARACTTOURNEE", code,
                        {libelle, jour, "7", "30", "13", "45", "I", "", marque, "2"});
        }
        start(2);
    }
    Boites boites() {
        Boites out;
        for (const auto& b : host.takeShown())
            out.emplace_back(b.title, b.text, b.style);
        return out;
    }
};

TEST(SelectionCode, TheFirstTwoKeystrokesLeaveNoTourneeTheThirdOpensIt) {
    Service s;
    input::click(s.c.Opt_Soir);
    std::vector<std::string> vu;
    auto change = s.c.Txt_CodeTournee.Change;
    s.c.Txt_CodeTournee.Change = [&] {
        change();
        vu.push_back(base::numberText(s.c.HeureDebutEchelle) + " " + s.c.Cbo_Tournee.text());
    };
    input::type(s.c.Txt_CodeTournee, "001");
    EXPECT_EQ(vu, (std::vector<std::string>{"6 ", "6 ", "7,3 MATIN NORD"}));
    EXPECT_EQ(s.c.PasQuartHeure, 224);
    EXPECT_TRUE(s.c.Opt_Matin.value() && s.c.Cbo_Date.visible());
    EXPECT_FALSE(s.c.Frm_MatinSoir.enabled() || s.c.Opt_Soir.enabled() || s.c.Txt_Date.visible());
}

TEST(SelectionCode, TypedCodes) {
    const std::string absente = "Cette tournée n'existe pas.", supprimee = "Cette tournée a été supprimée.";
    struct {
        const char* nom;
        std::string tape;
        bool tab;
        std::string code, libelle, message;
    } const cas[] = {
        {"an unknown code", "009", false, "", "", absente},
        {"the mark \"1\"", "003", false, "", "", supprimee},
        {"the mark \"X\", though listed", "004", false, "", "", supprimee},
        {"\"5\" then Tab: padded, and read", "5", true, "005", "SOIR EST", ""},
        {"letters are swallowed", "0x01", false, "001", "MATIN NORD", ""},
    };
    for (const auto& k : cas) {
        Service s;
        input::type(s.c.Txt_CodeTournee, k.tape);
        if (k.tab) input::key(s.c.Txt_CodeTournee, toolkit::Key::Tab);
        EXPECT_EQ(s.boites(), boite(k.message, 48)) << k.nom;
        EXPECT_EQ(s.c.Txt_CodeTournee.text(), k.code) << k.nom;
        EXPECT_EQ(s.c.Cbo_Tournee.text(), k.libelle) << k.nom;
        EXPECT_EQ(s.c.Txt_Date.visible(), k.code.empty()) << k.nom;
        EXPECT_EQ(s.c.Cbo_Tournee.items().size(), 3u) << k.nom;
    }
}

TEST(SelectionDates, TheTourneesDaysFromTwoMonthsBackTheNextOneChosen) {
    struct {
        const char* nom;
        int aujourdhui;
        std::string code, choisie, premiere, derniere;
        std::size_t nombre;
    } const cas[] = {
        {"a Monday on a Monday: today", 23, "001", "23/11/2026", "28/09/2026", "18/01/2027", 17},
        {"a Sunday on a Wednesday: this week", 25, "005", "29/11/2026", "27/09/2026", "24/01/2027", 18},
        {"a Monday on a Wednesday: next week", 25, "001", "30/11/2026", "28/09/2026", "18/01/2027", 17},
    };
    for (const auto& k : cas) {
        Service s(k.aujourdhui);
        input::type(s.c.Txt_CodeTournee, k.code);
        const auto& dates = s.c.Cbo_Date.items();
        EXPECT_EQ(s.c.Cbo_Date.text(), k.choisie) << k.nom;
        EXPECT_EQ(std::tie(dates.front(), dates.back()), std::tie(k.premiere, k.derniere)) << k.nom;
        EXPECT_EQ(dates.size(), k.nombre) << k.nom;
        EXPECT_TRUE(s.c.Cmd_Affichage.enabled()) << k.nom;
    }
}

TEST(SelectionDate, TypedDatesAreCompletedAndStoredEvenAfterAWarning) {
    struct {
        const char* nom;
        std::string tape, lue, message;
    } const cas[] = {
        {"no date; letters are separators", "5x12x", "5/12/",
         "Erreur de saisie dans la date, veuillez la ressaisir."},
        {"a past date", "1-11-26", "01/11/2026", "Cette date ne peut pas être antérieure à la date du jour."},
        {"day and month: this year", "5.12", "05/12/2026", ""},
    };
    for (const auto& k : cas) {
        Service s;
        input::clear(s.c.Txt_Date);
        EXPECT_FALSE(s.c.Cmd_Affichage.enabled()) << k.nom;
        input::type(s.c.Txt_Date, k.tape);
        input::focus(s.c.Cmd_Affichage);
        EXPECT_EQ(s.boites(), boite(k.message, 48)) << k.nom;
        EXPECT_EQ(s.c.Txt_Date.hasFocus(), !k.message.empty()) << k.nom;
        EXPECT_EQ(s.c.Txt_Date.text() + " " + s.c.selection().DateSaisie, k.lue + " " + k.lue) << k.nom;
        EXPECT_TRUE(s.c.Cmd_Affichage.enabled()) << k.nom;
    }
}

TEST(SelectionCode, ClearingTheCodeGoesBackToTheTypedDateAndTheMorning) {
    Service s;
    input::clear(s.c.Txt_Date);
    input::type(s.c.Txt_Date, "5/12");
    input::type(s.c.Txt_CodeTournee, "001");
    input::clear(s.c.Txt_CodeTournee);
    EXPECT_EQ(s.c.Txt_Date.text(), "05/12/2026");
    EXPECT_TRUE(s.c.Txt_Date.visible() && s.c.Opt_Matin.enabled() && s.c.Frm_MatinSoir.enabled());
    EXPECT_FALSE(s.c.Cbo_Date.visible());
    EXPECT_EQ(s.c.Cbo_Tournee.text(), "");
    EXPECT_EQ(s.c.PasQuartHeure, 175);
}

TEST(SelectionCode, AnAssignmentTargetOpensAtOnceWithOnlyTheAssignedLabelUsable) {
    Service s;
    s.c.Tables.renew(model::Pane::Aide);
    s.c.Etq_Aide.Load(1);
    s.c.Etq_Aide.Load(2);
    s.c.IndiceEtqCourante = 2;
    s.c.Mod.FlagAffectationEnCours = true;
    s.c.Txt_CodeTournee.setText("001");
    EXPECT_EQ(s.c.Cbo_Tournee.text(), "MATIN NORD");
    EXPECT_EQ(s.c.HeureDebutEchelle, 7.3);
    for (const toolkit::Control* fige : std::vector<const toolkit::Control*>{
             &s.c.Txt_Date, &s.c.Cmd_Affichage, &s.c.Cbo_Tournee, &s.c.Txt_CodeTournee, &s.c.Opt_Soir})
        EXPECT_FALSE(fige->enabled()) << fige->name();
    EXPECT_FALSE(s.c.Cbo_Date.visible());
    EXPECT_FALSE(s.c.Etq_Aide(1).enabled());
    EXPECT_TRUE(s.c.Etq_Aide(2).enabled());
}

// Tournée 001 on show for 23/11, stored with starts 0800 and 0900; one label per start given.
struct TourneeAffichee : Service {
    explicit TourneeAffichee(const std::vector<std::string>& debuts) {
        input::type(c.Txt_CodeTournee, "001");
        c.DateAffichee = c.Cbo_Date.text();
        c.Tables.renew(model::Pane::Detail);
        c.TabTourneeEnregistree.renew();
        for (int i = 1; i <= 2; ++i) {
            c.TabTourneeEnregistree->set(i, 1, "0010001221516" + base::zeroPad(700 + 100 * i, 4));
            c.TabTourneeEnregistree->set(i, 2, "00012215000000110100" + std::to_string(i));
        }
        for (int i = 1; i <= static_cast<int>(debuts.size()); ++i) {
            c.CouleurAjoutEtqLst(i, i, 800, 1200, 30, 760, "00012215000000110100" + std::to_string(i), "I");
            c.Etq_Aide.Load(i).setLeft(760);
            c.Etq_Aide(i).setLinkItem(debuts[static_cast<std::size_t>(i - 1)]);
        }
    }
};

enum class Site { Touche, AutreDate, AutreTournee };

TEST(SelectionQuestion, AskedWhereTheTourneeDiffersFromWhatWasStored) {
    using D = std::vector<std::string>;
    const D bouge{"0800", "0930"}, trois{"800", "0900"}, retire{"0800"}, pareil{"0800", "0900"};
    const std::string question = "Voulez-vous enregistrer les modifications apportées à cette tournée ?";
    struct {
        const char* nom;
        D debuts;
        Site site;
        int reponse;
        bool question, etiquettes;
        int touche;
        std::string code, date;
    } const cas[] = {
        {"moved, key, Cancel: the key is dropped", bouge, Site::Touche, msgbox::kCancel, 1, 1, 0, "001",
         "23/11"},
        {"moved, key, Yes: saved and cleared, the key goes on", bouge, Site::Touche, msgbox::kYes, 1, 0, '7',
         "", "23/11"},
        {"moved, key, No: cleared", bouge, Site::Touche, msgbox::kNo, 1, 0, '7', "001", "23/11"},
        {"moved, date, Cancel: the date shown", bouge, Site::AutreDate, msgbox::kCancel, 1, 1, '7', "001",
         "23/11"},
        {"moved, date, No: cleared", bouge, Site::AutreDate, msgbox::kNo, 1, 0, '7', "001", "18/01"},
        {"moved, tournée, Cancel: label back", bouge, Site::AutreTournee, msgbox::kCancel, 1, 1, '7', "001",
         "23/11"},
        {"moved, tournée, No: it opens", bouge, Site::AutreTournee, msgbox::kNo, 1, 0, '7', "005", "22/11"},
        {"a start of three figures", trois, Site::AutreDate, msgbox::kCancel, 1, 1, '7', "001", "23/11"},
        {"removed: the key counts rows", retire, Site::Touche, msgbox::kCancel, 1, 1, 0, "001", "23/11"},
        {"removed: the date does not, deliberately", retire, Site::AutreDate, 0, 0, 0, '7', "001", "18/01"},
        {"removed: nor the tournée", retire, Site::AutreTournee, 0, 0, 0, '7', "005", "22/11"},
        {"nothing moved: cleared", pareil, Site::Touche, 0, 0, 0, '7', "001", "23/11"},
    };
    for (const auto& k : cas) {
        TourneeAffichee t(k.debuts);
        if (k.reponse) t.host.queueAnswer(k.reponse);
        int touche = '7';
        if (k.site == Site::Touche) t.c.Txt_CodeTournee_KeyPress(touche);
        if (k.site == Site::AutreDate) input::choose(t.c.Cbo_Date, "18/01/2027");
        if (k.site == Site::AutreTournee) input::choose(t.c.Cbo_Tournee, "SOIR EST");
        EXPECT_EQ(t.boites(), boite(k.question ? question : "", 51)) << k.nom;
        EXPECT_EQ(t.c.Etq_Aide.Count() > 1 && t.c.TabTempoDetail.exists(), k.etiquettes) << k.nom;
        EXPECT_EQ(touche, k.touche) << k.nom;
        EXPECT_EQ(t.c.Txt_CodeTournee.text() + " " + t.c.Cbo_Tournee.text(),
                  k.code + (k.code.empty()    ? " "
                            : k.code == "001" ? " MATIN NORD"
                                              : " SOIR EST"))
            << k.nom;
        EXPECT_EQ(base::Left(t.c.Cbo_Date.text(), 5), k.date) << k.nom;
    }
}

TEST(SelectionQuestion, APastTourneeIsNeverAsked) {
    TourneeAffichee t({"0800", "0930"});
    t.c.TourneeAnterieure = true;
    input::choose(t.c.Cbo_Tournee, "SOIR EST");
    EXPECT_EQ(t.boites(), Boites{});
    EXPECT_EQ(t.c.Txt_CodeTournee.text(), "005");
}

}  // namespace
