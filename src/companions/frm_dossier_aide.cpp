#include "companions/frm_dossier_aide.h"

// The aidés screen.

#include <array>

#include "base/error.h"
#include "base/text.h"
#include "companions/regles_service.h"
#include "companions/saisie.h"
#include "data/gateway.h"
#include "data/layouts.h"
#include "shell/ctr_zandorel.h"

namespace control {
namespace {

namespace ca = data::civilaide;

constexpr int kLongueurCode = 5;

// The text boxes kept in one attribute each, and their captions.
struct Champ {
    toolkit::TextBox Frm_DossierAide::*boite;
    int attribut;
    const char* legende;
};
constexpr std::array<Champ, 6> kChamps = {{{&Frm_DossierAide::Txt_Nom, ca::kNom, "Nom"},
                                           {&Frm_DossierAide::Txt_Prenom, ca::kPrenom, "Prénom"},
                                           {&Frm_DossierAide::Txt_Complement, ca::kLigne9, "Complément"},
                                           {&Frm_DossierAide::Txt_CodePostal, ca::kCodePostal, "Code postal"},
                                           {&Frm_DossierAide::Txt_Ville, ca::kVille, "Ville"},
                                           {&Frm_DossierAide::Txt_Telephone, ca::kTelephone, "Téléphone"}}};

std::vector<std::string> mots(const std::string& texte) {
    std::vector<std::string> out;
    std::string courant;
    for (char c : texte + " ") {
        if (c != ' ') {
            courant += c;
        } else if (!courant.empty()) {
            out.push_back(courant);
            courant.clear();
        }
    }
    return out;
}

// The reports print attributes 5, 7 and 8 on one line, joined by blanks (number, kind of street, street):
// the line typed is cut at its first two blanks, so that it prints as it was typed.
void ecrireAdresse(mvdb::DynamicRecord& enreg, const std::string& texte) {
    const std::vector<std::string> m = mots(texte);
    std::string reste;
    for (std::size_t i = 2; i < m.size(); ++i)
        reste += (i > 2 ? " " : "") + m[i];
    enreg.set(ca::kAdresse1, m.size() > 0 ? m[0] : "");
    enreg.set(ca::kAdresse2, m.size() > 1 ? m[1] : "");
    enreg.set(ca::kAdresse3, reste);
}

std::string adresseLue(const mvdb::DynamicRecord& enreg) {
    std::string texte;
    for (int attribut : {ca::kAdresse1, ca::kAdresse2, ca::kAdresse3})
        if (!enreg(attribut).empty()) texte += (texte.empty() ? "" : " ") + enreg(attribut);
    return texte;
}

}  // namespace

Frm_DossierAide::Frm_DossierAide(Ctr_Zandorel& ctl)
    : EcranService("Frm_DossierAide", ctl, "Dossier Aidé", 11160, 5880),
      Etq_Code("Etq_Code", this),
      Txt_Nom("Txt_Nom", this),
      Txt_Prenom("Txt_Prenom", this),
      Txt_Adresse("Txt_Adresse", this),
      Txt_Complement("Txt_Complement", this),
      Txt_CodePostal("Txt_CodePostal", this),
      Txt_Ville("Txt_Ville", this),
      Txt_Telephone("Txt_Telephone", this),
      Lst_Absences("Lst_Absences", this),
      Txt_AbsenceDebut("Txt_AbsenceDebut", this),
      Txt_AbsenceFin("Txt_AbsenceFin", this),
      Cmd_AjouterAbsence("Cmd_AjouterAbsence", this),
      Cmd_RetirerAbsence("Cmd_RetirerAbsence", this) {
    const double gauche = gaucheChamps(), champs = gaucheChamps() + 1320;
    const std::pair<toolkit::Control*, const char*> lignes[] = {{&Etq_Code, "Code"},
                                                                {&Txt_Nom, "Nom"},
                                                                {&Txt_Prenom, "Prénom"},
                                                                {&Txt_Adresse, "Adresse"},
                                                                {&Txt_Complement, "Complément"},
                                                                {&Txt_CodePostal, "Code postal"},
                                                                {&Txt_Ville, "Ville"},
                                                                {&Txt_Telephone, "Téléphone"}};
    double top = 120;
    for (const auto& [champ, texte] : lignes) {
        legende(texte, gauche, top + 30, 1260);
        champ->setGeometry(champs, top, 2880, 315);
        top += 420;
    }
    Txt_CodePostal.setWidth(960);
    Txt_CodePostal.setMaxLength(10);
    const double absences = champs + 3000;
    legende("Absences", absences, 150, 1500);
    Lst_Absences.setGeometry(absences, 420, 2790, 1800);
    legende("Du", absences, 2370, 360);
    Txt_AbsenceDebut.setGeometry(absences + 360, 2340, 1080, 315);
    Txt_AbsenceDebut.setMaxLength(10);
    legende("Au", absences + 1530, 2370, 360);
    Txt_AbsenceFin.setGeometry(absences + 1890, 2340, 1080, 315);
    Txt_AbsenceFin.setMaxLength(10);
    bouton(Cmd_AjouterAbsence, "Ajouter", absences, 2820);
    bouton(Cmd_RetirerAbsence, "Retirer", absences + 1455, 2820);
    Cmd_AjouterAbsence.Click = [this] { Cmd_AjouterAbsence_Click(); };
    Cmd_RetirerAbsence.Click = [this] { Cmd_RetirerAbsence_Click(); };
}

void Frm_DossierAide::Demarrer(const std::string& codeAide) {
    ouvrir(codeAide);
}

std::vector<EcranService::Element> Frm_DossierAide::elements() {
    std::vector<Element> out;
    for (const std::string& aide : listeAides(database()))
        out.push_back({base::Left(aide, kLongueurCode), aide});
    return out;
}

void Frm_DossierAide::afficher(const std::string& cle) {
    mvdb::DynamicRecord enreg;
    if (!cle.empty()) data::LireEnregistrement(*fichier(data::kCIVILAIDE), enreg, cle);
    std::string code = cle;
    if (code.empty()) {
        std::vector<std::string> codes;
        for (const Element& e : elements())
            codes.push_back(e.cle);
        code = prochainCode(codes, kLongueurCode) + " (nouveau)";
    }
    Etq_Code.setCaption(code);
    for (const Champ& c : kChamps)
        (this->*c.boite).setText(enreg(c.attribut));
    Txt_Adresse.setText(adresseLue(enreg));
    m_absences.clear();
    for (std::int64_t v = 1; v <= enreg.DCount(ca::kAbsenceDebut); ++v)
        m_absences.emplace_back(enreg(ca::kAbsenceDebut, v), enreg(ca::kAbsenceFin, v));
    listerAbsences();
    Txt_AbsenceDebut.setText("");
    Txt_AbsenceFin.setText("");
}

void Frm_DossierAide::listerAbsences() {
    Lst_Absences.clear();
    for (const auto& [debut, fin] : m_absences)
        Lst_Absences.addItem("du " + m_ctl.ObjetConversion.DateDepuisInterne(debut) + " au " +
                             m_ctl.ObjetConversion.DateDepuisInterne(fin));
}

std::string Frm_DossierAide::absenceSaisie(std::pair<std::string, std::string>& periode) {
    data::ObjetConversion& conversion = m_ctl.ObjetConversion;
    if (std::string refus = verifierDate("Du", Txt_AbsenceDebut.text(), conversion, periode.first);
        !refus.empty())
        return refus;
    if (std::string refus = verifierDate("Au", Txt_AbsenceFin.text(), conversion, periode.second);
        !refus.empty())
        return refus;
    if (base::compareValues(periode.second, periode.first) < 0)
        return messageChamp("Au", "l'absence ne peut finir avant d'avoir commencé.");
    return "";
}

bool Frm_DossierAide::Cmd_AjouterAbsence_Click() {
    std::pair<std::string, std::string> periode;
    if (std::string refus = absenceSaisie(periode); !refus.empty()) return refuser(refus);
    m_absences.push_back(periode);
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

std::string Frm_DossierAide::verifier() {
    if (std::string refus = verifierRempli("Nom", Txt_Nom.text()); !refus.empty()) return refus;
    // A period typed and not added yet is saved with the rest, so it must be one.
    if (!Txt_AbsenceDebut.text().empty() || !Txt_AbsenceFin.text().empty()) {
        std::pair<std::string, std::string> periode;
        if (std::string refus = absenceSaisie(periode); !refus.empty()) return refus;
    }
    return "";
}

std::string Frm_DossierAide::ecrire(const std::string& cle) {
    if (!Txt_AbsenceDebut.text().empty() || !Txt_AbsenceFin.text().empty()) Cmd_AjouterAbsence_Click();
    const std::shared_ptr<mvdb::File> f = fichier(data::kCIVILAIDE);
    std::string code = cle;
    if (code.empty()) {
        // Made inside the transaction: two planners creating an aidé at once get two codes.
        std::vector<std::string> codes = clesSelectionnees(database(), data::kCIVILAIDE, "");
        code = prochainCode(codes, kLongueurCode);
        if (code.empty()) throw base::Error(base::codes::kBadData, "Tous les codes d'aidé sont pris.");
    }
    // A record read keeps the attributes that belong to other programs.
    mvdb::DynamicRecord enreg = cle.empty() ? f->New(code) : f->Read(cle);
    for (const Champ& c : kChamps)
        enreg.set(c.attribut, (this->*c.boite).text());
    ecrireAdresse(enreg, Txt_Adresse.text());
    enreg.set(ca::kAbsenceDebut, "");
    enreg.set(ca::kAbsenceFin, "");
    std::int64_t v = 0;
    for (const auto& [debut, fin] : m_absences) {
        ++v;
        enreg.set(ca::kAbsenceDebut, v, debut);
        enreg.set(ca::kAbsenceFin, v, fin);
    }
    enreg.DBWrite();
    return code;
}

std::string Frm_DossierAide::designation(const std::string& cle) {
    mvdb::DynamicRecord enreg;
    data::LireEnregistrement(*fichier(data::kCIVILAIDE), enreg, cle);
    return "l'aidé " + cle + " « " + enreg(ca::kNom) + " " + enreg(ca::kPrenom) + " »";
}

std::vector<std::string> Frm_DossierAide::utilisateurs(const std::string& cle) {
    return usagesAide(database(), cle);
}

void Frm_DossierAide::effacer(const std::string& cle) {
    fichier(data::kCIVILAIDE)->Delete(cle);
}

}  // namespace control
