#include "companions/companions.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "support/small_service.h"

namespace {

using control::Frm_DossierAide;
using control::Frm_ElemGestSSIAD;
using control::Frm_ProtocoleSsiad;
using control::Frm_SsiadCaractTournee;
using Liste = std::vector<std::string>;

// Tournée "001" shown on Monday 23/11/2026 with aidé 00012 DUPONT Marie waiting from 8h00 to 9h00.
struct Ecran : testing_support::SmallService {
    Ecran() {
        aide("00012", "DUPONT");
        cle = protocole("00012", "0800", "0900", "30");
        start();
        show();
    }
    std::string cle;
    // A right click on the last label made, then the entry; the screen that opens runs `script`.
    void menu(const std::string& entree, const std::string& forme,
              std::function<void(toolkit::Form&)> script) {
        f.host.queueMenuChoice(entree);
        f.host.queueDialog(forme, std::move(script));
        c.Etq_Aide_MouseDown(c.IndiceEtqMax, 2, 0, 0, 0);
    }
    std::string enreg(const std::string& fichier, const std::string& key) {
        return mvdb::DynamicRecord(f.service.db->store().read(fichier, key).value_or("")).text();
    }
    // The message of the refusal, or "" when `enregistrer` went through.
    std::string refus(const std::function<bool()>& enregistrer) {
        const bool ok = enregistrer();
        auto boites = f.host.takeShown();
        EXPECT_EQ(ok, boites.empty());
        return boites.empty() ? "" : boites.back().text;
    }
};

// ---- What the control hands each screen.

TEST(Companions, EachScreenGetsItsMembersInOrderAndStartsOnTheLabelsAide) {
    struct Cas {
        const char *nom, *entree, *forme;
        Liste membres;
        std::function<std::string(toolkit::Form&)> vu;  // what the screen shows of the aidé
        std::string attendu;
    } const cas[] = {
        {"aidé file",
         "Mnu_DossierAide",
         "Frm_DossierAide",
         {"Droits", "TheDatabase", "TheClient", "Droits", "Demarrer"},
         [](toolkit::Form& f) { return static_cast<Frm_DossierAide&>(f).Txt_Nom.text(); },
         "DUPONT"},
        {"management elements",
         "Mnu_ElemGestSSIAD",
         "Frm_ElemGestSSIAD",
         {"Droits", "CodeAide", "NomAide", "TheDatabase", "TheClient", "Droits", "Demarrer"},
         [](toolkit::Form& f) { return static_cast<Frm_ElemGestSSIAD&>(f).Etq_Aide.caption(); },
         "00012  DUPONT Marie"},
        {"protocoles",
         "Mnu_ProtocoleTraitement",
         "Frm_ProtocoleSsiad",
         {"Droits", "CodeAide", "DateProtocole", "Droits", "TheDatabase", "TheClient", "Demarrer"},
         [](toolkit::Form& f) { return static_cast<Frm_ProtocoleSsiad&>(f).Lst_Protocoles.list(0); },
         "08h00 - 09h00   30 mn   S01"},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Ecran e;
        Liste membres;
        std::string vu;
        e.menu(k.entree, k.forme, [&](toolkit::Form& f) {
            membres = static_cast<control::FormeCompagnon&>(f).membresRecus();
            vu = k.vu(f);
            f.unload();
        });
        EXPECT_EQ(membres, k.membres);
        EXPECT_EQ(vu, k.attendu);
    }
}

TEST(Companions, ElementsGetNoNameWhenTheAideHasNoCivilRecord) {
    Ecran e;
    e.c.Mod.fichiers.CIVILAIDE->Delete("00012");
    Liste membres;
    e.menu("Mnu_ElemGestSSIAD", "Frm_ElemGestSSIAD", [&](toolkit::Form& f) {
        membres = static_cast<Frm_ElemGestSSIAD&>(f).membresRecus();
        EXPECT_EQ(static_cast<Frm_ElemGestSSIAD&>(f).nomAide(), "");
        f.unload();
    });
    EXPECT_EQ(membres, (Liste{"Droits", "CodeAide", "TheDatabase", "TheClient", "Droits", "Demarrer"}));
}

TEST(Companions, ProtocolesGetTheShownDateFromTheFieldOnShow) {
    // The date goes through its internal day and back: a text that is no full date gives none.
    struct Cas {
        const char* nom;
        bool sansTournee;
        std::string saisie, attendu;
    } const cas[] = {{"no tournée, a short date typed after the display: none", true, "23/11/26", ""},
                     {"a tournée shown: Cbo_Date's", false, "", "23/11/2026"},
                     {"no tournée: Txt_Date's", true, "23/11/2026", "23/11/2026"}};
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Ecran e;
        if (k.sansTournee) {
            e.c.Txt_CodeTournee.setText("");
            e.c.Txt_Date.setText("23/11/2026");
            e.c.Cmd_Affichage.fireClick();
            e.c.Txt_Date.setText(k.saisie);
        }
        std::string date = "(non ouvert)";
        e.menu("Mnu_ProtocoleTraitement", "Frm_ProtocoleSsiad", [&](toolkit::Form& f) {
            date = static_cast<Frm_ProtocoleSsiad&>(f).dateProtocole();
            f.unload();
        });
        EXPECT_EQ(date, k.attendu);
    }
}

TEST(Companions, HelpOpensThePlannersPageInItsWindow) {
    Ecran e;
    e.c.Mnu_Sommaire.fireClick();
    using Aide = std::pair<std::string, std::string>;
    EXPECT_EQ(e.f.host.helpShown(), (std::vector<Aide>{{"SSIADTournee.htm", "Gestion des tournées SSIAD"}}));
}

// ---- Tournée characteristics, from Cmd_Tournee.

TEST(Frm_SsiadCaractTournee, ANewTourneeSavedThereJoinsTheListOnlyWhenTheCodeShownWasNew) {
    struct Cas {
        const char* nom;
        std::string code;
        Liste liste;  // Cbo_Tournee afterwards
    } const cas[] = {{"no code: the list is rebuilt", "", {"LUNDI MATIN", "MARDI SOIR"}},
                     {"an existing code: the list stays", "001", {"LUNDI MATIN"}}};
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Ecran e;
        e.c.Txt_CodeTournee.setText(k.code);
        e.f.host.queueDialog("Frm_SsiadCaractTournee", [&](toolkit::Form& f) {
            auto& s = static_cast<Frm_SsiadCaractTournee&>(f);
            EXPECT_EQ(s.Txt_Code.text(), k.code);
            s.Cmd_Nouveau.fireClick();
            for (auto& [boite, texte] :
                 std::vector<std::pair<toolkit::TextBox*, std::string>>{{&s.Txt_Code, "002"},
                                                                        {&s.Txt_Libelle, "mardi soir"},
                                                                        {&s.Txt_Jour, "1"},
                                                                        {&s.Txt_HeureDebut, "17"},
                                                                        {&s.Txt_MinuteDebut, "0"},
                                                                        {&s.Txt_HeureFin, "20"},
                                                                        {&s.Txt_MinuteFin, "30"},
                                                                        {&s.Txt_Type, "s"},
                                                                        {&s.Txt_Secteurs, "N1  N2"}})
                boite->setText(texte);
            s.Cmd_Enregistrer.fireClick();
            EXPECT_EQ(s.Lst_Tournees.items(), (Liste{"001   LUNDI MATIN", "002   MARDI SOIR"}));
            s.Cmd_Fermer.fireClick();
        });
        e.c.Cmd_Tournee.fireClick();
        EXPECT_EQ(e.c.Cbo_Tournee.items(), k.liste);
        EXPECT_EQ(e.enreg("SSIADCARACTTOURNEE", "002"), mvdb::DynamicRecord("MARDI SOIR\xFE"
                                                                            "1\xFE"
                                                                            "17\xFE"
                                                                            "00\xFE"
                                                                            "20\xFE"
                                                                            "30\xFES\xFEN1\xFDN2\xFE\xFE"
                                                                            "1")
                                                            .text());
    }
}

TEST(Frm_SsiadCaractTournee, RefusesBadInputBeforeWritingAnything) {
    using F = Frm_SsiadCaractTournee;
    struct Cas {
        const char* nom;
        toolkit::TextBox F::*champ;
        std::string valeur, message;
    } const cas[] = {
        {"code of two digits", &F::Txt_Code, "02", "Le code de la tournée doit compter trois chiffres."},
        {"code taken", &F::Txt_Code, "001", "Le code 001 est déjà celui d'une autre tournée."},
        {"no label", &F::Txt_Libelle, "", "Le libellé de la tournée est obligatoire."},
        {"weekday 7", &F::Txt_Jour, "7", "Le jour de la tournée va de 0 (lundi) à 6 (dimanche)."},
        {"start off the quarter", &F::Txt_MinuteDebut, "10",
         "Les horaires se saisissent au quart d'heure : heures de 0 à 24, minutes 00, 15, 30 ou 45."},
        {"end hour 25", &F::Txt_HeureFin, "25",
         "Les horaires se saisissent au quart d'heure : heures de 0 à 24, minutes 00, 15, 30 ou 45."},
        {"end at the start", &F::Txt_HeureFin, "17", "L'heure de début doit précéder l'heure de fin."},
        {"type X", &F::Txt_Type, "X", "Le type de la tournée est I (infirmier), S (soignant) ou M (mixte)."},
        {"three intervenants", &F::Txt_NbIntervenants, "3", "Le nombre d'intervenants est 1 ou 2."},
        {"deletion mark 2", &F::Txt_Supprimee, "2", "La marque de suppression est vide ou 1."},
        {"accepted", &F::Txt_Supprimee, "1", ""},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Ecran e;
        F s(e.c);
        s.setTheDatabase(e.f.service.db);
        s.setCodeTournee("002");
        s.Demarrer();
        for (auto& [boite, texte] :
             std::vector<std::pair<toolkit::TextBox*, std::string>>{{&s.Txt_Libelle, "X"},
                                                                    {&s.Txt_Jour, "1"},
                                                                    {&s.Txt_HeureDebut, "17"},
                                                                    {&s.Txt_MinuteDebut, "00"},
                                                                    {&s.Txt_HeureFin, "20"},
                                                                    {&s.Txt_MinuteFin, "00"},
                                                                    {&s.Txt_Type, "I"}})
            boite->setText(texte);
        (s.*k.champ).setText(k.valeur);
        EXPECT_EQ(e.refus([&] { return s.Cmd_Enregistrer_Click(); }), k.message);
        EXPECT_EQ(e.f.service.db->store().read("SSIADCARACTTOURNEE", "002").has_value(), k.message.empty());
    }
}

// ---- Aidé file, elements and protocoles.

TEST(Frm_DossierAide, ChecksTheNameAndAbsencesAndKeepsTheOtherAttributes) {
    struct Cas {
        const char *nom, *nomAide, *du, *au, *message;
    } const cas[] = {
        {"no name", "", "01/12/2026", "05/12/2026", "Le nom de l'aidé est obligatoire."},
        {"no start", "DUPONT", "32/12/2026", "05/12/2026",
         "La date de début de l'absence n'est pas une date."},
        {"no end", "DUPONT", "01/12/2026", "x", "La date de fin de l'absence n'est pas une date."},
        {"end before start", "DUPONT", "05/12", "01/12", "L'absence ne peut finir avant d'avoir commencé."},
        {"accepted", "DURAND", "01/12/26", "05/12/2026", ""},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Ecran e;
        e.f.service.put("CIVILAIDE", "00012",
                        {"", "DUPONT", "Marie", "", "", "", "", "", "", "", "", "", "", "", "",
                         "", "",       "",      "", "", "", "", "", "", "", "", "", "", "", "AUTRE"});
        Frm_DossierAide d(e.c);
        d.setTheDatabase(e.f.service.db);
        d.Demarrer("00012");
        d.Txt_AbsenceDebut.setText(k.du);
        d.Txt_AbsenceFin.setText(k.au);
        d.Txt_Nom.setText(k.nomAide);
        std::string message = e.refus([&] { return d.Cmd_AjouterAbsence_Click(); });
        if (message.empty()) message = e.refus([&] { return d.Cmd_Enregistrer_Click(); });
        EXPECT_EQ(message, k.message);
        if (!message.empty()) continue;
        const mvdb::DynamicRecord r(e.enreg("CIVILAIDE", "00012"));
        EXPECT_EQ(r(2) + "|" + r(20) + "|" + r(21) + "|" + r(30), "DURAND|21520|21524|AUTRE");
        EXPECT_EQ(d.Lst_Absences.items(), Liste{"du 01/12/2026 au 05/12/2026"});
    }
}

TEST(Frm_ElemGestSSIAD, SavesASectorAndStaysOpenWhileOneIsChangedAndNotSaved) {
    struct Cas {
        const char *nom, *secteur;
        bool enregistrer;
        const char *message, *ecrit;
    } const cas[] = {
        {"empty sector", "", true, "Le secteur est un code sans blanc, obligatoire.", "N1"},
        {"sector with a blank", "N 2", true, "Le secteur est un code sans blanc, obligatoire.", "N1"},
        {"closing on a change", "N2", false,
         "Le secteur a été modifié : enregistrez-le ou annulez la modification avant de fermer.", "N1"},
        {"saved, then closed", "N2", true, "", "N2"},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Ecran e;
        Frm_ElemGestSSIAD g(e.c);
        g.setTheDatabase(e.f.service.db);
        g.setCodeAide("00012");
        g.Demarrer();
        EXPECT_EQ(g.Lst_Elements.items(), Liste{"000001   N1"});
        g.Txt_Secteur.setText(k.secteur);
        std::string message = k.enregistrer ? e.refus([&] { return g.Cmd_Enregistrer_Click(); }) : "";
        if (message.empty()) message = e.refus([&] { return g.unload(); });
        EXPECT_EQ(message, k.message);
        EXPECT_EQ(mvdb::DynamicRecord(e.enreg("SSIADELEMGEST", "00012000001"))(23), k.ecrit);
    }
}

TEST(Frm_ProtocoleSsiad, ChecksEachFieldBeforeWritingTheProtocole) {
    using P = Frm_ProtocoleSsiad;
    struct Cas {
        const char* nom;
        toolkit::TextBox P::*champ;
        std::string valeur, message;
    } const cas[] = {
        {"weekday 8", &P::Txt_Jours, "1 8", "Les jours vont de 1 (lundi) à 7 (dimanche)."},
        {"window ending before it starts", &P::Txt_BorneFin, "07h30",
         "La fin de la fenêtre s'écrit HHhMM, par exemple 11h30, après son début (08h00)."},
        {"window ending as it starts", &P::Txt_BorneFin, "8h",
         "La fin de la fenêtre s'écrit HHhMM, par exemple 11h30, après son début (08h00)."},
        {"window end in hundredths", &P::Txt_BorneFin, "0900",
         "La fin de la fenêtre s'écrit HHhMM, par exemple 11h30, après son début (08h00)."},
        {"minutes past 59", &P::Txt_BorneFin, "9h75",
         "La fin de la fenêtre s'écrit HHhMM, par exemple 11h30, après son début (08h00)."},
        {"past midnight", &P::Txt_BorneFin, "24h05",
         "La fin de la fenêtre s'écrit HHhMM, par exemple 11h30, après son début (08h00)."},
        {"no duration", &P::Txt_DureeMn, "0", "La durée se saisit en minutes, de 1 à 999."},
        {"no soin", &P::Txt_Soins, " ", "Le protocole doit compter au moins un soin."},
        {"unknown soin", &P::Txt_Soins, "S01 S99", "Le soin S99 n'existe pas."},
        {"three intervenants", &P::Txt_NbIntervenants, "3", "Le nombre d'intervenants est 1 ou 2."},
        {"accepted", &P::Txt_Soins, "S01 S02", ""},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Ecran e;
        P p(e.c);
        p.setTheDatabase(e.f.service.db);
        p.setCodeAide("00012");
        p.setDateProtocole("23/11/2026");
        p.Demarrer();
        p.Txt_Jours.setText("1 3");
        (p.*k.champ).setText(k.valeur);
        EXPECT_EQ(e.refus([&] { return p.Cmd_Enregistrer_Click(); }), k.message);
        const mvdb::DynamicRecord r(e.enreg("SSIADPROTOCOLE", e.cle));
        EXPECT_EQ(r(1, 2) + "|" + r(3, 2), k.message.empty() ? "3|S02" : "|");
    }
}

TEST(Frm_ProtocoleSsiad, ShowsTheWindowsAsTheClockReadsThem) {
    struct Cas {
        const char *nom, *debut, *fin, *liste, *champ;
    } const cas[] = {
        {"half past eleven", "0900", "1150", "09h00 - 11h30   30 mn   S01", "11h30"},
        {"evening, off the five minutes", "1750", "1983", "17h30 - 19h50   30 mn   S01", "19h50"},
        {"a hair before nine", "0750", "0899", "07h30 - 09h00   30 mn   S01", "09h00"},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        testing_support::SmallService s;
        s.aide("00012", "DUPONT");
        s.protocole("00012", k.debut, k.fin, "30");
        s.start();
        Frm_ProtocoleSsiad p(s.c);
        p.setTheDatabase(s.f.service.db);
        p.setCodeAide("00012");
        p.setDateProtocole("23/11/2026");
        p.Demarrer();
        EXPECT_EQ(p.Lst_Protocoles.items(), Liste{k.liste});
        EXPECT_EQ(p.Txt_BorneFin.text(), k.champ);
    }
}

TEST(Frm_ProtocoleSsiad, WritesATypedEndInHundredthsAndKeepsOneLeftAsShown) {
    struct Cas {
        const char *nom, *fin, *saisie, *ecrit;
    } const cas[] = {
        {"left as shown keeps its own hundredths", "1110", "11h05", "1110"},
        {"typed", "1110", "11h30", "1150"},
        {"typed without minutes", "1110", "9h", "0900"},
        {"typed on one digit", "1110", "9h10", "0917"},
        {"end of the day", "1110", "24h00", "2400"},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Ecran e;
        const std::string cle = e.protocole("00012", "0800", k.fin, "30");
        Frm_ProtocoleSsiad p(e.c);
        p.setTheDatabase(e.f.service.db);
        p.setCodeAide("00012");
        p.setDateProtocole("23/11/2026");
        p.Demarrer();
        p.Lst_Protocoles.setListIndex(0);
        p.Txt_BorneFin.setText(k.saisie);
        EXPECT_EQ(e.refus([&] { return p.Cmd_Enregistrer_Click(); }), "");
        EXPECT_EQ(mvdb::DynamicRecord(e.enreg("SSIADPROTOCOLE", cle))(2), k.ecrit);
    }
}

}  // namespace
