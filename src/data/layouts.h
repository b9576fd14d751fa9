#pragma once

#include <string>
#include <string_view>

// The records the screen reads and writes: attribute numbers and key layouts, named once. Only the
// attributes the system uses are listed; the records hold more, which belong to other programs.
namespace data {

// The eight files, in the order the screen opens them.
inline constexpr std::string_view kCIVILAIDE = "CIVILAIDE";
inline constexpr std::string_view kSSIADACCORDS = "SSIADACCORDS";
inline constexpr std::string_view kSSIADCARACTTOURNEE = "SSIADCARACTTOURNEE";
inline constexpr std::string_view kSSIADELEMGEST = "SSIADELEMGEST";
inline constexpr std::string_view kSSIADPROTOCOLE = "SSIADPROTOCOLE";
inline constexpr std::string_view kSSIADSOINS = "SSIADSOINS";
inline constexpr std::string_view kSSIADTOURNEE = "SSIADTOURNEE";
inline constexpr std::string_view kTPSTEMPO = "TPSTEMPO";
// Where the purge moves the tournées it removes, same key and same attributes, so that a purge run
// with a wrong date can be undone.
inline constexpr std::string_view kSSIADTOURNEE_APURE = "SSIADTOURNEE_APURE";

// Civil state of an aidé; key: CodeAide, five digits.
namespace civilaide {
inline constexpr int kNom = 2;
inline constexpr int kPrenom = 3;
// Printed together on one line of a report (address: number, street, complement).
inline constexpr int kAdresse1 = 5;
inline constexpr int kAdresse2 = 7;
inline constexpr int kAdresse3 = 8;
inline constexpr int kLigne9 = 9;  // printed on a line of its own (locality)
inline constexpr int kCodePostal = 10;
inline constexpr int kVille = 11;
inline constexpr int kTelephone = 14;
// Absences, multi-valued: first and last internal day of each.
inline constexpr int kAbsenceDebut = 20;
inline constexpr int kAbsenceFin = 21;
}  // namespace civilaide

// One accord of taking in charge; key: CodeAide (5) + accord number (3) + element code (6).
namespace accords {
inline constexpr int kPremierJour = 1;
inline constexpr int kDernierJour = 2;
inline constexpr int kEtat = 3;  // "S": suspended
inline constexpr std::string_view kSuspendu = "S";
}  // namespace accords

// One tournée; key: its code, three characters.
namespace caracttournee {
inline constexpr int kLibelle = 1;
inline constexpr int kJourSemaine = 2;  // 0 Monday to 6 Sunday
inline constexpr int kHeureDebut = 3;
inline constexpr int kMinuteDebut = 4;
inline constexpr int kHeureFin = 5;
inline constexpr int kMinuteFin = 6;
inline constexpr int kType = 7;             // "I" infirmier, "S" soignant, "M" mixte
inline constexpr int kSecteurs = 8;         // multi-valued; matched with SSIADELEMGEST attribute 23
inline constexpr int kSupprimee = 9;        // "1" for a deleted tournée
inline constexpr int kNbIntervenants = 10;  // empty reads as 1
}  // namespace caracttournee

// Management element of an aidé; key: CodeAide (5) + element code (6).
namespace elemgest {
inline constexpr int kSecteur = 23;
// The key under which the assignment dialog looks up the sector of a label of protocole `cleProtocole`:
// the aidé's code, then the protocole key's characters 1 to 5 and 9 to 14, sixteen characters in all
// (the dialog joins them from the label's Tag, which starts with that key).
std::string cleSecteurAffectation(std::string_view cleProtocole);
}  // namespace elemgest

// A care protocole; key CleProtocole: CodeAide (5) + first internal day (5) + element code (6)
// + sequence (1) + start bound in hundredths (4) = 21 characters.
namespace protocole {
inline constexpr int kJoursSemaine = 1;  // multi-valued, 1 Monday to 7 Sunday; empty: every day
inline constexpr int kBorneFin = 2;      // hundredths of an hour
inline constexpr int kSoins = 3;         // multi-valued keys of SSIADSOINS
inline constexpr int kDureeMn = 4;
inline constexpr int kNbIntervenants = 5;  // value 1: 1 or 2
inline constexpr int kPremierJour = 6;
inline constexpr int kDernierJour = 7;  // empty: open-ended
inline constexpr int kLongueurCle = 21;
}  // namespace protocole

// A kind of care; key: soin code.
namespace soins {
inline constexpr int kLibelle = 1;
inline constexpr int kActeInfirmier = 5;  // "O" for an infirmier's act
}  // namespace soins

// One planned intervention; key CodeTournee (3) + CodeAide (5) + internal day (5) + start (4).
namespace tournee {
inline constexpr int kHeureFin = 1;      // hundredths, four digits
inline constexpr int kCleProtocole = 2;  // 21 characters
inline constexpr int kLongueurCle = 17;

// The key of a planned intervention; the start is in hundredths, left-padded to four digits.
std::string cle(std::string_view codeTournee, std::string_view codeAide, std::string_view jourInterne,
                std::string_view debut);
std::string codeTournee(std::string_view cle);
std::string codeAide(std::string_view cle);
std::string jourInterne(std::string_view cle);
std::string heureDebut(std::string_view cle);
}  // namespace tournee

}  // namespace data
