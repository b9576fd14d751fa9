#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/control.h"

namespace control {

class Ctr_Zandorel;

// The saving of a tournée: the validation that writes it, the anomaly scan before it, leaving the
// screen, and the guard against replacing what another workstation saved since the display. It keeps
// what the display read of the stored day; the control keeps the buttons and forwards their routines.
class Sauvegarde {
public:
    explicit Sauvegarde(Ctr_Zandorel& c) : m_c(c) {}
    Sauvegarde(const Sauvegarde&) = delete;
    Sauvegarde& operator=(const Sauvegarde&) = delete;

    // The control's routines of the same names.
    void Cmd_Ok_Click();
    bool TesterAnomalie(std::int64_t ligne, const toolkit::Control& etiquette);
    void ReinitialiserEcran();
    void Cmd_Sortir_Click();

    // What the display of tournée `codeTournee` reads of its internal day `jour`, in the same view of the
    // database as its records: a validation replaces the stored records only while they are still those.
    void retenirVersionAffichee(const std::string& codeTournee, const std::string& jour);
    // No tournée on show: nothing to guard.
    void oublierVersionAffichee() {
        m_versionAffichee.reset();
        m_gardes.clear();
    }
    // A stored record of the version on show that the display left off the screen because a record it
    // depends on is at fault: a validation of the day stores it on as it is (a record of an older
    // version, copied to the day with the rest of the version), and refuses a label that would take its
    // key on the day.
    void garderEnregistrement(const std::string& cle);

private:
    // The records of SSIADTOURNEE of a tournée and an internal day as stored now, keys and whole texts,
    // in key order as one text: two reads give the same text exactly when nothing changed between them.
    std::string versionStockee(const std::string& codeTournee, const std::string& jour);
    // Replaces the stored records of the tournée and day by one record per detail row, in one
    // transaction. When they are no longer those the display read, nothing is written and their present
    // version is returned. A failure of the database is told, leaves the stored tournée as it was, and
    // clears ValidationAnomalies.
    std::optional<std::string> remplacerTournee(const std::string& jour, bool affectation);
    // The validation's way out when the user keeps the other workstation's version: the day shown again
    // as stored, or, during an assignment, the assignment taken back.
    void reafficherVersionStockee();
    bool estGarde(const std::string& cle) const;
    // The key on `jour` of each kept record.
    std::vector<std::string> clesGardeesDuJour(const std::string& jour) const;

    Ctr_Zandorel& m_c;
    // What the display of the tournée on show read of its day; empty while no tournée is on show.
    std::optional<std::string> m_versionAffichee;
    // Keys of the records of the version on show that the display left off for a fault of another
    // record.
    std::vector<std::string> m_gardes;
};

}  // namespace control
