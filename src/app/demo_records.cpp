#include "app/demo_records.h"

#include <map>

#include "base/text.h"
#include "data/layouts.h"
#include "mvdb/dynamic_record.h"
#include "mvdb/store.h"

namespace app {
namespace {

std::string day(int internalDay) {
    return base::zeroPad(internalDay, 5);
}

void setValues(mvdb::DynamicRecord& record, int attribute, const std::vector<std::string>& values) {
    for (std::size_t v = 0; v < values.size(); ++v)
        record.set(attribute, static_cast<std::int64_t>(v) + 1, values[v]);
}

std::size_t writeSoins(mvdb::Store& store, const DemoService& service) {
    using namespace data::soins;
    for (const DemoSoin& soin : service.soins) {
        mvdb::DynamicRecord r;
        r.set(kLibelle, soin.label);
        r.set(kActeInfirmier, soin.infirmier ? "O" : "");
        store.write(std::string(data::kSSIADSOINS), soin.code, r.text());
    }
    return service.soins.size();
}

std::size_t writeTournees(mvdb::Store& store, const DemoService& service) {
    using namespace data::caracttournee;
    for (const DemoTournee& t : service.tournees) {
        mvdb::DynamicRecord r;
        r.set(kLibelle, t.label);
        r.set(kJourSemaine, std::to_string(t.weekday));
        r.set(kHeureDebut, std::to_string(t.startHour));
        r.set(kMinuteDebut, std::to_string(t.startMinute));
        r.set(kHeureFin, std::to_string(t.endHour));
        r.set(kMinuteFin, std::to_string(t.endMinute));
        r.set(kType, std::string(1, t.type));
        setValues(r, kSecteurs, t.sectors);
        r.set(kSupprimee, t.deleted ? "1" : "");
        r.set(kNbIntervenants, t.intervenants == 2 ? "2" : "");
        store.write(std::string(data::kSSIADCARACTTOURNEE), t.code, r.text());
    }
    return service.tournees.size();
}

mvdb::DynamicRecord civilRecord(const DemoAide& aide) {
    using namespace data::civilaide;
    mvdb::DynamicRecord r;
    r.set(kNom, aide.nom);
    r.set(kPrenom, aide.prenom);
    r.set(kAdresse1, aide.numero);
    r.set(kAdresse2, aide.typeVoie);
    r.set(kAdresse3, aide.voie);
    r.set(kLigne9, aide.complement);
    r.set(kCodePostal, aide.codePostal);
    r.set(kVille, aide.ville);
    r.set(kTelephone, aide.telephone);
    for (std::size_t v = 0; v < aide.absences.size(); ++v) {
        r.set(kAbsenceDebut, static_cast<std::int64_t>(v) + 1, day(aide.absences[v].first));
        r.set(kAbsenceFin, static_cast<std::int64_t>(v) + 1, day(aide.absences[v].last));
    }
    return r;
}

std::size_t writeAides(mvdb::Store& store, const DemoService& service) {
    for (const DemoAide& aide : service.aides) {
        store.write(std::string(data::kCIVILAIDE), aide.code, civilRecord(aide).text());
        mvdb::DynamicRecord element;
        element.set(data::elemgest::kSecteur, aide.sector);
        store.write(std::string(data::kSSIADELEMGEST), aide.code + kDemoElement, element.text());
    }
    return service.aides.size();
}

// The sector of each protocole again, under the key that the assignment dialog reads, so that a waiting
// label can be sent to the tournées of its aidé's sector. Several protocoles may share one key.
std::size_t writeAssignmentElements(mvdb::Store& store, const DemoService& service) {
    std::map<std::string, std::string> sectorOf;
    for (const DemoAide& aide : service.aides)
        sectorOf[aide.code] = aide.sector;
    std::map<std::string, std::string> elements;
    for (const DemoProtocole& p : service.protocoles)
        elements.emplace(p.assignmentElementKey(), sectorOf.at(p.codeAide));
    for (const auto& [key, sector] : elements) {
        mvdb::DynamicRecord element;
        element.set(data::elemgest::kSecteur, sector);
        store.write(std::string(data::kSSIADELEMGEST), key, element.text());
    }
    return elements.size();
}

std::size_t writeAccords(mvdb::Store& store, const DemoService& service) {
    using namespace data::accords;
    for (const DemoAccord& a : service.accords) {
        mvdb::DynamicRecord r;
        r.set(kPremierJour, day(a.period.first));
        r.set(kDernierJour, day(a.period.last));
        r.set(kEtat, a.suspended ? std::string(kSuspendu) : std::string("A"));
        store.write(std::string(data::kSSIADACCORDS), a.key(), r.text());
    }
    return service.accords.size();
}

std::size_t writeProtocoles(mvdb::Store& store, const DemoService& service) {
    using namespace data::protocole;
    for (const DemoProtocole& p : service.protocoles) {
        mvdb::DynamicRecord r;
        for (std::size_t v = 0; v < p.weekdays.size(); ++v) {
            r.set(kJoursSemaine, static_cast<std::int64_t>(v) + 1, std::to_string(p.weekdays[v]));
        }
        r.set(kBorneFin, base::zeroPad(p.end, 4));
        setValues(r, kSoins, p.soins);
        r.set(kDureeMn, std::to_string(p.duration));
        r.set(kNbIntervenants, std::to_string(p.intervenants));
        r.set(kPremierJour, day(p.firstDay));
        r.set(kDernierJour, p.lastDay ? day(*p.lastDay) : "");
        store.write(std::string(data::kSSIADPROTOCOLE), p.key(), r.text());
    }
    return service.protocoles.size();
}

std::size_t writeVisits(mvdb::Store& store, const DemoService& service) {
    const std::string file(data::kSSIADTOURNEE);
    for (const DemoVisit& v : service.visits) {
        mvdb::DynamicRecord r;
        r.set(data::tournee::kHeureFin, base::zeroPad(v.end, 4));
        r.set(data::tournee::kCleProtocole, v.protocole);
        store.write(file, v.key(), r.text());
    }
    return service.visits.size();
}

}  // namespace

DemoSummary writeDemoRecords(mvdb::Store& store, const DemoService& service) {
    DemoSummary summary;
    summary.soins = writeSoins(store, service);
    summary.tournees = writeTournees(store, service);
    summary.aides = writeAides(store, service);
    summary.accords = writeAccords(store, service);
    summary.protocoles = writeProtocoles(store, service);
    summary.elements = summary.aides + writeAssignmentElements(store, service);
    summary.interventions = writeVisits(store, service);
    return summary;
}

}  // namespace app
