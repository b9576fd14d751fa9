#include "data/conversion.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "base/clock.h"
#include "base/error.h"
#include "base/text.h"
#include "toolkit/host.h"
#include "toolkit/printer.h"

namespace data {
namespace {

int number(std::string_view digits) {
    int n = 0;
    for (char c : digits)
        n = n * 10 + (c - '0');
    return n;
}

std::vector<std::string_view> splitSlashes(std::string_view text) {
    std::vector<std::string_view> parts;
    std::size_t start = 0;
    while (true) {
        std::size_t slash = text.find('/', start);
        parts.push_back(
            text.substr(start, slash == std::string_view::npos ? std::string_view::npos : slash - start));
        if (slash == std::string_view::npos) return parts;
        start = slash + 1;
    }
}

}  // namespace

std::string ObjetConversion::DateInterne(const base::Date& date) const {
    return base::zeroPad(date.internalDay(), 5);
}

std::string ObjetConversion::DateInterne(std::string_view text) const {
    std::optional<base::Date> date = base::Date::parse(text);
    return date ? DateInterne(*date) : std::string();
}

std::string ObjetConversion::DateDepuisInterne(std::string_view interne) const {
    if (!base::allDigits(interne) || interne.size() > 7) return {};
    return base::Date::fromInternal(number(interne)).text();
}

std::string ObjetConversion::NormaliserDate(std::string_view text) {
    int year = m_clock.today().year();
    int century = year - year % 100;
    std::string_view d, m, y;
    std::vector<std::string_view> parts = splitSlashes(text);
    if (parts.size() == 2 || parts.size() == 3) {
        d = parts[0];
        m = parts[1];
        y = parts.size() == 3 ? parts[2] : std::string_view();
        bool shapeOk = d.size() <= 2 && m.size() <= 2 && base::allDigits(d) && base::allDigits(m) &&
                       (parts.size() == 2 || (base::allDigits(y) && (y.size() == 2 || y.size() == 4)));
        if (!shapeOk) d = {};
    } else if (base::allDigits(text) && (text.size() == 4 || text.size() == 6 || text.size() == 8)) {
        d = text.substr(0, 2);
        m = text.substr(2, 2);
        y = text.substr(4);
    }
    std::optional<base::Date> date;
    if (!d.empty()) {
        int fullYear = y.empty() ? year : y.size() == 2 ? century + number(y) : number(y);
        date = base::Date::fromDmy(number(d), number(m), fullYear);
    }
    m_dateARetaper = !date.has_value();
    return date ? date->text() : std::string(text);
}

std::string ObjetConversion::FormaterNombre(std::string_view number, int decimales) const {
    return base::formatFixed(base::toNumber(number), decimales);
}

void ObjetConversion::setImprimantes(toolkit::Host& host, std::shared_ptr<const toolkit::Printers> printers) {
    m_host = &host;
    m_imprimantes = std::move(printers);
}

std::string ObjetConversion::ChoisirImprimante(const std::string& papier) {
    if (!m_host || !m_imprimantes) {
        throw base::Error(base::codes::kNotBound,
                          "Aucune liste d'imprimantes n'a été donnée au choix d'imprimante");
    }
    int copies = m_nombreCopies;
    int choix = m_host->ChoosePrinter(m_imprimantes->deviceNames(), papier, copies);
    if (choix < 0) return "-1";
    m_nombreCopies = copies;
    return std::to_string(choix);
}

}  // namespace data
