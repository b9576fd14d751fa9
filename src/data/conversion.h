#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "base/date.h"

namespace base {
class Clock;
}
namespace toolkit {
class Host;
class Printers;
}  // namespace toolkit

namespace data {

// The conversions the whole screen depends on: internal day numbers, typed dates, number texts, and
// the printer choice that the prints share.
class ObjetConversion {
public:
    explicit ObjetConversion(const base::Clock& clock) : m_clock(clock) {}

    // The flag raised by the last NormaliserDate: true when the date must be typed again.
    bool LireOptionDate() const { return m_dateARetaper; }

    // The internal day number of a date, on five digits ("21511" for 22/11/2026); empty for a text
    // that is no date "dd/mm/yyyy".
    std::string DateInterne(const base::Date& date) const;
    std::string DateInterne(std::string_view text) const;
    // The date "dd/mm/yyyy" of an internal day number text; empty when the text is no number.
    std::string DateDepuisInterne(std::string_view interne) const;

    // Completes a typed date into "dd/mm/yyyy": d/m, d/m/yy, d/m/yyyy, ddmm, ddmmyy, ddmmyyyy, with the
    // current year and century where they are missing. Anything else, or a day that does not exist,
    // raises the flag and gives the text back unchanged.
    std::string NormaliserDate(std::string_view text);

    // A number text with that many decimals and the decimal comma: ("12.5", 2) gives "12,50".
    std::string FormaterNombre(std::string_view number, int decimales) const;

    // Where the printer choice shows its list, and the list it shows. Until given, a choice fails.
    void setImprimantes(toolkit::Host& host, std::shared_ptr<const toolkit::Printers> printers);
    // Shows the printers for a paper ("A4", or empty for any) and gives the number of the one chosen in
    // the list, as text, or "-1" when the user gave up.
    std::string ChoisirImprimante(const std::string& papier);
    // The copies asked for in the last choice that was not given up; 1 before any.
    int NombreCopies() const { return m_nombreCopies; }

private:
    const base::Clock& m_clock;
    bool m_dateARetaper = false;
    toolkit::Host* m_host = nullptr;
    std::shared_ptr<const toolkit::Printers> m_imprimantes;
    int m_nombreCopies = 1;
};

}  // namespace data
