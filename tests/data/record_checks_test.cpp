#include "data/record_checks.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

#include "mvdb/dynamic_record.h"

namespace {

mvdb::DynamicRecord record(std::initializer_list<std::string> attributes) {
    mvdb::DynamicRecord r;
    std::int64_t a = 0;
    for (const std::string& attribute : attributes)
        r.set(++a, attribute);
    return r;
}

std::string fault(const std::optional<data::RecordFault>& f) {
    return f ? f->text() : "";
}

const std::string kCle = "00100012215120800";
const std::string kProtocole = "000122100000000110800";

TEST(RecordChecks, PlannedInterventions) {
    struct Case {
        const char* name;
        std::string key, end, fault;
    } cases[] = {
        {"an end written as 8h30", kCle, "8h30",
         "SSIADTOURNEE « 00100012215120800 », attribut 1 (fin prévue) : « 8h30 » n'est pas un nombre"},
        {"a 40-digit end", kCle, std::string(40, '9'),
         "SSIADTOURNEE « 00100012215120800 », attribut 1 (fin prévue) : « "
         "9999999999999999999999999999999999999999 » est hors de 0 à 2400 centièmes d'heure"},
        {"an end before the start", kCle, "0750",
         "SSIADTOURNEE « 00100012215120800 », attribut 1 (fin prévue) : la fin « 0750 » n'est pas après le "
         "début « 0800 »"},
        {"an end equal to the start", kCle, "0800",
         "SSIADTOURNEE « 00100012215120800 », attribut 1 (fin prévue) : la fin « 0800 » n'est pas après le "
         "début « 0800 »"},
        {"a key of 15 characters", "001000122151208", "0900",
         "SSIADTOURNEE « 001000122151208 », clé : 15 caractères au lieu de 17"},
        {"a date that is no day", "00100012A15120800", "0900",
         "SSIADTOURNEE « 00100012A15120800 », clé (date, caractères 9 à 13) : « A1512 » n'est pas un jour "
         "interne (5 chiffres au plus)"},
        {"a start past the day", "00100012215122500", "2600",
         "SSIADTOURNEE « 00100012215122500 », clé (début, caractères 14 à 17) : « 2500 » est hors de 0 à "
         "2400 centièmes d'heure"},
        {"an end of 100 000 characters is quoted cut", kCle, std::string(100000, 'X'),
         "SSIADTOURNEE « 00100012215120800 », attribut 1 (fin prévue) : « " + std::string(40, 'X') +
             "… » n'est pas un nombre"},
        {"sound", kCle, "0883", ""},
        {"an end the validation of an assignment writes", kCle, "833,33", ""},
        {"up to midnight", "00100012215122300", "2400", ""},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(k.name);
        EXPECT_EQ(fault(data::checkPlanned(k.key, k.end)), k.fault);
    }
}

TEST(RecordChecks, Protocoles) {
    struct Case {
        const char* name;
        std::string start, end, duration, fault;
    } cases[] = {
        {"a duration of -30", "0800", "0950", "-30",
         "SSIADPROTOCOLE « 000122100000000110800 », attribut 4 (durée) : « -30 » est hors de 1 à 1440 "
         "minutes"},
        {"a duration of a day and a minute", "0800", "0950", "1441",
         "SSIADPROTOCOLE « 000122100000000110800 », attribut 4 (durée) : « 1441 » est hors de 1 à 1440 "
         "minutes"},
        {"a duration in words", "0800", "0950", "vingt",
         "SSIADPROTOCOLE « 000122100000000110800 », attribut 4 (durée) : « vingt » n'est pas un nombre"},
        {"an end bound before the start", "0800", "0700", "20",
         "SSIADPROTOCOLE « 000122100000000110800 », attribut 2 (borne de fin) : la fin « 0700 » est avant le "
         "début « 0800 »"},
        {"an end bound past the day", "0800", "2401", "20",
         "SSIADPROTOCOLE « 000122100000000110800 », attribut 2 (borne de fin) : « 2401 » est hors de 0 à "
         "2400 centièmes d'heure"},
        {"a start bound that is no number", "08h0", "0950", "20",
         "SSIADPROTOCOLE « 000122100000000110800 », clé (borne de début) : « 08h0 » n'est pas un nombre"},
        {"sound", "0800", "0950", "20", ""},
        {"a whole day", "0000", "2400", "1440", ""},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(k.name);
        EXPECT_EQ(fault(data::checkProtocole(kProtocole, k.start, k.end, k.duration)), k.fault);
    }
}

TEST(RecordChecks, TourneeHours) {
    struct Case {
        const char* name;
        std::string heureDebut, minuteDebut, heureFin, minuteFin, fault;
    } cases[] = {
        {"a start of -3", "-3", "00", "14", "00",
         "SSIADCARACTTOURNEE « 001 », attribut 3 (heure de début) : « -3 » est hors de 0 à 24 heures"},
        {"a minute of 75", "6", "75", "14", "00",
         "SSIADCARACTTOURNEE « 001 », attribut 4 (minute de début) : « 75 » est hors de 0 à 59 minutes"},
        {"an end of 25", "6", "00", "25", "00",
         "SSIADCARACTTOURNEE « 001 », attribut 5 (heure de fin) : « 25 » est hors de 0 à 24 heures"},
        {"an hour that is no number", "6h", "00", "14", "00",
         "SSIADCARACTTOURNEE « 001 », attribut 3 (heure de début) : « 6h » n'est pas un nombre"},
        {"an hour with a fraction", "6,5", "00", "14", "00",
         "SSIADCARACTTOURNEE « 001 », attribut 3 (heure de début) : « 6,5 » n'est pas un nombre entier"},
        {"past midnight", "6", "00", "24", "30",
         "SSIADCARACTTOURNEE « 001 », attribut 6 (minute de fin) : la fin « 24h30 » est après 24h00"},
        {"an end before the start", "14", "00", "6", "00",
         "SSIADCARACTTOURNEE « 001 », attribut 5 (heure de fin) : la fin « 6h00 » n'est pas après le début « "
         "14h00 »"},
        {"sound", "6", "00", "14", "00", ""},
        {"empty minutes read as 0", "6", "", "14", "", ""},
        {"minutes compared as a clock does", "7", "30", "8", "05", ""},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(k.name);
        const auto r = record({"LUNDI", "0", k.heureDebut, k.minuteDebut, k.heureFin, k.minuteFin, "M"});
        EXPECT_EQ(fault(data::checkTourneeHours("001", r)), k.fault);
    }
}

TEST(RecordChecks, WholeRecordsAsLoaded) {
    struct Case {
        const char* name;
        std::string file, key;
        mvdb::DynamicRecord record;
        std::string fault;
    } cases[] = {
        {"an accord ending before it starts", "SSIADACCORDS", "00012001000001", record({"21500", "21400"}),
         "SSIADACCORDS « 00012001000001 », attribut 2 (dernier jour) : la fin « 21400 » est avant le début « "
         "21500 »"},
        {"an accord's first day that is a date text", "SSIADACCORDS", "00012001000001",
         record({"01/01/2026", "21400"}),
         "SSIADACCORDS « 00012001000001 », attribut 1 (premier jour) : « 01/01/2026 » n'est pas un jour "
         "interne (5 chiffres au plus)"},
        {"an absence ending before it starts", "CIVILAIDE", "00012",
         [] {
             mvdb::DynamicRecord r;
             r.set(20, 1, "21500");
             r.set(21, 1, "21501");
             r.set(20, 2, "21600");
             r.set(21, 2, "21590");
             return r;
         }(),
         "CIVILAIDE « 00012 », attribut 21 (fin d'absence) : la fin « 21590 » est avant le début « 21600 »"},
        {"a protocole's last day before its first", "SSIADPROTOCOLE", kProtocole,
         record({"", "0950", "S01", "20", "1", "21000", "20000"}),
         "SSIADPROTOCOLE « 000122100000000110800 », attribut 7 (dernier jour) : la fin « 20000 » est avant "
         "le début « 21000 »"},
        {"an open-ended protocole", "SSIADPROTOCOLE", kProtocole,
         record({"", "0950", "S01", "20", "1", "21000", ""}), ""},
        {"an aidé without absences", "CIVILAIDE", "00012", record({"", "DUPONT", "Marie"}), ""},
        {"a file without checks", "SSIADSOINS", "S01", record({"Injection", "", "", "", "O"}), ""},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(k.name);
        EXPECT_EQ(fault(data::checkRecord(k.file, k.key, k.record)), k.fault);
    }
}

TEST(RecordChecks, AListNamesEachFieldOnce) {
    data::FaultList list;
    EXPECT_TRUE(list.empty());
    const auto a = data::checkPlanned(kCle, "8h30");
    const auto b = data::checkPlanned("001000122151208", "0900");
    list.add(*a);
    list.add(*b);
    list.add(*a);
    EXPECT_EQ(list.message(),
              "Enregistrements incohérents, laissés de côté :\r\nSSIADTOURNEE « 00100012215120800 », "
              "attribut 1 (fin prévue) : « 8h30 » n'est pas un nombre\r\nSSIADTOURNEE « 001000122151208 », "
              "clé : 15 caractères au lieu de 17");
}

}  // namespace
