#include "shell/ctr_zandorel.h"

// The tournée characteristics screen. A tournée's code is fixed once saved: the planned records carry it.

#include "base/text.h"
#include "companions/companions.h"
#include "data/gateway.h"
#include "data/layouts.h"

namespace control {
namespace {

namespace ct = data::caracttournee;

bool chiffres(const std::string& texte, std::size_t longueur) {
    if (texte.empty() || (longueur != 0 && texte.size() != longueur)) return false;
    for (char c : texte)
        if (c < '0' || c > '9') return false;
    return true;
}

// Minutes from midnight of an hour and minute typed, or -1 when they are no time on a quarter-hour.
int quartDHeure(const std::string& heure, const std::string& minute) {
    if (!chiffres(heure, 0) || !chiffres(minute, 0) || heure.size() > 2 || minute.size() > 2) return -1;
    const int h = std::stoi(heure), m = std::stoi(minute);
    if (h > 24 || m % 15 != 0 || m > 45 || (h == 24 && m != 0)) return -1;
    return h * 60 + m;
}

}  // namespace

Frm_SsiadCaractTournee::Frm_SsiadCaractTournee(Ctr_Zandorel& ctl)
    : FormeCompagnon("Frm_SsiadCaractTournee", ctl, "Caractéristiques des tournées", 9000, 5400),
      Lst_Tournees("Lst_Tournees", this),
      Txt_Code("Txt_Code", this),
      Txt_Libelle("Txt_Libelle", this),
      Txt_Jour("Txt_Jour", this),
      Txt_HeureDebut("Txt_HeureDebut", this),
      Txt_MinuteDebut("Txt_MinuteDebut", this),
      Txt_HeureFin("Txt_HeureFin", this),
      Txt_MinuteFin("Txt_MinuteFin", this),
      Txt_Type("Txt_Type", this),
      Txt_Secteurs("Txt_Secteurs", this),
      Txt_NbIntervenants("Txt_NbIntervenants", this),
      Txt_Supprimee("Txt_Supprimee", this),
      Cmd_Nouveau("Cmd_Nouveau", this),
      Cmd_Enregistrer("Cmd_Enregistrer", this),
      Cmd_Fermer("Cmd_Fermer", this) {
    Lst_Tournees.setGeometry(120, 120, 3240, 4560);
    struct Champ {
        toolkit::TextBox& boite;
        const char* legende;
        double largeur;
        int longueur;
    } const champs[] = {{Txt_Code, "Code (3 chiffres)", 600, 3},
                        {Txt_Libelle, "Libellé", 3000, 0},
                        {Txt_Jour, "Jour (0 lundi à 6 dimanche)", 400, 1},
                        {Txt_HeureDebut, "Début : heure", 500, 2},
                        {Txt_MinuteDebut, "Début : minutes", 500, 2},
                        {Txt_HeureFin, "Fin : heure", 500, 2},
                        {Txt_MinuteFin, "Fin : minutes", 500, 2},
                        {Txt_Type, "Type (I, S ou M)", 400, 1},
                        {Txt_Secteurs, "Secteurs (séparés par des blancs)", 3000, 0},
                        {Txt_NbIntervenants, "Intervenants (1 ou 2)", 400, 1},
                        {Txt_Supprimee, "Supprimée (1)", 400, 1}};
    // The legends have the room of the longest, "Secteurs (séparés par des blancs)", on one line.
    double top = 120;
    for (const Champ& c : champs) {
        legende(c.legende, 3480, top, 2940);
        c.boite.setGeometry(6480, top, c.largeur > 2400 ? 2400 : c.largeur, 315);
        c.boite.setMaxLength(c.longueur);
        top += 400;
    }
    bouton(Cmd_Nouveau, "Nouvelle", 3840, 4800);
    bouton(Cmd_Enregistrer, "Enregistrer", 5280, 4800);
    bouton(Cmd_Fermer, "Fermer", 7560, 4800);
    Lst_Tournees.Click = [this] {
        if (Lst_Tournees.listIndex() >= 0)
            afficher(base::Left(Lst_Tournees.list(Lst_Tournees.listIndex()), 3));
    };
    Cmd_Nouveau.Click = [this] { Cmd_Nouveau_Click(); };
    Cmd_Enregistrer.Click = [this] { Cmd_Enregistrer_Click(); };
    Cmd_Fermer.Click = [this] { unload(); };
}

void Frm_SsiadCaractTournee::setCodeTournee(const std::string& code) {
    m_codeRecu = code;
    recu("CodeTournee");
}

void Frm_SsiadCaractTournee::Demarrer() {
    recu("Demarrer");
    listerTournees();
    afficher(m_codeRecu);
}

void Frm_SsiadCaractTournee::listerTournees() {
    // Deleted tournées are listed too: this is where a deletion mark is taken back.
    const mvdb::DynamicRecord reponse =
        data::Interroger(database(), "SELECT SSIADCARACTTOURNEE PAR 0", data::kSSIADCARACTTOURNEE, "0 1");
    Lst_Tournees.clear();
    for (std::int64_t i = 1; i <= reponse.DCount(); ++i)
        if (!reponse(i, 1).empty()) Lst_Tournees.addItem(reponse(i, 1) + "   " + reponse(i, 2));
}

void Frm_SsiadCaractTournee::afficher(const std::string& code) {
    mvdb::DynamicRecord enreg;
    m_nouvelle = code.empty() || !data::LireEnregistrement(*fichier(data::kSSIADCARACTTOURNEE), enreg, code);
    if (m_nouvelle) enreg = mvdb::DynamicRecord();
    std::string secteurs;
    for (std::int64_t v = 1; v <= enreg.DCount(ct::kSecteurs); ++v)
        secteurs += (v > 1 ? " " : "") + enreg(ct::kSecteurs, v);
    Txt_Code.setText(code);
    Txt_Code.setEnabled(m_nouvelle);  // a code, once given, names the tournée in the planned records
    Txt_Libelle.setText(enreg(ct::kLibelle));
    Txt_Jour.setText(enreg(ct::kJourSemaine));
    Txt_HeureDebut.setText(enreg(ct::kHeureDebut));
    Txt_MinuteDebut.setText(enreg(ct::kMinuteDebut));
    Txt_HeureFin.setText(enreg(ct::kHeureFin));
    Txt_MinuteFin.setText(enreg(ct::kMinuteFin));
    Txt_Type.setText(enreg(ct::kType));
    Txt_Secteurs.setText(secteurs);
    Txt_NbIntervenants.setText(enreg(ct::kNbIntervenants).empty() ? "1" : enreg(ct::kNbIntervenants));
    Txt_Supprimee.setText(enreg(ct::kSupprimee));
}

void Frm_SsiadCaractTournee::Cmd_Nouveau_Click() {
    Lst_Tournees.setListIndex(-1);
    afficher("");
}

bool Frm_SsiadCaractTournee::verifier() {
    const std::string code = Txt_Code.text();
    if (!chiffres(code, 3)) return refuser("Le code de la tournée doit compter trois chiffres.");
    mvdb::DynamicRecord existant;
    if (m_nouvelle && data::LireEnregistrement(*fichier(data::kSSIADCARACTTOURNEE), existant, code))
        return refuser("Le code " + code + " est déjà celui d'une autre tournée.");
    if (Txt_Libelle.text().empty()) return refuser("Le libellé de la tournée est obligatoire.");
    if (!chiffres(Txt_Jour.text(), 1) || Txt_Jour.text() > "6")
        return refuser("Le jour de la tournée va de 0 (lundi) à 6 (dimanche).");
    const int debut = quartDHeure(Txt_HeureDebut.text(), Txt_MinuteDebut.text());
    const int fin = quartDHeure(Txt_HeureFin.text(), Txt_MinuteFin.text());
    if (debut < 0 || fin < 0)
        return refuser(
            "Les horaires se saisissent au quart d'heure : heures de 0 à 24, minutes 00, 15, 30 ou 45.");
    if (debut >= fin) return refuser("L'heure de début doit précéder l'heure de fin.");
    const std::string type = Txt_Type.text();
    if (type != "I" && type != "S" && type != "M")
        return refuser("Le type de la tournée est I (infirmier), S (soignant) ou M (mixte).");
    if (Txt_NbIntervenants.text() != "1" && Txt_NbIntervenants.text() != "2")
        return refuser("Le nombre d'intervenants est 1 ou 2.");
    if (!Txt_Supprimee.text().empty() && Txt_Supprimee.text() != "1")
        return refuser("La marque de suppression est vide ou 1.");
    return true;
}

bool Frm_SsiadCaractTournee::Cmd_Enregistrer_Click() {
    Txt_Type.setText(base::UCase(Txt_Type.text()));
    if (!verifier()) return false;
    const std::string code = Txt_Code.text();
    const std::shared_ptr<mvdb::File> f = fichier(data::kSSIADCARACTTOURNEE);
    // A record read keeps the attributes that belong to other programs.
    mvdb::DynamicRecord enreg = m_nouvelle ? f->New(code) : f->Read(code);
    enreg.set(ct::kLibelle, base::UCase(Txt_Libelle.text()));
    enreg.set(ct::kJourSemaine, Txt_Jour.text());
    enreg.set(ct::kHeureDebut, Txt_HeureDebut.text());
    enreg.set(ct::kMinuteDebut, base::padZeros(Txt_MinuteDebut.text(), 2));
    enreg.set(ct::kHeureFin, Txt_HeureFin.text());
    enreg.set(ct::kMinuteFin, base::padZeros(Txt_MinuteFin.text(), 2));
    enreg.set(ct::kType, Txt_Type.text());
    enreg.set(ct::kSecteurs, "");
    std::int64_t v = 0;
    std::string courant;
    for (char c : Txt_Secteurs.text() + " ") {
        if (c != ' ') {
            courant += c;
            continue;
        }
        if (!courant.empty()) enreg.set(ct::kSecteurs, ++v, courant);
        courant.clear();
    }
    enreg.set(ct::kSupprimee, Txt_Supprimee.text());
    enreg.set(ct::kNbIntervenants, Txt_NbIntervenants.text());
    enreg.DBWrite();
    listerTournees();
    afficher(code);
    return true;
}

}  // namespace control
