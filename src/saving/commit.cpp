#include "saving/sauvegarde.h"

// The commit of a tournée: the one operation that turns what the user arranged into records of
// SSIADTOURNEE. It reads pane "DETAIL" alone: TabTempoDetail and, per row, the label's LinkItem.
#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/error.h"
#include "base/text.h"
#include "data/gateway.h"
#include "data/layouts.h"
#include "data/record_checks.h"
#include "model/clock.h"
#include "model/labels.h"
#include "mvdb/database.h"
#include "shell/ctr_zandorel.h"
#include "toolkit/host.h"

namespace control {
namespace {

constexpr const char* kQuestionAutrePoste =
    "Cette tournée a été modifiée sur un autre poste depuis son affichage. Voulez-vous remplacer sa version "
    "par la vôtre ?";

// A time in hundredths as the anomaly list keeps it: HHMM as a number, rounded to five minutes.
std::string heureAnomalie(double centiemes) {
    return base::numberText(
        static_cast<double>(base::roundHalfEven(model::CentiemesVersHeure(centiemes / 100) * 100)));
}

const toolkit::Label& etiquetteDeLigne(Ctr_Zandorel& c, std::int64_t ligne) {
    return c.Etq_Aide(base::toInteger(c.TabTempoDetail(ligne, model::col::NumEtq)));
}

// Step 2: is a label of pane "DETAIL" on the screen? The walk goes through the rows of the table.
bool presenceEtqDetail(Ctr_Zandorel& c) {
    if (!c.TabTempoDetail.exists()) return false;
    for (std::int64_t i = 1; i <= c.TabTempoDetail->DCount(); ++i) {
        if (etiquetteDeLigne(c, i).left() == model::kLeftDetail) return true;
    }
    return false;
}

// The end written in an ordinary save: in whole numbers, the rounded minutes turned to hundredths plus
// the start, cut to four characters and padded.
std::string finOrdinaire(const std::string& debut, double dureeMn) {
    std::int64_t fin = base::roundHalfEven(dureeMn * 10 / 6) + base::roundHalfEven(base::toNumber(debut));
    return base::padZeros(base::Left(base::numberText(static_cast<double>(fin)), 4), 4);
}

// The end written in the save of an assignment: the minutes read as H.MM and turned to hundredths,
// floating and not cut. The two saves reach the end by different arithmetic on purpose.
std::string finAffectation(const std::string& debut, double dureeMn) {
    double fin = model::HeureVersCentiemes(dureeMn / 100) * 100 + base::toNumber(debut);
    return base::padZeros(base::numberText(fin), 4);
}

// Every record of the tournée on the internal day.
std::string phraseTourneeDuJour(const std::string& codeTournee, const std::string& jour) {
    return "SELECT SSIADTOURNEE AVEC CodeTournee = \"" + codeTournee + "\" AND AVEC DateTournee = \"" + jour +
           "\"";
}

// The version of the records whose keys a selection of SSIADTOURNEE gave in its first column (see
// versionStockee): each record read whole, since a record may hold more than the listed attributes.
std::string versionDes(Ctr_Zandorel& c, const mvdb::DynamicRecord& cles) {
    data::FichiersSSIAD& f = c.Mod.fichiers;
    std::vector<std::string> enregistrements;
    for (std::int64_t i = 1; i <= cles.DCount(); ++i) {
        const std::string cle = cles(i, 1);
        mvdb::DynamicRecord enregistrement;
        if (!data::LireEnregistrement(*f.SSIADTOURNEE, enregistrement, cle)) continue;
        // Each text after its length: no key or record, whatever it holds, can pass for another.
        const std::string texte = enregistrement.text();
        enregistrements.push_back(std::to_string(cle.size()) + ":" + cle + std::to_string(texte.size()) +
                                  ":" + texte);
    }
    std::sort(enregistrements.begin(), enregistrements.end());
    std::string version;
    for (const std::string& e : enregistrements)
        version += e;
    return version;
}

}  // namespace

std::optional<std::string> Sauvegarde::remplacerTournee(const std::string& jour, bool affectation) {
    Ctr_Zandorel& c = m_c;
    data::FichiersSSIAD& f = c.Mod.fichiers;
    try {
        mvdb::Transaction transaction(c.database());
        // The transaction holds the write lock: nothing can come between this reading and the writes.
        const mvdb::DynamicRecord enregistrees = data::Interroger(
            c.database(), phraseTourneeDuJour(c.Txt_CodeTournee.text(), jour), data::kSSIADTOURNEE, "0 1");
        std::string stockee = versionDes(c, enregistrees);
        if (m_versionAffichee && stockee != *m_versionAffichee) return stockee;
        // What another planner saved of this tournée and day goes too, once the user agreed: the loaded
        // keys alone would leave their records beside these, and the last save must win whole. Records
        // that make no sense were never shown: they stay for whoever wrote them to mend. So do those the
        // display left off for the fault of a record they depend on: the planner never saw them, and a
        // deleted one would be a visit lost.
        for (std::int64_t i = 1; i <= enregistrees.DCount(); ++i) {
            const std::string cle = enregistrees(i, 1);
            if (!data::checkPlanned(cle, enregistrees(i, 2)) && !estGarde(cle)) f.SSIADTOURNEE->Delete(cle);
        }
        const std::vector<std::string> gardeesDuJour = clesGardeesDuJour(jour);
        if (!c.TabTourneeEnregistree->text().empty()) {
            for (std::int64_t i = 1; i <= c.TabTourneeEnregistree->DCount(); ++i) {
                f.SSIADTOURNEE->Delete(c.TabTourneeEnregistree(i, 1));
            }
        }
        for (std::int64_t i = 1; i <= c.TabTempoDetail->DCount(); ++i) {
            const std::string debut = base::padZeros(etiquetteDeLigne(c, i).linkItem(), 4);
            const std::string cleProtocole = c.TabTempoDetail(i, model::col::CleProtocole);
            const double dureeMn = base::toNumber(c.TabTempoDetail(i, model::col::DureeMn));
            const std::string cle =
                data::tournee::cle(c.Txt_CodeTournee.text(), base::Left(cleProtocole, 5), jour, debut);
            if (std::find(gardeesDuJour.begin(), gardeesDuJour.end(), cle) != gardeesDuJour.end()) {
                throw base::Error(base::codes::kBadData,
                                  std::string(data::kSSIADTOURNEE) + " « " + cle +
                                      " » : une intervention planifiée non affichée, gardée telle quelle, a "
                                      "déjà ce début");
            }
            f.EnregSSIADTOURNEE = f.SSIADTOURNEE->New(cle);
            f.EnregSSIADTOURNEE.set(data::tournee::kHeureFin, affectation ? finAffectation(debut, dureeMn)
                                                                          : finOrdinaire(debut, dureeMn));
            f.EnregSSIADTOURNEE.set(data::tournee::kCleProtocole, cleProtocole);
            f.EnregSSIADTOURNEE.DBWrite();
        }
        // A kept record of an older version goes on into the day's version as it is stored.
        for (std::size_t i = 0; i < m_gardes.size(); ++i) {
            if (gardeesDuJour[i] == m_gardes[i]) continue;
            mvdb::DynamicRecord garde;
            if (!data::LireEnregistrement(*f.SSIADTOURNEE, garde, m_gardes[i])) continue;
            f.EnregSSIADTOURNEE = f.SSIADTOURNEE->New(gardeesDuJour[i]);
            f.EnregSSIADTOURNEE.setText(garde.text());
            f.EnregSSIADTOURNEE.DBWrite();
        }
        transaction.commit();
    } catch (const base::Error& e) {
        // The stored tournée is as it was, and the screen still holds the user's work.
        c.ValidationAnomalies = false;
        c.host().MsgBox("La tournée n'a pas pu être enregistrée : " + std::string(e.what()) +
                            "\r\nLa tournée enregistrée n'a pas été modifiée.",
                        kStyleAvertissement, kTitreMessage);
    }
    return std::nullopt;
}

std::string Sauvegarde::versionStockee(const std::string& codeTournee, const std::string& jour) {
    Ctr_Zandorel& c = m_c;
    return versionDes(
        c, data::Interroger(c.database(), phraseTourneeDuJour(codeTournee, jour), data::kSSIADTOURNEE, "0"));
}

void Sauvegarde::retenirVersionAffichee(const std::string& codeTournee, const std::string& jour) {
    m_versionAffichee = versionStockee(codeTournee, jour);
    m_gardes.clear();
}

void Sauvegarde::garderEnregistrement(const std::string& cle) {
    if (!estGarde(cle)) m_gardes.push_back(cle);
}

std::vector<std::string> Sauvegarde::clesGardeesDuJour(const std::string& jour) const {
    std::vector<std::string> cles;
    for (const std::string& cle : m_gardes) {
        cles.push_back(data::tournee::cle(data::tournee::codeTournee(cle), data::tournee::codeAide(cle), jour,
                                          data::tournee::heureDebut(cle)));
    }
    return cles;
}

bool Sauvegarde::estGarde(const std::string& cle) const {
    return std::find(m_gardes.begin(), m_gardes.end(), cle) != m_gardes.end();
}

void Sauvegarde::reafficherVersionStockee() {
    Ctr_Zandorel& c = m_c;
    if (c.Mod.FlagAffectationEnCours) return c.EnleveAffectationTournee(false);
    if (c.Cbo_Date.text() != c.DateAffichee) c.Cbo_Date.setText(c.DateAffichee);
    c.Cmd_Affichage_Click();
}

bool Sauvegarde::TesterAnomalie(std::int64_t ligne, const toolkit::Control& etiquette) {
    Ctr_Zandorel& c = m_c;
    const double debutPrevu = base::toNumber(etiquette.linkItem());
    const auto s = static_cast<double>(base::roundHalfEven(debutPrevu));
    // The end is the sum's text cut to four characters, so its fraction is dropped before the
    // comparison (883.9 compares as 883): deliberate, and what makes a window's own end no anomaly.
    const std::string fin =
        model::finDetail(debutPrevu, base::toNumber(c.TabTempoDetail(ligne, model::col::DureeMn)));
    const auto e = static_cast<double>(base::roundHalfEven(base::toNumber(fin)));
    const double debutPermis = base::toNumber(c.TabTempoDetail(ligne, model::col::HeureDebut));
    const double finPermise = base::toNumber(c.TabTempoDetail(ligne, model::col::HeureFin));
    if (s >= debutPermis && e <= finPermise) return false;

    data::FichiersSSIAD& f = c.Mod.fichiers;
    const int n = ++c.NbLignesAnomalies;
    const std::string code = model::codeAideOf(c.TabTempoDetail(ligne, model::col::CleProtocole));
    c.TabAnomalies->set(n, 1, code);
    // Without a civil record the name stays unset.
    if (data::LireEnregistrement(*f.CIVILAIDE, f.EnregCIVILAIDE, code)) {
        c.TabAnomalies->set(
            n, 2, f.EnregCIVILAIDE(data::civilaide::kNom) + " " + f.EnregCIVILAIDE(data::civilaide::kPrenom));
    }
    c.TabAnomalies->set(n, 3, heureAnomalie(s));
    c.TabAnomalies->set(n, 4, heureAnomalie(e));
    c.TabAnomalies->set(n, 5, heureAnomalie(debutPermis));
    c.TabAnomalies->set(n, 6, heureAnomalie(finPermise));
    return true;
}

void Sauvegarde::Cmd_Ok_Click() {
    Ctr_Zandorel& c = m_c;
    // 1. A past tournée can't be saved: the button only clears the screen.
    if (c.TourneeAnterieure) return ReinitialiserEcran();
    // 2, 3, 4. Nothing to save without a label in pane "DETAIL" and nothing stored.
    const bool presence = presenceEtqDetail(c);
    if (!c.TabTempoDetail.exists() || !c.TabTourneeEnregistree.exists()) return ReinitialiserEcran();
    if (!presence && c.TabTourneeEnregistree->DCount() <= 0) return ReinitialiserEcran();

    if (c.Mod.FlagAffectationEnCours) {
        // 5. An assignment never shows the anomaly list.
        c.ValidationAnomalies = true;
    } else {
        // 6. The anomaly scan.
        c.TabAnomalies.renew();
        c.NbLignesAnomalies = 0;
        for (std::int64_t i = 1; i <= c.TabTempoDetail->DCount(); ++i)
            TesterAnomalie(i, etiquetteDeLigne(c, i));
        // 7, 8. The list asks; its buttons answer in c.ValidationAnomalies.
        if (!c.TabAnomalies->text().empty()) {
            c.AfficherAnomalies(false);
        } else {
            c.ValidationAnomalies = true;
        }
    }
    // 9. Refused at the list: nothing written, the tournée stays on screen to be corrected.
    if (!c.ValidationAnomalies) return;

    // 10, 11. The stored tournée is replaced: the records loaded are deleted, one record per label is
    // written. Both passes are one transaction, so a failure between them leaves the stored tournée as it
    // was; deletes come first because a rewritten record can have the very key of an old one.
    const bool affectation = c.Mod.FlagAffectationEnCours;
    // The day of the tournée on show. The date box may already hold the next day chosen, when the question
    // on saving comes from leaving that box: the records go to the day that was shown.
    const std::string jour = c.ObjetConversion.DateInterne(std::string_view(c.DateAffichee));
    for (;;) {
        const std::optional<std::string> autreVersion = remplacerTournee(jour, affectation);
        if (!autreVersion) break;
        // Another workstation saved this day since it was shown. The question comes with no transaction
        // open, since the user may take long to answer; a Yes is checked again in the next transaction,
        // and should the day have changed once more the question comes again.
        if (c.host().MsgBox(kQuestionAutrePoste, toolkit::msgbox::kYesNo | toolkit::msgbox::kExclamation,
                            kTitreMessage) != toolkit::msgbox::kYes) {
            c.ValidationAnomalies = false;
            return reafficherVersionStockee();
        }
        m_versionAffichee = *autreVersion;
    }
    if (!c.ValidationAnomalies) return;
    const Historique::Oubli oubli(c.historique);
    oublierVersionAffichee();
    c.TabTourneeEnregistree.release();

    if (affectation) {
        // 11. The assignment ends; the labels are not unloaded here.
        c.EnleveAffectationTournee(true);
        c.Txt_CodeTournee.setFocus();
        return;
    }
    // 10.3, 10.4. Emptying the code runs its change handler, which takes the screen from there.
    if (c.Etq_Aide.Count() > 1) c.Etq_Aide.unloadAll();
    c.Txt_CodeTournee.setText("");
    c.Txt_CodeTournee.setFocus();
}

void Sauvegarde::ReinitialiserEcran() {
    Ctr_Zandorel& c = m_c;
    if (c.Etq_Aide.Count() > 1) c.DechargerEtiquettes();
    c.Tables.release(model::Pane::Aide);
    c.Tables.release(model::Pane::Detail);
    c.Txt_CodeTournee.setText("");
    c.Txt_CodeTournee.setFocus();
}

}  // namespace control
