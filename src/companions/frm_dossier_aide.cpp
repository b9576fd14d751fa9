#include "shell/ctr_zandorel.h"

// The aidé file screen: civil state and absences, saved as one record.

#include <array>

#include "base/text.h"
#include "companions/companions.h"
#include "data/gateway.h"
#include "data/layouts.h"

namespace control {
namespace {

namespace ca = data::civilaide;

// The text boxes of the civil state and the attribute each shows.
std::array<std::pair<toolkit::TextBox*, int>, 9> champsCivils(Frm_DossierAide& f) {
    return {{{&f.Txt_Nom, ca::kNom},
             {&f.Txt_Prenom, ca::kPrenom},
             {&f.Txt_Adresse1, ca::kAdresse1},
             {&f.Txt_Adresse2, ca::kAdresse2},
             {&f.Txt_Adresse3, ca::kAdresse3},
             {&f.Txt_Localite, ca::kLigne9},
             {&f.Txt_CodePostal, ca::kCodePostal},
             {&f.Txt_Ville, ca::kVille},
             {&f.Txt_Telephone, ca::kTelephone}}};
}

}  // namespace

Frm_DossierAide::Frm_DossierAide(Ctr_Zandorel& ctl)
    : FormeCompagnon("Frm_DossierAide", ctl, "Dossier Aidé", 8400, 5400),
      Txt_Nom("Txt_Nom", this),
      Txt_Prenom("Txt_Prenom", this),
      Txt_Adresse1("Txt_Adresse1", this),
      Txt_Adresse2("Txt_Adresse2", this),
      Txt_Adresse3("Txt_Adresse3", this),
      Txt_Localite("Txt_Localite", this),
      Txt_CodePostal("Txt_CodePostal", this),
      Txt_Ville("Txt_Ville", this),
      Txt_Telephone("Txt_Telephone", this),
      Lst_Absences("Lst_Absences", this),
      Txt_AbsenceDebut("Txt_AbsenceDebut", this),
      Txt_AbsenceFin("Txt_AbsenceFin", this),
      Cmd_AjouterAbsence("Cmd_AjouterAbsence", this),
      Cmd_RetirerAbsence("Cmd_RetirerAbsence", this),
      Cmd_Enregistrer("Cmd_Enregistrer", this),
      Cmd_Fermer("Cmd_Fermer", this) {
    const char* const legendes[] = {"Nom",      "Prénom",      "Adresse", "Adresse (suite)", "Complément",
                                    "Lieu-dit", "Code postal", "Ville",   "Téléphone"};
    double top = 120;
    int i = 0;
    for (const auto& champ : champsCivils(*this)) {
        legende(legendes[i++], 120, top, 1500);
        champ.first->setGeometry(1680, top, 2880, 315);
        top += 420;
    }
    legende("Absences", 4800, 120, 1500);
    Lst_Absences.setGeometry(4800, 420, 3360, 2400);
    legende("Du", 4800, 2940, 400);
    Txt_AbsenceDebut.setGeometry(5160, 2940, 1200, 315);
    Txt_AbsenceDebut.setMaxLength(10);
    legende("au", 6480, 2940, 400);
    Txt_AbsenceFin.setGeometry(6840, 2940, 1200, 315);
    Txt_AbsenceFin.setMaxLength(10);
    bouton(Cmd_AjouterAbsence, "Ajouter", 4800, 3420);
    bouton(Cmd_RetirerAbsence, "Retirer", 6240, 3420);
    bouton(Cmd_Enregistrer, "Enregistrer", 5280, 4800);
    bouton(Cmd_Fermer, "Fermer", 6840, 4800);
    Cmd_AjouterAbsence.Click = [this] { Cmd_AjouterAbsence_Click(); };
    Cmd_RetirerAbsence.Click = [this] { Cmd_RetirerAbsence_Click(); };
    Cmd_Enregistrer.Click = [this] { Cmd_Enregistrer_Click(); };
    Cmd_Fermer.Click = [this] { unload(); };
}

void Frm_DossierAide::Demarrer(const std::string& codeAide) {
    recu("Demarrer");
    m_code = codeAide;
    setCaption("Dossier Aidé " + codeAide);
    // An aidé with no record yet opens empty; the first save creates it.
    mvdb::DynamicRecord enreg;
    if (!data::LireEnregistrement(*fichier(data::kCIVILAIDE), enreg, codeAide)) enreg = mvdb::DynamicRecord();
    for (const auto& [boite, attribut] : champsCivils(*this))
        boite->setText(enreg(attribut));
    m_absences.clear();
    for (std::int64_t v = 1; v <= enreg.DCount(ca::kAbsenceDebut); ++v)
        m_absences.emplace_back(enreg(ca::kAbsenceDebut, v), enreg(ca::kAbsenceFin, v));
    listerAbsences();
}

void Frm_DossierAide::listerAbsences() {
    Lst_Absences.clear();
    for (const auto& [debut, fin] : m_absences)
        Lst_Absences.addItem("du " + m_ctl.ObjetConversion.DateDepuisInterne(debut) + " au " +
                             m_ctl.ObjetConversion.DateDepuisInterne(fin));
}

bool Frm_DossierAide::Cmd_AjouterAbsence_Click() {
    data::ObjetConversion& conversion = m_ctl.ObjetConversion;
    const std::string debut = conversion.DateInterne(conversion.NormaliserDate(Txt_AbsenceDebut.text()));
    if (debut.empty()) return refuser("La date de début de l'absence n'est pas une date.");
    const std::string fin = conversion.DateInterne(conversion.NormaliserDate(Txt_AbsenceFin.text()));
    if (fin.empty()) return refuser("La date de fin de l'absence n'est pas une date.");
    if (base::toNumber(fin) < base::toNumber(debut))
        return refuser("L'absence ne peut finir avant d'avoir commencé.");
    m_absences.emplace_back(debut, fin);
    listerAbsences();
    Txt_AbsenceDebut.setText("");
    Txt_AbsenceFin.setText("");
    return true;
}

void Frm_DossierAide::Cmd_RetirerAbsence_Click() {
    const int index = Lst_Absences.listIndex();
    if (index < 0) return;
    m_absences.erase(m_absences.begin() + index);
    listerAbsences();
}

bool Frm_DossierAide::Cmd_Enregistrer_Click() {
    if (Txt_Nom.text().empty()) return refuser("Le nom de l'aidé est obligatoire.");
    const std::shared_ptr<mvdb::File> f = fichier(data::kCIVILAIDE);
    mvdb::DynamicRecord enreg;
    // A record read keeps the attributes that belong to other programs.
    if (!data::LireEnregistrement(*f, enreg, m_code)) enreg = f->New(m_code);
    for (const auto& [boite, attribut] : champsCivils(*this))
        enreg.set(attribut, boite->text());
    enreg.set(ca::kAbsenceDebut, "");
    enreg.set(ca::kAbsenceFin, "");
    std::int64_t v = 0;
    for (const auto& [debut, fin] : m_absences) {
        ++v;
        enreg.set(ca::kAbsenceDebut, v, debut);
        enreg.set(ca::kAbsenceFin, v, fin);
    }
    enreg.DBWrite();
    return true;
}

}  // namespace control
