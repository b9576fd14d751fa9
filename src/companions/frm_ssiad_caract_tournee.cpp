#include "companions/frm_ssiad_caract_tournee.h"

// The tournée characteristics screen.

#include "base/date.h"
#include "base/text.h"
#include "companions/regles_service.h"
#include "companions/saisie.h"
#include "data/gateway.h"
#include "data/layouts.h"
#include "shell/ctr_zandorel.h"

namespace control {
namespace {

namespace ct = data::caracttournee;

constexpr int kLongueurCode = 3;
// Labels of tournées run long ("MIXTE MATIN SUD CENTRE MERCREDI").
constexpr double kPlusLarge = 720;
const char* const kTypes[] = {"I infirmier", "S soignant", "M mixte"};

// "Lundi" for 0 to "Dimanche" for 6, as the tournée stores its weekday.
std::string nomDuJour(int jour) {
    const std::string nom(base::weekdayName(jour + 1));
    return base::UCase(base::Left(nom, 1)) + base::Mid(nom, 2);
}

// The weekday of a name typed or chosen (any case), 0 Monday to 6 Sunday; -1 for no day.
int jourDuNom(const std::string& texte) {
    for (int j = 0; j < 7; ++j)
        if (base::searchKey(texte) == base::searchKey(nomDuJour(j))) return j;
    return -1;
}

// The type letter of an item chosen or of a letter typed alone; empty for anything else.
std::string typeSaisi(const std::string& texte) {
    for (const char* item : kTypes)
        if (base::UCase(texte) == base::UCase(item) || base::UCase(texte) == base::Left(item, 1))
            return base::Left(item, 1);
    return "";
}

// An hour and minute read back from a time HHhMM already checked: "17h30" gives 17 and 30.
std::pair<int, int> heureMinute(const std::string& centiemesLus) {
    const std::string hhmm = heureSaisie(centiemesLus);
    return {std::stoi(base::Left(hhmm, 2)), std::stoi(base::Right(hhmm, 2))};
}

std::string verifierQuart(std::string_view legende, const std::string& texte, std::string& centiemesLus) {
    if (std::string refus = verifierHeure(legende, texte, centiemesLus); !refus.empty()) return refus;
    if (heureMinute(centiemesLus).second % 15 != 0)
        return messageChamp(legende, texte + " n'est pas au quart d'heure (minutes 00, 15, 30 ou 45).");
    return "";
}

}  // namespace

Frm_SsiadCaractTournee::Frm_SsiadCaractTournee(Ctr_Zandorel& ctl)
    : EcranService("Frm_SsiadCaractTournee", ctl, "Caractéristiques des tournées", 9480 + kPlusLarge, 6360,
                   kLargeurListe + kPlusLarge),
      Txt_Code("Txt_Code", this),
      Txt_Libelle("Txt_Libelle", this),
      Cbo_Jour("Cbo_Jour", this),
      Txt_Debut("Txt_Debut", this),
      Txt_Fin("Txt_Fin", this),
      Cbo_Type("Cbo_Type", this),
      Cbo_NbIntervenants("Cbo_NbIntervenants", this),
      Cbo_Secteur("Cbo_Secteur", this),
      Cmd_AjouterSecteur("Cmd_AjouterSecteur", this),
      Lst_Secteurs("Lst_Secteurs", this),
      Cmd_RetirerSecteur("Cmd_RetirerSecteur", this),
      Chk_Supprimee("Chk_Supprimee", this) {
    const double gauche = gaucheChamps(), champs = gaucheChamps() + 1920;
    const std::pair<toolkit::Control*, const char*> lignes[] = {{&Txt_Code, "Code"},
                                                                {&Txt_Libelle, "Libellé"},
                                                                {&Cbo_Jour, "Jour"},
                                                                {&Txt_Debut, "Début"},
                                                                {&Txt_Fin, "Fin"},
                                                                {&Cbo_Type, "Type"},
                                                                {&Cbo_NbIntervenants, "Intervenants"}};
    double top = 120;
    for (const auto& [champ, texte] : lignes) {
        legende(texte, gauche, top + 30, 1800);
        champ->setGeometry(champs, top, 1800, 315);
        top += 420;
    }
    Txt_Code.setGeometry(champs, 120, 720, 315);
    Txt_Code.setMaxLength(kLongueurCode);
    Txt_Libelle.setWidth(3480);
    for (int j = 0; j < 7; ++j)
        Cbo_Jour.addItem(nomDuJour(j));
    for (const char* item : kTypes)
        Cbo_Type.addItem(item);
    Cbo_NbIntervenants.addItem("1");
    Cbo_NbIntervenants.addItem("2");
    legende("Secteurs", gauche, top + 30, 1800);
    Cbo_Secteur.setGeometry(champs, top, 1800, 315);
    bouton(Cmd_AjouterSecteur, "Ajouter", champs + 1920, top - 30);
    top += 420;
    Lst_Secteurs.setGeometry(champs, top, 1800, 1080);
    bouton(Cmd_RetirerSecteur, "Retirer", champs + 1920, top);
    top += 1200;
    Chk_Supprimee.setGeometry(champs, top, 3000, 315);
    Chk_Supprimee.setCaption("Supprimée");
    Cmd_AjouterSecteur.Click = [this] { Cmd_AjouterSecteur_Click(); };
    Cmd_RetirerSecteur.Click = [this] { Cmd_RetirerSecteur_Click(); };
}

void Frm_SsiadCaractTournee::setCodeTournee(const std::string& code) {
    m_codeRecu = code;
    recu("CodeTournee");
}

void Frm_SsiadCaractTournee::Demarrer() {
    ouvrir(m_codeRecu);
    // A code typed on the planning screen that names no tournée yet is the one the planner meant to create.
    if (cleCourante().empty() && base::Len(m_codeRecu) == kLongueurCode) Txt_Code.setText(m_codeRecu);
}

std::vector<EcranService::Element> Frm_SsiadCaractTournee::elements() {
    const mvdb::DynamicRecord reponse =
        data::Interroger(database(), "SELECT SSIADCARACTTOURNEE PAR 0", data::kSSIADCARACTTOURNEE,
                         "0 " + std::to_string(ct::kLibelle) + " " + std::to_string(ct::kSupprimee));
    std::vector<Element> out;
    for (std::int64_t i = 1; i <= reponse.DCount(); ++i) {
        if (reponse(i, 1).empty()) continue;
        out.push_back({reponse(i, 1), reponse(i, 1) + "   " + reponse(i, 2) +
                                          (reponse(i, 3).empty() ? "" : "   (supprimée)")});
    }
    return out;
}

void Frm_SsiadCaractTournee::afficher(const std::string& cle) {
    mvdb::DynamicRecord enreg;
    if (cle.empty() || !data::LireEnregistrement(*fichier(data::kSSIADCARACTTOURNEE), enreg, cle))
        enreg = mvdb::DynamicRecord();
    std::vector<std::string> codes;
    for (const Element& e : elements())
        codes.push_back(e.cle);
    Txt_Code.setText(cle.empty() ? prochainCode(codes, kLongueurCode) : cle);
    Txt_Code.setEnabled(cle.empty());
    Txt_Libelle.setText(enreg(ct::kLibelle));
    const std::string jour = enreg(ct::kJourSemaine);
    Cbo_Jour.setText(jour.size() == 1 && jour >= "0" && jour <= "6" ? nomDuJour(jour[0] - '0') : jour);
    const auto heure = [&](int h, int m) {
        if (enreg(h).empty()) return std::string();
        return base::padZeros(enreg(h), 2) + "h" + base::padZeros(enreg(m), 2);
    };
    Txt_Debut.setText(heure(ct::kHeureDebut, ct::kMinuteDebut));
    Txt_Fin.setText(heure(ct::kHeureFin, ct::kMinuteFin));
    const std::string type = enreg(ct::kType);
    Cbo_Type.setText(type);
    for (const char* item : kTypes)
        if (!type.empty() && base::Left(item, 1) == type) Cbo_Type.setText(item);
    Cbo_NbIntervenants.setText(enreg(ct::kNbIntervenants).empty() ? "1" : enreg(ct::kNbIntervenants));
    Cbo_Secteur.clear();
    for (const std::string& s : secteursDesTournees(database()))
        Cbo_Secteur.addItem(s);
    Cbo_Secteur.setText("");
    Lst_Secteurs.clear();
    for (const std::string& s : valeurs(enreg, ct::kSecteurs))
        if (!s.empty()) Lst_Secteurs.addItem(s);
    Chk_Supprimee.setValue(!enreg(ct::kSupprimee).empty());
}

bool Frm_SsiadCaractTournee::Cmd_AjouterSecteur_Click() {
    const std::string secteur = Cbo_Secteur.text();
    if (std::string refus = verifierRempli("Secteurs", secteur); !refus.empty()) return refuser(refus);
    if (secteur.find(' ') != std::string::npos)
        return refuser(messageChamp("Secteurs", secteur + " n'est pas un code de secteur sans blanc."));
    if (Lst_Secteurs.find(secteur) < 0) Lst_Secteurs.addItem(secteur);
    Cbo_Secteur.setText("");
    return true;
}

void Frm_SsiadCaractTournee::Cmd_RetirerSecteur_Click() {
    const int i = Lst_Secteurs.listIndex();
    if (i < 0) return;
    std::vector<std::string> restants = Lst_Secteurs.items();
    restants.erase(restants.begin() + i);
    Lst_Secteurs.clear();
    for (const std::string& s : restants)
        Lst_Secteurs.addItem(s);
}

std::string Frm_SsiadCaractTournee::verifier() {
    if (cleCourante().empty()) {
        const std::string code = Txt_Code.text();
        if (std::string refus = verifierRempli("Code", code); !refus.empty()) return refus;
        if (base::Len(code) != kLongueurCode || code.find(' ') != std::string::npos)
            return messageChamp("Code", code + " n'est pas un code de trois caractères sans blanc.");
        mvdb::DynamicRecord existant;
        if (data::LireEnregistrement(*fichier(data::kSSIADCARACTTOURNEE), existant, code))
            return messageChamp("Code",
                                code + " est déjà le code de la tournée « " + existant(ct::kLibelle) + " ».");
    }
    if (std::string refus = verifierRempli("Libellé", Txt_Libelle.text()); !refus.empty()) return refus;
    if (std::string refus = verifierRempli("Jour", Cbo_Jour.text()); !refus.empty()) return refus;
    if (jourDuNom(Cbo_Jour.text()) < 0)
        return messageChamp("Jour", Cbo_Jour.text() + " n'est pas un jour de la semaine.");
    std::string debut, fin;
    if (std::string refus = verifierQuart("Début", Txt_Debut.text(), debut); !refus.empty()) return refus;
    if (std::string refus = verifierQuart("Fin", Txt_Fin.text(), fin); !refus.empty()) return refus;
    if (std::string refus = verifierFenetre("Fin", debut, fin, 0); !refus.empty()) return refus;
    if (std::string refus = verifierRempli("Type", Cbo_Type.text()); !refus.empty()) return refus;
    if (typeSaisi(Cbo_Type.text()).empty())
        return messageChamp("Type", Cbo_Type.text() + " n'est pas un type de tournée (I, S ou M).");
    const std::string nb = Cbo_NbIntervenants.text();
    if (nb != "1" && nb != "2") return messageChamp("Intervenants", nb + " n'est pas 1 ou 2.");
    return "";
}

std::string Frm_SsiadCaractTournee::ecrire(const std::string& cle) {
    const std::string code = cle.empty() ? Txt_Code.text() : cle;
    const std::shared_ptr<mvdb::File> f = fichier(data::kSSIADCARACTTOURNEE);
    // A record read keeps the attributes that belong to other programs.
    mvdb::DynamicRecord enreg = cle.empty() ? f->New(code) : f->Read(code);
    // The planning screen finds a tournée by the upper-case beginning of its label.
    enreg.set(ct::kLibelle, base::UCase(Txt_Libelle.text()));
    enreg.set(ct::kJourSemaine, std::to_string(jourDuNom(Cbo_Jour.text())));
    const auto [hd, md] = heureMinute(centiemes(Txt_Debut.text()));
    const auto [hf, mf] = heureMinute(centiemes(Txt_Fin.text()));
    enreg.set(ct::kHeureDebut, std::to_string(hd));
    enreg.set(ct::kMinuteDebut, base::zeroPad(md, 2));
    enreg.set(ct::kHeureFin, std::to_string(hf));
    enreg.set(ct::kMinuteFin, base::zeroPad(mf, 2));
    enreg.set(ct::kType, typeSaisi(Cbo_Type.text()));
    ecrireValeurs(enreg, ct::kSecteurs, Lst_Secteurs.items());
    enreg.set(ct::kSupprimee, Chk_Supprimee.value() ? "1" : "");
    enreg.set(ct::kNbIntervenants, Cbo_NbIntervenants.text());
    enreg.DBWrite();
    return code;
}

std::string Frm_SsiadCaractTournee::designation(const std::string& cle) {
    mvdb::DynamicRecord enreg;
    data::LireEnregistrement(*fichier(data::kSSIADCARACTTOURNEE), enreg, cle);
    return "la tournée " + cle + " « " + enreg(ct::kLibelle) + " »";
}

std::vector<std::string> Frm_SsiadCaractTournee::utilisateurs(const std::string& cle) {
    return usagesTournee(database(), cle);
}

void Frm_SsiadCaractTournee::effacer(const std::string& cle) {
    fichier(data::kSSIADCARACTTOURNEE)->Delete(cle);
}

}  // namespace control
