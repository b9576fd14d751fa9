#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "data/record_checks.h"
#include "mvdb/dynamic_record.h"

namespace control {

class Ctr_Zandorel;

// The display of a day: the choice of a tournée and a date, the display command, the lookups of
// protocoles and validated interventions, and the builders of the two panes. It keeps the replies it
// reads a day from; the labels, the label tables and the state the screen shows stay the control's,
// which forwards its events and routines here.
class Affichage {
public:
    explicit Affichage(Ctr_Zandorel& c) : m_c(c) {}
    Affichage(const Affichage&) = delete;
    Affichage& operator=(const Affichage&) = delete;

    // The control's routines of the same names.
    void Cmd_Affichage_Click();
    void RechercheProtocole(const std::string& CodeAide);
    void RechercheInterventionsValidees(const std::string& CodeAide, bool DemiJournee, int Portee);
    void CadreAideSansTournee();
    void CadreAideAvecTournee();
    void CadreDetailAvecTournee();
    void CompterActes(const mvdb::DynamicRecord& protocole, int& actesInfirmiers, int& autresActes);
    void CadreDetail(const std::string& CodeAide, const std::string& CleTournee,
                     const std::string& CleElement);
    bool enregistrementSain(const std::optional<data::RecordFault>& defaut);
    bool accordSain(const mvdb::DynamicRecord& accords, std::int64_t i);
    bool absencesSaines(const std::string& CodeAide);
    void ecarterInterventionsIncoherentes(mvdb::DynamicRecord& reponse);
    // Takes out of a reply on SSIADTOURNEE listed "0 1 2" the records whose own protocole, or whose
    // aidé's accord on their day, is at fault, and names them with that fault.
    void ecarterInterventionsDependantes(mvdb::DynamicRecord& reponse);
    // The accords of an aidé on an internal day, listed "0 1 2 3".
    mvdb::DynamicRecord accordsDeLAide(const std::string& CodeAide, const std::string& jour);
    void signalerDefauts();

    mvdb::DynamicRecord ResTournee;         // raw reply of RechercheInterventionsValidees
    mvdb::DynamicRecord TabAccords;         // accords of the day, without a tournée
    mvdb::DynamicRecord TabAccordsTournee;  // accords of the day, for the tournée shown
    mvdb::DynamicRecord ResTourneeDates;    // keys of the tournée at or before the date, latest first
    mvdb::DynamicRecord ResTourneeJour;     // records of the version in force
    std::string DateTourneeInterne;
    int NbLignesDetail = 0;
    // The protocoles of the aidé that the last RechercheProtocole set aside as faulty, in the order met.
    std::vector<data::RecordFault> ProtocolesEcartes;

private:
    // The sector filter of a shown tournée: reads SSIADELEMGEST `cleElemGest` and SSIADCARACTTOURNEE of
    // Txt_CodeTournee into their buffers; true when both exist and the aidé's sector (attribute 23) is
    // one of the tournée's (attribute 8).
    bool secteurDeLaTournee(const std::string& cleElemGest);
    // enregistrementSain for a protocole of RechercheProtocole, which also lists it in ProtocolesEcartes.
    bool protocoleSain(const std::optional<data::RecordFault>& defaut);
    // The fault of a record that planned record `CleTournee` depends on left it off the screen: named,
    // and stored on by a validation of the day.
    void garderEnregistrement(const std::string& CleTournee, const data::RecordFault& cause);
    // The fault of the first of `accordsDuJour` (a reply of accordsDeLAide); when there is none, the
    // first fault among all the aidé's accords, since a day that makes no sense can keep an accord out of
    // the day's selection.
    std::optional<data::RecordFault> accordIncoherent(const std::string& CodeAide,
                                                      const mvdb::DynamicRecord& accordsDuJour);

    Ctr_Zandorel& m_c;
};

}  // namespace control
