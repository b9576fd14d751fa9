#include "data/record_checks.h"

#include <algorithm>
#include <cstdint>

#include "base/text.h"
#include "data/layouts.h"

namespace data {
namespace {

constexpr double kFinDuJour = 2400;  // hundredths of an hour
constexpr double kDureeMaximale = 1440;
constexpr double kHeureMaximale = 24;
constexpr double kMinuteMaximale = 59;
constexpr std::size_t kChiffresJour = 5;
// A text quoted in a message is cut: a field of a hundred thousand characters must not fill the box.
constexpr std::int64_t kLongueurCitee = 40;

std::string cite(std::string_view texte) {
    const std::string t(texte);
    if (static_cast<std::int64_t>(base::Len(t)) <= kLongueurCitee) return "« " + t + " »";
    return "« " + base::Left(t, kLongueurCitee) + "… »";
}

RecordFault defaut(std::string_view file, std::string_view key, std::string field, std::string reason) {
    return {std::string(file), std::string(key), std::move(field), std::move(reason)};
}

// A number within [min, max], or what is wrong with the text.
std::optional<std::string> horsBornes(std::string_view texte, double min, double max, const char* unite) {
    const std::optional<double> v = base::parseNumber(texte);
    if (!v) return cite(texte) + " n'est pas un nombre";
    if (*v < min || *v > max) {
        return cite(texte) + " est hors de " + base::numberText(min) + " à " + base::numberText(max) + " " +
               unite;
    }
    return std::nullopt;
}

std::optional<std::string> centiemes(std::string_view texte) {
    return horsBornes(texte, 0, kFinDuJour, "centièmes d'heure");
}

bool estJourInterne(std::string_view texte) {
    return texte.size() <= kChiffresJour && base::allDigits(texte);
}

std::optional<std::string> jourInterne(std::string_view texte) {
    if (estJourInterne(texte)) return std::nullopt;
    return cite(texte) + " n'est pas un jour interne (5 chiffres au plus)";
}

std::string avant(std::string_view fin, std::string_view debut) {
    return "la fin " + cite(fin) + " est avant le début " + cite(debut);
}

// A period of internal days, the last one empty when `ouverte`: each a day, the last not before the first.
std::optional<RecordFault> checkPeriod(std::string_view file, std::string_view key,
                                       const std::string& premier, const std::string& dernier,
                                       const std::string& champPremier, const std::string& champDernier,
                                       bool ouverte) {
    if (auto r = jourInterne(premier)) return defaut(file, key, champPremier, *r);
    if (ouverte && dernier.empty()) return std::nullopt;
    if (auto r = jourInterne(dernier)) return defaut(file, key, champDernier, *r);
    if (base::compareValues(dernier, premier) < 0)
        return defaut(file, key, champDernier, avant(dernier, premier));
    return std::nullopt;
}

std::optional<RecordFault> checkAbsences(std::string_view key, const mvdb::DynamicRecord& r) {
    const std::int64_t n = std::max(r.DCount(civilaide::kAbsenceDebut), r.DCount(civilaide::kAbsenceFin));
    for (std::int64_t v = 1; v <= n; ++v) {
        const std::string debut = r(civilaide::kAbsenceDebut, v);
        const std::string fin = r(civilaide::kAbsenceFin, v);
        if (debut.empty() && fin.empty()) continue;
        if (auto f = checkPeriod(kCIVILAIDE, key, debut, fin, "attribut 20 (début d'absence)",
                                 "attribut 21 (fin d'absence)", false))
            return f;
    }
    return std::nullopt;
}

std::optional<RecordFault> checkProtocoleRecord(std::string_view key, const mvdb::DynamicRecord& r) {
    const std::string cle(key);
    if (auto f = checkProtocole(cle, base::Right(cle, 4), r(protocole::kBorneFin), r(protocole::kDureeMn)))
        return f;
    return checkPeriod(kSSIADPROTOCOLE, key, r(protocole::kPremierJour), r(protocole::kDernierJour),
                       "attribut 6 (premier jour)", "attribut 7 (dernier jour)", true);
}

// The key of a planned intervention: 17 characters, whose date (characters 9 to 13) is an internal day
// and whose start (14 to 17) is in hundredths within the day.
std::optional<RecordFault> checkPlannedKey(std::string_view key) {
    const std::string cle(key);
    const auto longueur = static_cast<std::int64_t>(base::Len(cle));
    if (longueur != tournee::kLongueurCle) {
        return defaut(
            kSSIADTOURNEE, key, "clé",
            std::to_string(longueur) + " caractères au lieu de " + std::to_string(tournee::kLongueurCle));
    }
    const std::string jour = tournee::jourInterne(cle);
    if (auto r = jourInterne(jour)) return defaut(kSSIADTOURNEE, key, "clé (date, caractères 9 à 13)", *r);
    const std::string debut = tournee::heureDebut(cle);
    if (auto r = centiemes(debut)) return defaut(kSSIADTOURNEE, key, "clé (début, caractères 14 à 17)", *r);
    return std::nullopt;
}

}  // namespace

std::string RecordFault::text() const {
    return file + " " + cite(key) + ", " + field + " : " + reason;
}

std::optional<RecordFault> checkPlanned(std::string_view key, std::string_view end) {
    if (auto f = checkPlannedKey(key)) return f;
    const std::string debut = tournee::heureDebut(key);
    const std::string champFin = "attribut " + std::to_string(tournee::kHeureFin) + " (fin prévue)";
    if (auto r = centiemes(end)) return defaut(kSSIADTOURNEE, key, champFin, *r);
    // An end equal to the start is a duration of no minute.
    if (base::compareValues(end, debut) <= 0) {
        return defaut(kSSIADTOURNEE, key, champFin,
                      "la fin " + cite(end) + " n'est pas après le début " + cite(debut));
    }
    return std::nullopt;
}

std::optional<RecordFault> checkProtocole(std::string_view key, std::string_view startBound,
                                          std::string_view endBound, std::string_view durationMn) {
    if (auto r = centiemes(startBound)) return defaut(kSSIADPROTOCOLE, key, "clé (borne de début)", *r);
    const std::string champFin = "attribut " + std::to_string(protocole::kBorneFin) + " (borne de fin)";
    if (auto r = centiemes(endBound)) return defaut(kSSIADPROTOCOLE, key, champFin, *r);
    if (base::compareValues(endBound, startBound) < 0)
        return defaut(kSSIADPROTOCOLE, key, champFin, avant(endBound, startBound));
    if (auto r = horsBornes(durationMn, 1, kDureeMaximale, "minutes")) {
        return defaut(kSSIADPROTOCOLE, key, "attribut " + std::to_string(protocole::kDureeMn) + " (durée)",
                      *r);
    }
    return std::nullopt;
}

std::optional<RecordFault> checkTourneeHours(std::string_view code, const mvdb::DynamicRecord& tournee) {
    struct Champ {
        int attribut;
        const char* nom;
        double max;
        const char* unite;
    };
    static constexpr Champ kChamps[] = {
        {caracttournee::kHeureDebut, "heure de début", kHeureMaximale, "heures"},
        {caracttournee::kMinuteDebut, "minute de début", kMinuteMaximale, "minutes"},
        {caracttournee::kHeureFin, "heure de fin", kHeureMaximale, "heures"},
        {caracttournee::kMinuteFin, "minute de fin", kMinuteMaximale, "minutes"},
    };
    for (const Champ& c : kChamps) {
        const std::string texte = tournee(c.attribut);
        const bool minute = c.max == kMinuteMaximale;
        if (minute && texte.empty()) continue;
        const std::string champ = "attribut " + std::to_string(c.attribut) + " (" + c.nom + ")";
        if (auto r = horsBornes(texte, 0, c.max, c.unite))
            return defaut(kSSIADCARACTTOURNEE, code, champ, *r);
        if (*base::parseNumber(texte) != base::Int(*base::parseNumber(texte)))
            return defaut(kSSIADCARACTTOURNEE, code, champ, cite(texte) + " n'est pas un nombre entier");
    }
    // Hours and minutes compare as the clock does: 7 h 30 before 8 h 05.
    auto enMinutes = [&](int heure, int minute) {
        return *base::parseNumber(tournee(heure)) * 60 + base::toNumber(tournee(minute));
    };
    const double debut = enMinutes(caracttournee::kHeureDebut, caracttournee::kMinuteDebut);
    const double fin = enMinutes(caracttournee::kHeureFin, caracttournee::kMinuteFin);
    if (fin > kHeureMaximale * 60) {
        return defaut(kSSIADCARACTTOURNEE, code, "attribut 6 (minute de fin)",
                      "la fin " +
                          cite(tournee(caracttournee::kHeureFin) + "h" + tournee(caracttournee::kMinuteFin)) +
                          " est après 24h00");
    }
    if (fin <= debut) {
        return defaut(
            kSSIADCARACTTOURNEE, code, "attribut 5 (heure de fin)",
            "la fin " + cite(tournee(caracttournee::kHeureFin) + "h" + tournee(caracttournee::kMinuteFin)) +
                " n'est pas après le début " +
                cite(tournee(caracttournee::kHeureDebut) + "h" + tournee(caracttournee::kMinuteDebut)));
    }
    return std::nullopt;
}

std::optional<RecordFault> checkAccordDays(std::string_view key, std::string_view firstDay,
                                           std::string_view lastDay) {
    return checkPeriod(kSSIADACCORDS, key, std::string(firstDay), std::string(lastDay),
                       "attribut 1 (premier jour)", "attribut 2 (dernier jour)", false);
}

std::optional<RecordFault> checkRecord(std::string_view file, std::string_view key,
                                       const mvdb::DynamicRecord& record) {
    if (file == kSSIADTOURNEE) return checkPlanned(key, record(tournee::kHeureFin));
    if (file == kSSIADPROTOCOLE) return checkProtocoleRecord(key, record);
    if (file == kSSIADCARACTTOURNEE) return checkTourneeHours(key, record);
    if (file == kSSIADACCORDS)
        return checkAccordDays(key, record(accords::kPremierJour), record(accords::kDernierJour));
    if (file == kCIVILAIDE) return checkAbsences(key, record);
    return std::nullopt;
}

void FaultList::add(const RecordFault& fault) {
    const bool dejaVu = std::any_of(m_faults.begin(), m_faults.end(), [&](const RecordFault& f) {
        return f.file == fault.file && f.key == fault.key && f.field == fault.field;
    });
    if (!dejaVu) m_faults.push_back(fault);
}

std::string KeptRecord::text() const {
    return std::string(kSSIADTOURNEE) + " " + cite(key) + ", qui dépend de " + cause.file + " " +
           cite(cause.key);
}

void FaultList::addKept(const std::string& key, const RecordFault& cause) {
    add(cause);
    const bool dejaVu =
        std::any_of(m_kept.begin(), m_kept.end(), [&](const KeptRecord& k) { return k.key == key; });
    if (!dejaVu) m_kept.push_back({key, cause});
}

std::string faultsText(const std::vector<std::string>& defauts, const std::vector<std::string>& gardes,
                       std::string_view saut) {
    std::string texte(kFaultsHead);
    for (const std::string& ligne : defauts)
        texte += std::string(saut) + ligne;
    if (gardes.empty()) return texte;
    texte += std::string(saut) + std::string(kKeptHead);
    for (const std::string& ligne : gardes)
        texte += std::string(saut) + ligne;
    return texte;
}

std::string FaultList::message() const {
    std::vector<std::string> defauts, gardes;
    for (const RecordFault& f : m_faults)
        defauts.push_back(f.text());
    for (const KeptRecord& k : m_kept)
        gardes.push_back(k.text());
    return faultsText(defauts, gardes, "\r\n");
}

}  // namespace data
