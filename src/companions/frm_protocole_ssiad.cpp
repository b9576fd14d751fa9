#include "shell/ctr_zandorel.h"

// The protocoles screen. The key of a protocole holds its first day and start bound: those are not edited.

#include "base/text.h"
#include "companions/companions.h"
#include "companions/saisie.h"
#include "data/gateway.h"
#include "data/layouts.h"

namespace control {
namespace {

namespace pr = data::protocole;

bool chiffres(const std::string& texte) {
    if (texte.empty()) return false;
    for (char c : texte)
        if (c < '0' || c > '9') return false;
    return true;
}

// The values of a multi-valued attribute joined by blanks, and back.
std::string joindre(const mvdb::DynamicRecord& enreg, int attribut) {
    std::string texte;
    for (std::int64_t v = 1; v <= enreg.DCount(attribut); ++v)
        texte += (v > 1 ? " " : "") + enreg(attribut, v);
    return texte;
}

std::vector<std::string> mots(const std::string& texte) {
    std::vector<std::string> out;
    std::string courant;
    for (char c : texte + " ") {
        if (c != ' ') {
            courant += c;
            continue;
        }
        if (!courant.empty()) out.push_back(courant);
        courant.clear();
    }
    return out;
}

}  // namespace

Frm_ProtocoleSsiad::Frm_ProtocoleSsiad(Ctr_Zandorel& ctl)
    : FormeCompagnon("Frm_ProtocoleSsiad", ctl, "Protocoles de soins", 9000, 4800),
      Lst_Protocoles("Lst_Protocoles", this),
      Txt_Jours("Txt_Jours", this),
      Txt_BorneFin("Txt_BorneFin", this),
      Txt_DureeMn("Txt_DureeMn", this),
      Txt_Soins("Txt_Soins", this),
      Txt_NbIntervenants("Txt_NbIntervenants", this),
      Cmd_Enregistrer("Cmd_Enregistrer", this),
      Cmd_Fermer("Cmd_Fermer", this) {
    Lst_Protocoles.setGeometry(120, 120, 4200, 3960);
    const std::pair<toolkit::TextBox*, const char*> champs[] = {
        {&Txt_Jours, "Jours (1 lundi à 7 dimanche, vide : tous)"},
        {&Txt_BorneFin, "Fin de la fenêtre (HHhMM)"},
        {&Txt_DureeMn, "Durée (minutes)"},
        {&Txt_Soins, "Soins (codes séparés par des blancs)"},
        {&Txt_NbIntervenants, "Intervenants (1 ou 2)"}};
    double top = 120;
    for (const auto& [boite, texte] : champs) {
        legende(texte, 4440, top, 4440);
        boite->setGeometry(4440, top + 280, 4440, 315);
        top += 720;
    }
    bouton(Cmd_Enregistrer, "Enregistrer", 6120, 4260);
    bouton(Cmd_Fermer, "Fermer", 7560, 4260);
    Lst_Protocoles.Click = [this] { afficher(Lst_Protocoles.listIndex()); };
    Cmd_Enregistrer.Click = [this] { Cmd_Enregistrer_Click(); };
    Cmd_Fermer.Click = [this] { unload(); };
}

void Frm_ProtocoleSsiad::setCodeAide(const std::string& code) {
    m_code = code;
    recu("CodeAide");
}

void Frm_ProtocoleSsiad::setDateProtocole(const std::string& date) {
    m_date = date;
    recu("DateProtocole");
}

void Frm_ProtocoleSsiad::Demarrer() {
    recu("Demarrer");
    setCaption("Protocoles de soins au " + m_date);
    lister();
    if (!m_cles.empty()) Lst_Protocoles.setListIndex(0);
}

void Frm_ProtocoleSsiad::lister() {
    // In force on the date: begun on or before it, and not ended before it (an empty end never ends).
    const double jour = base::toNumber(m_ctl.ObjetConversion.DateInterne(m_date));
    const mvdb::DynamicRecord reponse =
        data::Interroger(database(), "SELECT SSIADPROTOCOLE AVEC CodeAide = \"" + m_code + "\" PAR 0",
                         data::kSSIADPROTOCOLE, "0");
    const std::shared_ptr<mvdb::File> f = fichier(data::kSSIADPROTOCOLE);
    m_cles.clear();
    Lst_Protocoles.clear();
    for (std::int64_t i = 1; i <= reponse.DCount(); ++i) {
        mvdb::DynamicRecord enreg;
        const std::string cle = reponse(i, 1);
        if (cle.empty() || !data::LireEnregistrement(*f, enreg, cle)) continue;
        const std::string fin = enreg(pr::kDernierJour);
        if (base::toNumber(enreg(pr::kPremierJour)) > jour || (!fin.empty() && base::toNumber(fin) < jour))
            continue;
        m_cles.push_back(cle);
        Lst_Protocoles.addItem(heureSaisie(base::Right(cle, 4)) + " - " + heureSaisie(enreg(pr::kBorneFin)) +
                               "   " + enreg(pr::kDureeMn) + " mn   " + joindre(enreg, pr::kSoins));
    }
}

void Frm_ProtocoleSsiad::afficher(int index) {
    if (index < 0) return;
    mvdb::DynamicRecord enreg;
    data::LireEnregistrement(*fichier(data::kSSIADPROTOCOLE), enreg, m_cles[static_cast<std::size_t>(index)]);
    Txt_Jours.setText(joindre(enreg, pr::kJoursSemaine));
    m_finAffichee = heureSaisie(enreg(pr::kBorneFin));
    Txt_BorneFin.setText(m_finAffichee);
    Txt_DureeMn.setText(enreg(pr::kDureeMn));
    Txt_Soins.setText(joindre(enreg, pr::kSoins));
    Txt_NbIntervenants.setText(enreg(pr::kNbIntervenants, 1).empty() ? "1" : enreg(pr::kNbIntervenants, 1));
}

bool Frm_ProtocoleSsiad::Cmd_Enregistrer_Click() {
    const int index = Lst_Protocoles.listIndex();
    if (index < 0) return refuser("Choisissez d'abord un protocole dans la liste.");
    const std::string cle = m_cles[static_cast<std::size_t>(index)];
    const std::vector<std::string> jours = mots(Txt_Jours.text());
    for (const std::string& j : jours)
        if (j.size() != 1 || j < "1" || j > "7")
            return refuser("Les jours vont de 1 (lundi) à 7 (dimanche).");
    mvdb::DynamicRecord enreg = fichier(data::kSSIADPROTOCOLE)->Read(cle);
    // A bound shown to the five minutes and left as it was keeps its own hundredths: 1110 shows "11h05",
    // which would come back as 1108.
    const std::string fin =
        Txt_BorneFin.text() == m_finAffichee ? enreg(pr::kBorneFin) : centiemes(Txt_BorneFin.text());
    // The start bound is the key's last four characters: it names the protocole and cannot change here.
    if (fin.empty() || base::compareValues(fin, base::Right(cle, 4)) <= 0)
        return refuser("La fin de la fenêtre s'écrit HHhMM, par exemple 11h30, après son début (" +
                       heureSaisie(base::Right(cle, 4)) + ").");
    if (!chiffres(Txt_DureeMn.text()) || Txt_DureeMn.text().size() > 3 ||
        base::toNumber(Txt_DureeMn.text()) < 1)
        return refuser("La durée se saisit en minutes, de 1 à 999.");
    const std::vector<std::string> soins = mots(Txt_Soins.text());
    if (soins.empty()) return refuser("Le protocole doit compter au moins un soin.");
    mvdb::DynamicRecord soin;
    for (const std::string& s : soins)
        if (!data::LireEnregistrement(*fichier(data::kSSIADSOINS), soin, s))
            return refuser("Le soin " + s + " n'existe pas.");
    if (Txt_NbIntervenants.text() != "1" && Txt_NbIntervenants.text() != "2")
        return refuser("Le nombre d'intervenants est 1 ou 2.");

    enreg.set(pr::kJoursSemaine, "");
    for (std::size_t v = 0; v < jours.size(); ++v)
        enreg.set(pr::kJoursSemaine, static_cast<std::int64_t>(v + 1), jours[v]);
    enreg.set(pr::kBorneFin, fin);
    enreg.set(pr::kSoins, "");
    for (std::size_t v = 0; v < soins.size(); ++v)
        enreg.set(pr::kSoins, static_cast<std::int64_t>(v + 1), soins[v]);
    enreg.set(pr::kDureeMn, Txt_DureeMn.text());
    enreg.set(pr::kNbIntervenants, 1, Txt_NbIntervenants.text());
    enreg.DBWrite();
    lister();
    Lst_Protocoles.setListIndex(index);
    return true;
}

}  // namespace control
