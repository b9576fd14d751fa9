#include "display/affichage.h"

// The pane of aidés: the interventions of the day that still lack an intervenant, derived for each
// aidé from the accord, the protocoles and what is already planned. With a tournée shown, only what
// that tournée could take.
#include <algorithm>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "data/layouts.h"
#include "model/labels.h"
#include "mvdb/database.h"
#include "shell/ctr_zandorel.h"

namespace control {

namespace {

using ColP = Ctr_Zandorel::ColProtocole;
using ColV = Ctr_Zandorel::ColValidees;

// Columns of the accords' reply, listed by "0 1 2 3": the key first.
constexpr int kCleAccord = 1;
constexpr int kPremierJourAccord = 2;
constexpr int kDernierJourAccord = 3;

// What the shown tournée brings to an intervention: one person (or no tournée at all), or a pair.
enum class Equipe { Seul, Paire };

mvdb::DynamicRecord accordsDuJour(mvdb::Database& bd, const std::string& jour) {
    return data::Interroger(
        bd, "SELECT SSIADACCORDS AVEC 1 <= \"" + jour + "\" AND AVEC 2 >= \"" + jour + "\" PAR CodeAide",
        data::kSSIADACCORDS, "0 1 2 3");
}

bool egal(std::string_view valeur, std::string_view nombre) {
    return base::compareValues(valeur, nombre) == 0;
}

// Counts into NbPlaces the places of each protocole row that the validated records fill: a record of a
// one-person tournée fills one place and any other record two. For a tournée of two only whether a
// protocole is untouched matters, and each record counts one.
void compterPlaces(model::WorkTable& protocoles, const model::WorkTable& validees, Equipe equipe) {
    for (std::int64_t j = 1; !validees(j, ColV::HeureValidee).empty(); ++j) {
        for (std::int64_t r = 1; !protocoles(r, ColP::CleProtocole).empty(); ++r) {
            if (protocoles(r, ColP::CleProtocole) != validees(j, ColV::CleProtocole)) continue;
            const int places =
                equipe == Equipe::Paire || egal(validees(j, ColV::NbIntervenantsValides), "1") ? 1 : 2;
            protocoles->set(r, ColP::NbPlaces,
                            base::numberText(base::toNumber(protocoles(r, ColP::NbPlaces)) + places));
        }
    }
}

// TypeEtq of the label that protocole row r still needs, none when its places are taken or its count
// of people is unknown. A pair takes only a protocole with both places free.
std::optional<std::string> typeEtqRestant(const model::WorkTable& protocoles, std::int64_t r, Equipe equipe) {
    const std::string nature = protocoles(r, ColP::TypeEtq);
    const std::string requis = protocoles(r, ColP::NbIntervenantsProtocole);
    const std::string places = protocoles(r, ColP::NbPlaces);
    if (equipe == Equipe::Paire) {
        if (egal(places, "0")) return model::TypeEtq::pourDeux(nature, '2').text();
        return std::nullopt;
    }
    if (egal(requis, "1") && egal(places, "0")) return nature;
    if (egal(requis, "2") && egal(places, "0")) return model::TypeEtq::pourDeux(nature, '2').text();
    if (egal(requis, "2") && egal(places, "1")) return model::TypeEtq::pourDeux(nature, '1').text();
    return std::nullopt;
}

// The labels still to make for the aidé whose TabProtocole and TabValidees are loaded, in the order of
// TabProtocole, with the row number there as NumEtq.
std::vector<model::LabelRow> etiquettesRestantes(Ctr_Zandorel& c, Equipe equipe) {
    compterPlaces(c.TabProtocole, c.TabValidees, equipe);
    std::vector<model::LabelRow> restantes;
    for (std::int64_t r = 1; !c.TabProtocole(r, ColP::CleProtocole).empty(); ++r) {
        std::optional<std::string> typeEtq = typeEtqRestant(c.TabProtocole, r, equipe);
        if (!typeEtq) continue;
        restantes.push_back({static_cast<int>(r), base::toInteger(c.TabProtocole(r, ColP::HeureDebut)),
                             base::toInteger(c.TabProtocole(r, ColP::HeureFin)),
                             base::toInteger(c.TabProtocole(r, ColP::DureeMn)), 0,
                             c.TabProtocole(r, ColP::CleProtocole), *typeEtq});
    }
    return restantes;
}

// Puts the rows a pane builder derives into TabTempoAide where insertByStart, called for each in
// turn, would have put them. A row goes after every row that starts no later, so on a table empty at the
// start the outcome is the arrivals in a stable order of start: one sort instead of a walk from the first
// row for each, which made the display quadratic in its labels. A table that holds rows already, or none
// at all, takes each row through insertByStart as it comes.
class RangementAide {
public:
    using UnParUn = std::function<void(const model::LabelRow&)>;

    RangementAide(Ctr_Zandorel& c, UnParUn unParUn)
        : m_c(c),
          m_unParUn(std::move(unParUn)),
          m_differe(c.TabTempoAide.exists() && c.TabTempoAide->DCount() == 0) {}

    void ajouter(model::LabelRow e) {
        if (m_differe)
            m_rangees.push_back(std::move(e));
        else
            m_unParUn(e);
    }

    // Writes the rows kept so far.
    void terminer() {
        // Starts are whole numbers, whose order as integers is the order of their texts as values.
        std::stable_sort(
            m_rangees.begin(), m_rangees.end(),
            [](const model::LabelRow& a, const model::LabelRow& b) { return a.HeureDebut < b.HeureDebut; });
        for (const model::LabelRow& e : m_rangees)
            m_c.Tables.insertAt(model::Pane::Aide, m_c.TabTempoAide->DCount() + 1, e);
        m_rangees.clear();
    }

private:
    Ctr_Zandorel& m_c;
    UnParUn m_unParUn;
    const bool m_differe;
    std::vector<model::LabelRow> m_rangees;
};

// Runs a pane builder, which hands each row it derives to the RangementAide it is given; `unParUn` is
// insertByStart. The rows are written when the builder fails halfway too, so that the table
// holds what the insertions made before the failure would have left.
void rangerDansTabTempoAide(Ctr_Zandorel& c, RangementAide::UnParUn unParUn,
                            const std::function<void(RangementAide&)>& construire) {
    RangementAide rangement(c, std::move(unParUn));
    try {
        construire(rangement);
    } catch (...) {
        rangement.terminer();
        throw;
    }
    rangement.terminer();
}

}  // namespace

bool Affichage::accordSain(const mvdb::DynamicRecord& accords, std::int64_t i) {
    return enregistrementSain(data::checkAccordDays(accords(i, kCleAccord), accords(i, kPremierJourAccord),
                                                    accords(i, kDernierJourAccord)));
}

bool Affichage::absencesSaines(const std::string& CodeAide) {
    Ctr_Zandorel& c = m_c;
    data::FichiersSSIAD& f = c.Mod.fichiers;
    mvdb::DynamicRecord civil;
    return !f.CIVILAIDE || !data::LireEnregistrement(*f.CIVILAIDE, civil, CodeAide) ||
           enregistrementSain(data::checkRecord(data::kCIVILAIDE, CodeAide, civil));
}

bool Affichage::secteurDeLaTournee(const std::string& cleElemGest) {
    Ctr_Zandorel& c = m_c;
    data::FichiersSSIAD& f = c.Mod.fichiers;
    if (!data::LireEnregistrement(*f.SSIADELEMGEST, f.EnregSSIADELEMGEST, cleElemGest)) return false;
    if (!data::LireEnregistrement(*f.SSIADCARACTTOURNEE, f.EnregSSIADCARACTTOURNEE, c.Txt_CodeTournee.text()))
        return false;
    const std::string secteur = f.EnregSSIADELEMGEST(data::elemgest::kSecteur);
    const mvdb::DynamicRecord& tournee = f.EnregSSIADCARACTTOURNEE;
    for (std::int64_t v = 1; v <= tournee.DCount(data::caracttournee::kSecteurs); ++v) {
        if (egal(tournee(data::caracttournee::kSecteurs, v), secteur)) return true;
    }
    return false;
}

void Affichage::CadreAideSansTournee() {
    Ctr_Zandorel& c = m_c;
    c.debutCommandeLongue();

    // 1. No accord on that date: nothing to derive, but the pointer and the control come back all the
    // same.
    TabAccords = accordsDuJour(c.database(), c.ObjetConversion.DateInterne(c.Txt_Date.text()));

    // 2.
    if (!TabAccords(1).empty()) {
        rangerDansTabTempoAide(
            c, [&c](const model::LabelRow& e) { c.Tables.insertByStart(e); },
            [this, &c](RangementAide& rangement) {
                for (std::int64_t i = 1; i <= TabAccords.DCount(); ++i) {
                    if (!accordSain(TabAccords, i)) continue;
                    if (!data::PeriodeActive(c.database(), TabAccords, i)) continue;
                    const std::string code = base::Left(TabAccords(i, kCleAccord), 5);
                    if (!absencesSaines(code)) continue;
                    RechercheProtocole(code);
                    RechercheInterventionsValidees(code, false, 2);
                    // 3.
                    for (model::LabelRow& e : etiquettesRestantes(c, Equipe::Seul))
                        rangement.ajouter(std::move(e));
                }
            });
    }

    c.finCommandeLongue();
}

void Affichage::CadreAideAvecTournee() {
    Ctr_Zandorel& c = m_c;
    // 1. An empty result leaves the loop without a turn.
    TabAccordsTournee = accordsDuJour(c.database(), c.ObjetConversion.DateInterne(c.Cbo_Date.text()));
    const Equipe equipe = c.NbIntervenantsTournee == 2 ? Equipe::Paire : Equipe::Seul;

    rangerDansTabTempoAide(
        c, [&c](const model::LabelRow& e) { c.Tables.insertByStart(e); },
        [this, &c, equipe](RangementAide& rangement) {
            for (std::int64_t i = 1; i <= TabAccordsTournee.DCount(); ++i) {
                const std::string cle = TabAccordsTournee(i, kCleAccord);
                const std::string code = base::Left(cle, 5);
                // 2.
                if (!secteurDeLaTournee(code + base::Mid(cle, 9, 6))) continue;
                // 3.
                if (!accordSain(TabAccordsTournee, i)) continue;
                if (!data::PeriodeActive(c.database(), TabAccordsTournee, i)) continue;
                if (!absencesSaines(code)) continue;
                // 4. With the tournée's filter; every record of the aidé's day, this tournée's included.
                RechercheProtocole(code);
                RechercheInterventionsValidees(code, true, 2);
                // 5.
                for (model::LabelRow& e : etiquettesRestantes(c, equipe))
                    rangement.ajouter(std::move(e));
            }
        });
}

}  // namespace control
