#include "companions/companions.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "companions/frm_dossier_aide.h"
#include "companions/frm_elem_gest_ssiad.h"
#include "companions/frm_protocole_ssiad.h"
#include "companions/frm_ssiad_caract_tournee.h"
#include "companions/regles_service.h"
#include "support/small_service.h"
#include "toolkit/host.h"

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
    // A screen of the service opened on the database, as the control opens it.
    template <typename Ecran>
    void brancher(Ecran& ecran) {
        ecran.setTheDatabase(f.service.db);
    }
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
    // A record of SSIADELEMGEST under the longer key where the assignment dialog looks up a label's sector:
    // no element of the aidé's.
    void lookupAffectation(const std::string& key) {
        mvdb::DynamicRecord r;
        r.set(23, "N1");
        f.service.db->store().write("SSIADELEMGEST", key, r.text());
    }
    bool existe(const std::string& fichier, const std::string& key) {
        return f.service.db->store().read(fichier, key).has_value();
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
         [](toolkit::Form& f) {
             auto& p = static_cast<Frm_ProtocoleSsiad&>(f);
             return p.Cbo_Aide.text() + " " + p.Txt_Debut.text() + " - " + p.Txt_Fin.text();
         },
         "00012 DUPONT Marie 08h00 - 09h00"},
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

// ---- Tournées.

// A tournée screen on a new tournée, every field right: Tuesday evening, 17h00 to 20h00, soignant.
struct EcranTournee : Ecran {
    Frm_SsiadCaractTournee s{c};
    EcranTournee() {
        brancher(s);
        s.Demarrer();
        s.Txt_Libelle.setText("mardi soir");
        s.Cbo_Jour.setText("Mardi");
        s.Txt_Debut.setText("17h");
        s.Txt_Fin.setText("20h00");
        s.Cbo_Type.setText("S soignant");
    }
};

TEST(Frm_SsiadCaractTournee, RefusesBadInputBeforeWritingAnything) {
    using F = Frm_SsiadCaractTournee;
    struct Cas {
        const char* nom;
        std::function<void(F&)> saisie;
        std::string message;
    } const cas[] = {
        {"code of two characters", [](F& s) { s.Txt_Code.setText("02"); },
         "« Code » : 02 n'est pas un code de trois caractères sans blanc."},
        {"code taken", [](F& s) { s.Txt_Code.setText("001"); },
         "« Code » : 001 est déjà le code de la tournée « LUNDI MATIN »."},
        {"no label", [](F& s) { s.Txt_Libelle.setText(" "); }, "« Libellé » : à remplir."},
        {"no weekday", [](F& s) { s.Cbo_Jour.setText("Lundo"); },
         "« Jour » : Lundo n'est pas un jour de la semaine."},
        {"start off the quarter", [](F& s) { s.Txt_Debut.setText("17h10"); },
         "« Début » : 17h10 n'est pas au quart d'heure (minutes 00, 15, 30 ou 45)."},
        {"end hour 25", [](F& s) { s.Txt_Fin.setText("25h00"); },
         "« Fin » : 25h00 n'est pas une heure entre 00h00 et 24h00."},
        {"end at the start", [](F& s) { s.Txt_Fin.setText("17h00"); },
         "« Fin » : la fin doit être après le début."},
        {"type X", [](F& s) { s.Cbo_Type.setText("X"); },
         "« Type » : X n'est pas un type de tournée (I, S ou M)."},
        {"three intervenants", [](F& s) { s.Cbo_NbIntervenants.setText("3"); },
         "« Intervenants » : 3 n'est pas 1 ou 2."},
        {"accepted, the type by its letter", [](F& s) { s.Cbo_Type.setText("s"); }, ""},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        EcranTournee e;
        k.saisie(e.s);
        EXPECT_EQ(e.refus([&] { return e.s.Cmd_Enregistrer_Click(); }), k.message);
        EXPECT_EQ(e.existe("SSIADCARACTTOURNEE", "002"), k.message.empty());
    }
}

TEST(Frm_SsiadCaractTournee, ANewTourneeGetsTheNextCodeAndJoinsThePlannersListOnlyWhenTheCodeShownWasNew) {
    struct Cas {
        const char* nom;
        std::string code, propose;
        Liste liste;  // Cbo_Tournee afterwards
    } const cas[] = {
        {"no code: the next free one, and the list is rebuilt", "", "002", {"LUNDI MATIN", "MARDI SOIR"}},
        {"an existing code: the list stays", "001", "001", {"LUNDI MATIN"}}};
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Ecran e;
        e.c.Txt_CodeTournee.setText(k.code);
        std::string cle;
        e.f.host.queueDialog("Frm_SsiadCaractTournee", [&](toolkit::Form& f) {
            auto& s = static_cast<Frm_SsiadCaractTournee&>(f);
            EXPECT_EQ(s.Txt_Code.text(), k.propose);
            if (k.code == "001") s.Cmd_Nouveau.fireClick();
            cle = s.Txt_Code.text();
            s.Txt_Libelle.setText("mardi soir");
            s.Cbo_Jour.setText("Mardi");
            s.Txt_Debut.setText("17h");
            s.Txt_Fin.setText("20h30");
            s.Cbo_Type.setText("S soignant");
            for (const char* secteur : {"N1", "N2", "N1"}) {
                s.Cbo_Secteur.setText(secteur);
                s.Cmd_AjouterSecteur.fireClick();
            }
            s.Cmd_Enregistrer.fireClick();
            EXPECT_EQ(s.Lst_Elements.items(), (Liste{"001   LUNDI MATIN", cle + "   MARDI SOIR"}));
            EXPECT_EQ(s.Txt_Debut.text() + " " + s.Cbo_Jour.text() + " " + s.Cbo_Type.text(),
                      "17h00 Mardi S soignant");
            s.Cmd_Fermer.fireClick();
        });
        e.c.Cmd_Tournee.fireClick();
        EXPECT_EQ(e.c.Cbo_Tournee.items(), k.liste);
        EXPECT_EQ(e.enreg("SSIADCARACTTOURNEE", cle), mvdb::DynamicRecord("MARDI SOIR\xFE"
                                                                          "1\xFE"
                                                                          "17\xFE"
                                                                          "00\xFE"
                                                                          "20\xFE"
                                                                          "30\xFES\xFEN1\xFDN2\xFE\xFE"
                                                                          "1")
                                                          .text());
    }
}

TEST(Frm_SsiadCaractTournee, RefusesASectorWithABlankAndTakesANewOne) {
    struct Cas {
        const char *nom, *secteur, *message;
        Liste secteurs;
    } const cas[] = {
        {"empty", "", "« Secteurs » : à remplir.", {"N1"}},
        {"with a blank", "N 2", "« Secteurs » : N 2 n'est pas un code de secteur sans blanc.", {"N1"}},
        {"a new sector", "S9", "", {"N1", "S9"}},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Ecran e;
        Frm_SsiadCaractTournee s(e.c);
        e.brancher(s);
        s.setCodeTournee("001");
        s.Demarrer();
        EXPECT_EQ(s.Cbo_Secteur.items(), Liste{"N1"});
        s.Cbo_Secteur.setText(k.secteur);
        EXPECT_EQ(e.refus([&] { return s.Cmd_AjouterSecteur_Click(); }), k.message);
        EXPECT_EQ(s.Lst_Secteurs.items(), k.secteurs);
    }
}

// ---- Aidés.

TEST(Frm_DossierAide, ChecksTheNameAndAbsencesAndKeepsTheOtherAttributes) {
    struct Cas {
        const char *nom, *nomAide, *du, *au, *message;
    } const cas[] = {
        {"no name", " ", "01/12/2026", "05/12/2026", "« Nom » : à remplir."},
        {"no start", "DUPONT", "32/12/2026", "05/12/2026", "« Du » : 32/12/2026 n'est pas une date."},
        {"no end", "DUPONT", "01/12/2026", "x", "« Au » : x n'est pas une date."},
        {"end before start", "DUPONT", "05/12", "01/12",
         "« Au » : l'absence ne peut finir avant d'avoir commencé."},
        {"accepted", "DURAND", "01/12/26", "05/12/2026", ""},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Ecran e;
        e.f.service.put("CIVILAIDE", "00012",
                        {"", "DUPONT", "Marie", "", "", "", "", "", "", "", "", "", "", "", "",
                         "", "",       "",      "", "", "", "", "", "", "", "", "", "", "", "AUTRE"});
        Frm_DossierAide d(e.c);
        e.brancher(d);
        d.Demarrer("00012");
        d.Txt_AbsenceDebut.setText(k.du);
        d.Txt_AbsenceFin.setText(k.au);
        d.Txt_Nom.setText(k.nomAide);
        std::string message = e.refus([&] { return d.Cmd_AjouterAbsence_Click(); });
        if (message.empty()) message = e.refus([&] { return d.Cmd_Enregistrer_Click(); });
        EXPECT_EQ(message, k.message);
        const mvdb::DynamicRecord r(e.enreg("CIVILAIDE", "00012"));
        EXPECT_EQ(r(2) + "|" + r(20) + "|" + r(21) + "|" + r(30),
                  k.message[0] == 0 ? "DURAND|21520|21524|AUTRE" : "DUPONT|||AUTRE");
        if (message.empty()) {
            EXPECT_EQ(d.Lst_Absences.items(), Liste{"du 01/12/2026 au 05/12/2026"});
        }
    }
}

TEST(Frm_DossierAide, ANewAideGetsTheNextCodeAndItsAddressPrintsAsTyped) {
    Ecran e;
    Frm_DossierAide d(e.c);
    e.brancher(d);
    d.Demarrer("");
    EXPECT_EQ(d.Etq_Code.caption(), "00013 (nouveau)");
    d.Txt_Nom.setText("MARTIN");
    d.Txt_Prenom.setText("Paul");
    d.Txt_Adresse.setText("12  rue des Lilas");
    d.Txt_Telephone.setText("01 02 03 04 05");
    // A period typed and not added is saved with the rest.
    d.Txt_AbsenceDebut.setText("01/12/2026");
    d.Txt_AbsenceFin.setText("01/12/2026");
    EXPECT_EQ(e.refus([&] { return d.Cmd_Enregistrer_Click(); }), "");
    const mvdb::DynamicRecord r(e.enreg("CIVILAIDE", "00013"));
    EXPECT_EQ(r(2) + "|" + r(3) + "|" + r(5) + "|" + r(7) + "|" + r(8) + "|" + r(14) + "|" + r(20),
              "MARTIN|Paul|12|rue|des Lilas|01 02 03 04 05|21520");
    EXPECT_EQ(d.Lst_Elements.items(), (Liste{"00012 DUPONT Marie", "00013 MARTIN Paul"}));
    EXPECT_EQ(d.Etq_Code.caption() + " " + d.Txt_Adresse.text(), "00013 12 rue des Lilas");
}

// ---- Deletions, on every screen: refused while used, asked first otherwise.

TEST(Companions, DeletionIsRefusedWhileUsedAndAskedFirstOtherwise) {
    struct Cas {
        const char* nom;
        std::function<std::unique_ptr<control::EcranService>(Ecran&)> ouvrir;
        std::string fichier, cle, refus, question;
    } const cas[] = {
        {"an aidé with its accord, element and protocole",
         [](Ecran& e) {
             auto d = std::make_unique<Frm_DossierAide>(e.c);
             e.brancher(*d);
             d->Demarrer("00012");
             return d;
         },
         "CIVILAIDE", "00012",
         "L'aidé 00012 « DUPONT Marie » est encore utilisé par : accord 00012001000001, protocole "
         "000122100000000110800, élément de gestion 00012000001.",
         ""},
        {"a tournée planned",
         [](Ecran& e) {
             e.f.service.put("SSIADTOURNEE", "00100012215120800", {"0900", e.cle});
             auto s = std::make_unique<Frm_SsiadCaractTournee>(e.c);
             e.brancher(*s);
             s->setCodeTournee("001");
             s->Demarrer();
             return s;
         },
         "SSIADCARACTTOURNEE", "001",
         "La tournée 001 « LUNDI MATIN » est encore utilisée par : planning du 23/11/2026.", ""},
        {"an element with its accord and protocole",
         [](Ecran& e) {
             auto g = std::make_unique<Frm_ElemGestSSIAD>(e.c);
             e.brancher(*g);
             g->setCodeAide("00012");
             g->Demarrer();
             return g;
         },
         "SSIADELEMGEST", "00012000001",
         "L'élément de gestion 000001 de l'aidé 00012 est encore utilisé par : accord 00012001000001, "
         "protocole "
         "000122100000000110800.",
         ""},
        {"a protocole planned",
         [](Ecran& e) {
             e.f.service.put("SSIADTOURNEE", "00100012215120800", {"0900", e.cle});
             auto p = std::make_unique<Frm_ProtocoleSsiad>(e.c);
             e.brancher(*p);
             p->setCodeAide("00012");
             p->setDateProtocole("23/11/2026");
             p->Demarrer();
             return p;
         },
         "SSIADPROTOCOLE", "000122100000000110800",
         "Le protocole de 08h00 à 09h00 de l'aidé 00012 « DUPONT Marie » est encore utilisé par : tournée "
         "001 du "
         "23/11/2026.",
         ""},
        {"a protocole not planned",
         [](Ecran& e) {
             auto p = std::make_unique<Frm_ProtocoleSsiad>(e.c);
             e.brancher(*p);
             p->setCodeAide("00012");
             p->setDateProtocole("23/11/2026");
             p->Demarrer();
             return p;
         },
         "SSIADPROTOCOLE", "000122100000000110800", "",
         "Supprimer le protocole de 08h00 à 09h00 de l'aidé 00012 « DUPONT Marie » ?"},
        {"a tournée not planned",
         [](Ecran& e) {
             auto s = std::make_unique<Frm_SsiadCaractTournee>(e.c);
             e.brancher(*s);
             s->setCodeTournee("001");
             s->Demarrer();
             return s;
         },
         "SSIADCARACTTOURNEE", "001", "", "Supprimer la tournée 001 « LUNDI MATIN » ?"},
    };
    for (const Cas& k : cas) {
        for (int reponse : {toolkit::msgbox::kNo, toolkit::msgbox::kYes}) {
            SCOPED_TRACE(std::string(k.nom) + (reponse == toolkit::msgbox::kYes ? ", yes" : ", no"));
            Ecran e;
            auto ecran = k.ouvrir(e);
            ASSERT_EQ(ecran->cleCourante(), k.cle);
            if (k.refus.empty()) e.f.host.queueAnswer(reponse);
            const bool supprime = ecran->Cmd_Supprimer_Click();
            const auto boites = e.f.host.takeShown();
            ASSERT_EQ(boites.size(), 1u);
            EXPECT_EQ(boites[0].text, k.refus.empty() ? k.question : k.refus);
            const bool attendu = k.refus.empty() && reponse == toolkit::msgbox::kYes;
            EXPECT_EQ(supprime, attendu);
            EXPECT_EQ(e.existe(k.fichier, k.cle), !attendu);
        }
    }
}

// ---- Management elements.

TEST(Frm_ElemGestSSIAD, SavesASectorOfTheTourneesAndStaysOpenWhileOneIsChangedAndNotSaved) {
    struct Cas {
        const char *nom, *secteur;
        bool enregistrer;
        const char *message, *ecrit;
    } const cas[] = {
        {"empty sector", "", true, "« Secteur » : à choisir dans la liste.", "N1"},
        {"a sector no tournée covers", "N9", true, "« Secteur » : N9 n'est le secteur d'aucune tournée.",
         "N1"},
        {"closing on a change", "N2", false,
         "Le secteur a été modifié : enregistrez-le ou annulez la modification avant de fermer.", "N1"},
        {"saved, then closed", "N2", true, "", "N2"},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Ecran e;
        e.f.service.put("SSIADCARACTTOURNEE", "002",
                        {"MARDI", "1", "6", "00", "14", "00", "M", "N2", "", "1"});
        e.lookupAffectation("0001200012210000");
        Frm_ElemGestSSIAD g(e.c);
        e.brancher(g);
        g.setCodeAide("00012");
        g.Demarrer();
        EXPECT_EQ(g.Lst_Elements.items(), Liste{"00012 DUPONT Marie   000001   N1"});
        EXPECT_EQ(g.Cbo_Secteur.items(), (Liste{"N1", "N2"}));
        g.Cbo_Secteur.setText(k.secteur);
        std::string message = k.enregistrer ? e.refus([&] { return g.Cmd_Enregistrer_Click(); }) : "";
        if (message.empty()) message = e.refus([&] { return g.unload(); });
        EXPECT_EQ(message, k.message);
        EXPECT_EQ(mvdb::DynamicRecord(e.enreg("SSIADELEMGEST", "00012000001"))(23), k.ecrit);
    }
}

TEST(Frm_ElemGestSSIAD, ANewElementTakesTheAidesNextElementCode) {
    Ecran e;
    Frm_ElemGestSSIAD g(e.c);
    e.brancher(g);
    g.setCodeAide("00012");
    g.Demarrer();
    g.Cmd_Nouveau.fireClick();
    EXPECT_EQ(g.Etq_Element.caption(), "(nouveau)");
    EXPECT_EQ(e.refus([&] { return g.Cmd_Enregistrer_Click(); }), "« Secteur » : à choisir dans la liste.");
    g.Cbo_Secteur.setText("N1");
    EXPECT_EQ(e.refus([&] { return g.Cmd_Enregistrer_Click(); }), "");
    EXPECT_EQ(g.cleCourante(), "00012000002");
    EXPECT_EQ(mvdb::DynamicRecord(e.enreg("SSIADELEMGEST", "00012000002"))(23), "N1");
}

TEST(Frm_ElemGestSSIAD, ANewElementSkipsTheAssignmentLookUpsOfItsAide) {
    Ecran e;
    e.lookupAffectation("0001200012000000");
    Frm_ElemGestSSIAD g(e.c);
    e.brancher(g);
    g.setCodeAide("00012");
    g.Demarrer();
    g.Cmd_Nouveau.fireClick();
    g.Cbo_Secteur.setText("N1");
    EXPECT_EQ(e.refus([&] { return g.Cmd_Enregistrer_Click(); }), "");
    EXPECT_EQ(g.cleCourante(), "00012000002");
}

// Aidé 00013 waits on Monday 23/11/2026 with no management element; tournée 002 of sector N2 already has
// a record that day, so the assignment dialog may offer it.
struct Affectation : testing_support::SmallService {
    Affectation() {
        f.service.put("SSIADCARACTTOURNEE", "002",
                      {"LUNDI NORD", "0", "6", "00", "14", "00", "I", "N2", "", "1"});
        f.service.put("SSIADTOURNEE",
                      "0020009921512"
                      "0700",
                      {"0730"});
        f.service.put("CIVILAIDE", "00013", {"", "MARTIN", "Paul"});
        f.service.put("SSIADACCORDS", "00013001000001", {"21000", "22000", ""});
        start();
    }
    // The element of 00013 made on its screen, in sector `secteur`.
    void element(const std::string& secteur) {
        Frm_ElemGestSSIAD g(c);
        g.setTheDatabase(f.service.db);
        g.setCodeAide("00013");
        g.Demarrer();
        g.Cbo_Secteur.setText(secteur);
        EXPECT_TRUE(g.Cmd_Enregistrer_Click());
    }
    // A protocole of 00013 from 8h00 to 9h00 on Mondays, made on its screen from 23/11/2026.
    void protocoleSurLEcran() {
        Frm_ProtocoleSsiad p(c);
        p.setTheDatabase(f.service.db);
        p.setCodeAide("00013");
        p.setDateProtocole("23/11/2026");
        p.Demarrer();
        p.Chk_Lundi.setValue(true);
        p.Txt_Debut.setText("8h");
        p.Txt_Fin.setText("9h");
        p.Txt_DureeMn.setText("30");
        p.Cbo_Soin.setText("S01");
        p.Cmd_AjouterSoin.fireClick();
        EXPECT_TRUE(p.Cmd_Enregistrer_Click());
    }
    // The tournée that the assignment of 00013's waiting label opens; the boxes shown.
    std::string affecter() {
        c.Txt_Date.setText("23/11/2026");
        c.Cmd_Affichage.fireClick();
        for (toolkit::Control* etiquette : c.Etq_Aide.elements())
            if (etiquette->index() > 0 && etiquette->tag().starts_with("00013"))
                c.IndiceEtqCourante = etiquette->index();
        c.Mnu_AffectationTournee.fireClick();
        std::string out = c.Txt_CodeTournee.text();
        for (const auto& b : f.host.takeShown())
            out += " / " + b.text;
        return out;
    }
    std::string lookUps() {
        return ::testing::PrintToString(control::clesSelectionnees(*f.service.db, "SSIADELEMGEST", ""));
    }
};

TEST(Frm_ElemGestSSIAD, TheAssignmentDialogFindsTheSectorOfAServiceBuiltOnTheScreens) {
    struct Cas {
        const char* nom;
        std::function<void(Affectation&)> construire;
        std::string ouverte, cles;
    } const cas[] = {
        {"no element: no sector, no tournée",
         [](Affectation& a) { a.protocole("00013", "0800", "0900", "30"); },
         " / Pas de tournée définie sur ce jour", "{}"},
        {"a protocole, then its element on the screen",
         [](Affectation& a) {
             a.protocole("00013", "0800", "0900", "30");
             a.element("N2");
         },
         "002", "{ \"00013000001\", \"0001300013000000\" }"},
        {"an element on the screen, then a protocole on its own",
         [](Affectation& a) {
             a.element("N2");
             a.protocoleSurLEcran();
         },
         "002", "{ \"00013000001\", \"0001300013120000\" }"},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Affectation a;
        k.construire(a);
        EXPECT_EQ(a.lookUps(), k.cles);
        EXPECT_EQ(a.affecter(), k.ouverte);
    }
}

TEST(Frm_ElemGestSSIAD, TheAssignmentLookUpFollowsTheSectorAndGoesWithTheLastProtocole) {
    Affectation a;
    a.protocole("00013", "0800", "0900", "30");
    a.element("N1");
    mvdb::DynamicRecord lookUp(*a.f.service.db->store().read("SSIADELEMGEST", "0001300013000000"));
    EXPECT_EQ(lookUp(23), "N1");
    Frm_ElemGestSSIAD g(a.c);
    g.setTheDatabase(a.f.service.db);
    g.setCodeAide("00013");
    g.Demarrer();
    g.Cbo_Secteur.setText("N2");
    EXPECT_TRUE(g.Cmd_Enregistrer_Click());
    lookUp = mvdb::DynamicRecord(*a.f.service.db->store().read("SSIADELEMGEST", "0001300013000000"));
    EXPECT_EQ(lookUp(23), "N2");

    Frm_ProtocoleSsiad p(a.c);
    p.setTheDatabase(a.f.service.db);
    p.setCodeAide("00013");
    p.setDateProtocole("23/11/2026");
    p.Demarrer();
    ASSERT_EQ(p.cleCourante(), "000132100000000110800");
    a.f.host.queueAnswer(toolkit::msgbox::kYes);
    EXPECT_TRUE(p.Cmd_Supprimer_Click());
    EXPECT_EQ(a.lookUps(), "{ \"00013000001\" }");
}

// ---- Protocoles.

// The protocole screen opened from aidé 00012's label on Monday 23/11/2026.
struct EcranProtocole : Ecran {
    Frm_ProtocoleSsiad p{c};
    EcranProtocole() {
        brancher(p);
        p.setCodeAide("00012");
        p.setDateProtocole("23/11/2026");
        p.Demarrer();
    }
};

TEST(Frm_ProtocoleSsiad, ChecksEachFieldBeforeWritingTheProtocole) {
    using P = Frm_ProtocoleSsiad;
    struct Cas {
        const char* nom;
        std::function<void(P&)> saisie;
        std::string message;
    } const cas[] = {
        {"no aidé", [](P& p) { p.Cbo_Aide.setText(""); }, "« Aidé » : à choisir dans la liste."},
        {"an aidé not listed", [](P& p) { p.Cbo_Aide.setText("00099"); },
         "« Aidé » : 00099 n'est pas dans la liste."},
        {"window start past the day", [](P& p) { p.Txt_Debut.setText("24h30"); },
         "« Début de la fenêtre » : 24h30 n'est pas une heure entre 00h00 et 24h00."},
        {"window end past the day", [](P& p) { p.Txt_Fin.setText("25h00"); },
         "« Fin de la fenêtre » : 25h00 n'est pas une heure entre 00h00 et 24h00."},
        {"window end in hundredths", [](P& p) { p.Txt_Fin.setText("0900"); },
         "« Fin de la fenêtre » : 0900 n'est pas une heure entre 00h00 et 24h00."},
        {"minutes past 59", [](P& p) { p.Txt_Fin.setText("9h75"); },
         "« Fin de la fenêtre » : 9h75 n'est pas une heure entre 00h00 et 24h00."},
        {"no duration", [](P& p) { p.Txt_DureeMn.setText("0"); },
         "« Durée (minutes) » : 0 n'est pas une durée de 1 à 1440 minutes."},
        {"window ending before it starts", [](P& p) { p.Txt_Fin.setText("07h30"); },
         "« Fin de la fenêtre » : la fin doit être après le début."},
        {"window shorter than the care", [](P& p) { p.Txt_DureeMn.setText("75"); },
         "« Fin de la fenêtre » : la fenêtre est plus courte que la durée (75 minutes)."},
        {"no soin",
         [](P& p) {
             p.Lst_Soins.setListIndex(0);
             p.Cmd_RetirerSoin.fireClick();
         },
         "« Soins » : à choisir dans le catalogue."},
        {"three intervenants", [](P& p) { p.Cbo_NbIntervenants.setText("3"); },
         "« Intervenants » : 3 n'est pas 1 ou 2."},
        {"no first day", [](P& p) { p.Txt_PremierJour.setText(""); }, "« Premier jour » : à remplir."},
        {"no such last day", [](P& p) { p.Txt_DernierJour.setText("31/02/2027"); },
         "« Dernier jour » : 31/02/2027 n'est pas une date."},
        {"last day before the first", [](P& p) { p.Txt_DernierJour.setText("28/06/2025"); },
         "« Dernier jour » : le dernier jour ne peut précéder le premier."},
        {"accepted",
         [](P& p) {
             p.Chk_Mercredi.setValue(true);
             p.Cbo_Soin.setText("S02");
             p.Cmd_AjouterSoin.fireClick();
         },
         ""},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        EcranProtocole e;
        e.p.Chk_Lundi.setValue(true);
        k.saisie(e.p);
        EXPECT_EQ(e.refus([&] { return e.p.Cmd_Enregistrer_Click(); }), k.message);
        const mvdb::DynamicRecord r(e.enreg("SSIADPROTOCOLE", e.cle));
        EXPECT_EQ(r(1) + "|" + r(3), k.message.empty() ? "1\xFD"
                                                         "3|S01\xFDS02"
                                                       : "|S01");
    }
}

TEST(Frm_ProtocoleSsiad, OpensANewProtocoleOfTheAideFromTheDateWhenNoneIsInForce) {
    Ecran e;
    e.f.service.put("CIVILAIDE", "00013", {"", "MARTIN", "Paul"});
    Frm_ProtocoleSsiad p(e.c);
    e.brancher(p);
    p.setCodeAide("00013");
    p.setDateProtocole("23/11/2026");
    p.Demarrer();
    EXPECT_EQ(p.cleCourante(), "");
    EXPECT_EQ(p.Cbo_Aide.text() + " " + p.Txt_PremierJour.text(), "00013 MARTIN Paul 23/11/2026");
    p.Txt_Debut.setText("8h");
    p.Txt_Fin.setText("9h");
    p.Txt_DureeMn.setText("30");
    EXPECT_EQ(e.refus([&] { return p.Cmd_Enregistrer_Click(); }),
              "« Élément de gestion » : l'aidé n'a pas d'élément de gestion.");
    EXPECT_EQ(control::clesSelectionnees(*e.f.service.db, "SSIADPROTOCOLE", "CodeAide = \"00013\""), Liste{});
}

TEST(Frm_ProtocoleSsiad, RefusesASoinOutsideTheCatalogue) {
    EcranProtocole e;
    e.p.Cbo_Soin.setText("S99");
    EXPECT_EQ(e.refus([&] { return e.p.Cmd_AjouterSoin_Click(); }),
              "« Soins » : S99 n'est pas dans le catalogue.");
    e.p.Cbo_Soin.setText("S02 Toilette");
    EXPECT_EQ(e.refus([&] { return e.p.Cmd_AjouterSoin_Click(); }), "");
    EXPECT_EQ(e.p.Lst_Soins.items(), (Liste{"S01 Injection", "S02 Toilette"}));
}

TEST(Frm_ProtocoleSsiad, ShowsTheWindowsAsTheClockReadsThem) {
    struct Cas {
        const char *nom, *debut, *fin, *liste, *champ;
    } const cas[] = {
        {"half past eleven", "0900", "1150",
         "00012 DUPONT Marie   09h00 - 11h30   30 mn   S01   du 29/06/2025", "11h30"},
        {"evening, off the five minutes", "1750", "1983",
         "00012 DUPONT Marie   17h30 - 19h50   30 mn   S01   du 29/06/2025", "19h50"},
        {"a hair before nine", "0750", "0899",
         "00012 DUPONT Marie   07h30 - 09h00   30 mn   S01   du 29/06/2025", "09h00"},
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
        EXPECT_EQ(p.Lst_Elements.items(), Liste{k.liste});
        EXPECT_EQ(p.Txt_Fin.text(), k.champ);
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
        e.brancher(p);
        p.setCodeAide("00012");
        p.setDateProtocole("23/11/2026");
        p.Demarrer();
        ASSERT_EQ(p.Txt_Fin.text(), "11h05");
        p.Txt_Fin.setText(k.saisie);
        EXPECT_EQ(e.refus([&] { return p.Cmd_Enregistrer_Click(); }), "");
        EXPECT_EQ(mvdb::DynamicRecord(e.enreg("SSIADPROTOCOLE", cle))(2), k.ecrit);
    }
}

TEST(Frm_ProtocoleSsiad, ANewProtocoleIsBuiltItsKeyAndShowsOnTheNextDisplay) {
    EcranProtocole e;
    e.f.service.put("CIVILAIDE", "00013", {"", "MARTIN", "Paul"});
    e.f.service.put("SSIADACCORDS", "00013001000001", {"21000", "22000", ""});
    mvdb::DynamicRecord gestion;
    gestion.set(23, "N1");
    e.f.service.db->store().write("SSIADELEMGEST", "00013000001", gestion.text());
    e.lookupAffectation("0001300013215120");
    e.p.Cmd_Nouveau.fireClick();
    e.p.Cbo_Aide.setText("00013 MARTIN Paul");
    e.p.Cbo_Aide.fireClick();
    EXPECT_EQ(e.p.Cbo_Element.items(), Liste{"000001 N1"});
    EXPECT_EQ(e.p.Cbo_Element.text(), "000001 N1");
    EXPECT_EQ(e.p.Txt_PremierJour.text(), "23/11/2026");
    e.p.Chk_Lundi.setValue(true);
    e.p.Txt_Debut.setText("10h");
    e.p.Txt_Fin.setText("11h30");
    e.p.Txt_DureeMn.setText("45");
    e.p.Cbo_Soin.setText("S02");
    e.p.Cmd_AjouterSoin.fireClick();
    EXPECT_EQ(e.refus([&] { return e.p.Cmd_Enregistrer_Click(); }), "");
    EXPECT_EQ(e.p.cleCourante(), "000132151200000111000");
    EXPECT_EQ(e.enreg("SSIADPROTOCOLE", "000132151200000111000"), mvdb::DynamicRecord("1\xFE"
                                                                                      "1150\xFES02\xFE"
                                                                                      "45\xFE"
                                                                                      "1\xFE"
                                                                                      "21512\xFE")
                                                                      .text());
    // The same protocole again gets the next sequence.
    e.p.Cmd_Nouveau.fireClick();
    e.p.Cbo_Aide.setText("00013 MARTIN Paul");
    e.p.Cbo_Aide.fireClick();
    e.p.Txt_Debut.setText("10h");
    e.p.Txt_Fin.setText("11h30");
    e.p.Txt_DureeMn.setText("45");
    e.p.Cbo_Soin.setText("S02");
    e.p.Cmd_AjouterSoin.fireClick();
    EXPECT_EQ(e.refus([&] { return e.p.Cmd_Enregistrer_Click(); }), "");
    EXPECT_EQ(e.p.cleCourante(), "000132151200000121000");
    e.show();
    Liste attente;
    for (std::int64_t i = 1; i <= e.c.TabTempoAide->DCount() && !e.c.TabTempoAide(i, 1).empty(); ++i)
        attente.push_back(e.c.TabTempoAide(i, 6));
    EXPECT_EQ(attente, (Liste{"000122100000000110800", "000132151200000111000", "000132151200000121000"}));
}

TEST(Frm_ProtocoleSsiad, AStartChangedMovesTheProtocoleAndItsPlannedInterventionsToTheNewKey) {
    Ecran e;
    e.f.service.put("SSIADTOURNEE", "00100012215120800", {"0900", e.cle});
    Frm_ProtocoleSsiad p(e.c);
    e.brancher(p);
    p.setCodeAide("00012");
    p.setDateProtocole("23/11/2026");
    p.Demarrer();
    p.Txt_Debut.setText("8h15");
    EXPECT_EQ(e.refus([&] { return p.Cmd_Enregistrer_Click(); }), "");
    const std::string nouvelle = "000122100000000110825";
    EXPECT_EQ(p.cleCourante(), nouvelle);
    EXPECT_FALSE(e.existe("SSIADPROTOCOLE", e.cle));
    EXPECT_EQ(mvdb::DynamicRecord(e.enreg("SSIADPROTOCOLE", nouvelle))(2), "0900");
    EXPECT_EQ(mvdb::DynamicRecord(e.enreg("SSIADTOURNEE", "00100012215120800"))(2), nouvelle);
    // An aidé carries its planned interventions: it cannot be changed on a planned protocole.
    e.f.service.put("CIVILAIDE", "00013", {"", "MARTIN", "Paul"});
    p.Cmd_Nouveau.fireClick();
    p.Lst_Elements.setListIndex(0);
    p.Cbo_Aide.clear();
    p.Cbo_Aide.addItem("00013 MARTIN Paul");
    p.Cbo_Aide.setText("00013 MARTIN Paul");
    EXPECT_EQ(e.refus([&] { return p.Cmd_Enregistrer_Click(); }),
              "« Aidé » : un protocole déjà planifié (tournée 001 du 23/11/2026) ne change pas d'aidé : "
              "créez-en un "
              "nouveau.");
}

}  // namespace
