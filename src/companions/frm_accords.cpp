#include "companions/frm_accords.h"

#include <map>

#include "shell/ctr_zandorel.h"

// The accords screen. The key holds the aidé, the accord's number and the management element; the number
// is the next free one for that aidé and element.

#include "base/error.h"
#include "base/text.h"
#include "companions/regles_service.h"
#include "companions/saisie.h"
#include "data/gateway.h"
#include "data/layouts.h"
#include "mvdb/database.h"

namespace control {
namespace {

namespace ac = data::accords;

constexpr const char* kAide = "Aidé";
constexpr const char* kElement = "Élément de gestion";
constexpr const char* kPremierJour = "Premier jour";
constexpr const char* kDernierJour = "Dernier jour";
constexpr int kLongueurNumero = 3;

// The parts of an accord's key: CodeAide (5), number (3), element (6).
std::string aideDe(const std::string& cle) {
    return base::Left(cle, 5);
}
std::string numeroDe(const std::string& cle) {
    return base::Mid(cle, 6, kLongueurNumero);
}
std::string elementDe(const std::string& cle) {
    return base::Mid(cle, 9);
}

}  // namespace

Frm_Accords::Frm_Accords(Ctr_Zandorel& ctl)
    : EcranService("Frm_Accords", ctl, "Accords de prise en charge", 9600, 5400),
      Cbo_Aide("Cbo_Aide", this),
      Cbo_Element("Cbo_Element", this),
      Txt_PremierJour("Txt_PremierJour", this),
      Txt_DernierJour("Txt_DernierJour", this),
      Chk_Suspendu("Chk_Suspendu", this) {
    const std::pair<toolkit::Control*, const char*> champs[] = {{&Cbo_Aide, kAide},
                                                                {&Cbo_Element, kElement},
                                                                {&Txt_PremierJour, kPremierJour},
                                                                {&Txt_DernierJour, kDernierJour}};
    double top = 120;
    for (const auto& [champ, texte] : champs) {
        legende(texte, gaucheChamps(), top, 5700);
        champ->setGeometry(gaucheChamps(), top + 280, champ->kind() == toolkit::Kind::TextBox ? 1500 : 5700,
                           315);
        top += 720;
    }
    Txt_PremierJour.setMaxLength(10);
    Txt_DernierJour.setMaxLength(10);
    Chk_Suspendu.setGeometry(gaucheChamps(), top + 120, 5700, 315);
    Chk_Suspendu.setCaption("Suspendu");
    Cbo_Aide.Click = [this] { listerElements(); };
}

void Frm_Accords::listerAides() {
    m_aides.clear();
    Cbo_Aide.clear();
    Cbo_Aide.setText("");
    for (const std::string& aide : listeAides(database())) {
        m_aides.emplace_back(aideDe(aide), base::Mid(aide, 7));
        Cbo_Aide.addItem(aide);
    }
}

std::string Frm_Accords::codeAideChoisi() const {
    const int i = Cbo_Aide.listIndex();
    return i < 0 ? "" : m_aides[static_cast<std::size_t>(i)].first;
}

std::string Frm_Accords::elementChoisi() const {
    const int i = Cbo_Element.listIndex();
    return i < 0 ? "" : m_elements[static_cast<std::size_t>(i)];
}

void Frm_Accords::listerElements() {
    m_elements.clear();
    Cbo_Element.clear();
    Cbo_Element.setText("");
    const std::string code = codeAideChoisi();
    if (code.empty()) return;
    const mvdb::DynamicRecord reponse = data::Interroger(
        database(), "SELECT SSIADELEMGEST AVEC 0 = \"" + code + "]\" PAR 0", data::kSSIADELEMGEST, "0 23");
    for (std::int64_t i = 1; i <= reponse.DCount(); ++i) {
        const std::string cle = reponse(i, 1);
        if (base::Len(cle) != 11 || aideDe(cle) != code) continue;
        m_elements.push_back(base::Mid(cle, 6));
        const std::string secteur = reponse(i, 2);
        Cbo_Element.addItem(m_elements.back() + (secteur.empty() ? "" : " (secteur " + secteur + ")"));
    }
    // An aidé with one element has nothing to choose.
    if (m_elements.size() == 1) Cbo_Element.setListIndex(0);
}

std::vector<EcranService::Element> Frm_Accords::elements() {
    // The aidés too: one may have been created since the screen opened.
    listerAides();
    const mvdb::DynamicRecord reponse =
        data::Interroger(database(), "SELECT SSIADACCORDS PAR 0", data::kSSIADACCORDS, "0 3");
    const std::map<std::string, std::string> noms(m_aides.begin(), m_aides.end());
    std::vector<Element> liste;
    for (std::int64_t i = 1; i <= reponse.DCount(); ++i) {
        const std::string cle = reponse(i, 1);
        if (cle.empty()) continue;
        const auto nom = noms.find(aideDe(cle));
        // The days are in the fields: the row says whose accord it is, and whether it is suspended.
        liste.push_back({cle, aideDe(cle) + " " + (nom == noms.end() ? "" : nom->second) + " - " +
                                  numeroDe(cle) + " " + elementDe(cle) +
                                  (reponse(i, 2) == ac::kSuspendu ? " (suspendu)" : "")});
    }
    return liste;
}

void Frm_Accords::afficher(const std::string& cle) {
    mvdb::DynamicRecord enreg;
    if (cle.empty() || !data::LireEnregistrement(*fichier(data::kSSIADACCORDS), enreg, cle))
        enreg = mvdb::DynamicRecord();
    // The aidé and the element make the key: they are chosen for a new accord only.
    int aide = -1;
    for (std::size_t i = 0; i < m_aides.size() && !cle.empty(); ++i)
        if (m_aides[i].first == aideDe(cle)) aide = static_cast<int>(i);
    if (aide != Cbo_Aide.listIndex()) {
        Cbo_Aide.setListIndex(aide);
        if (aide < 0) Cbo_Aide.setText("");
    }
    if (aide < 0) listerElements();
    int element = -1;
    for (std::size_t i = 0; i < m_elements.size() && !cle.empty(); ++i)
        if (m_elements[i] == elementDe(cle)) element = static_cast<int>(i);
    if (!cle.empty()) Cbo_Element.setListIndex(element);
    Cbo_Aide.setEnabled(cle.empty());
    Cbo_Element.setEnabled(cle.empty());
    data::ObjetConversion& conversion = m_ctl.ObjetConversion;
    Txt_PremierJour.setText(conversion.DateDepuisInterne(enreg(ac::kPremierJour)));
    Txt_DernierJour.setText(conversion.DateDepuisInterne(enreg(ac::kDernierJour)));
    Chk_Suspendu.setValue(enreg(ac::kEtat) == ac::kSuspendu);
}

std::string Frm_Accords::verifier() {
    // A saved accord keeps its key, even when its aidé or element is gone from the lists.
    if (cleCourante().empty() && codeAideChoisi().empty())
        return messageChamp(kAide, "à choisir dans la liste.");
    if (cleCourante().empty() && elementChoisi().empty())
        return messageChamp(kElement, m_elements.empty() ? "l'aidé n'a aucun élément de gestion."
                                                         : "à choisir dans la liste.");
    data::ObjetConversion& conversion = m_ctl.ObjetConversion;
    if (std::string refus = verifierDate(kPremierJour, Txt_PremierJour.text(), conversion, m_premierJour);
        !refus.empty())
        return refus;
    if (std::string refus = verifierDate(kDernierJour, Txt_DernierJour.text(), conversion, m_dernierJour);
        !refus.empty())
        return refus;
    if (base::toNumber(m_dernierJour) < base::toNumber(m_premierJour))
        return messageChamp(kDernierJour, "le dernier jour ne peut pas précéder le premier.");
    return "";
}

std::string Frm_Accords::ecrire(const std::string& cle) {
    const std::shared_ptr<mvdb::File> f = fichier(data::kSSIADACCORDS);
    mvdb::DynamicRecord enreg;
    std::string cleEcrite = cle;
    if (cle.empty()) {
        const std::string aide = codeAideChoisi(), element = elementChoisi();
        const mvdb::DynamicRecord reponse =
            data::Interroger(database(), "SELECT SSIADACCORDS AVEC CodeAide = \"" + aide + "\" PAR 0",
                             data::kSSIADACCORDS, "0");
        std::vector<std::string> numeros;
        for (std::int64_t i = 1; i <= reponse.DCount(); ++i)
            if (elementDe(reponse(i, 1)) == element) numeros.push_back(numeroDe(reponse(i, 1)));
        const std::string numero = prochainCode(numeros, kLongueurNumero);
        if (numero.empty())
            throw base::Error(
                base::codes::kBadData,
                "L'aidé " + aide + " a déjà tous les numéros d'accord pour l'élément " + element + ".");
        cleEcrite = aide + numero + element;
        enreg = f->New(cleEcrite);
    } else {
        enreg = f->Read(cle);  // keeps the attributes that other programs own
    }
    enreg.set(ac::kPremierJour, m_premierJour);
    enreg.set(ac::kDernierJour, m_dernierJour);
    enreg.set(ac::kEtat, Chk_Suspendu.value() ? std::string(ac::kSuspendu) : "");
    enreg.DBWrite();
    return cleEcrite;
}

std::string Frm_Accords::designation(const std::string& cle) {
    std::string nom;
    for (const auto& [code, n] : m_aides)
        if (code == aideDe(cle)) nom = n;
    return "l'accord " + numeroDe(cle) + " de " + nom + " (" + aideDe(cle) + "), élément " + elementDe(cle);
}

void Frm_Accords::effacer(const std::string& cle) {
    fichier(data::kSSIADACCORDS)->Delete(cle);
}

}  // namespace control
