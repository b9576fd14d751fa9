#include "printing/impression.h"

#include <optional>

#include "base/clock.h"
#include "base/date.h"
#include "base/error.h"
#include "base/text.h"
#include "data/layouts.h"
#include "shell/ctr_zandorel.h"
#include "toolkit/host.h"

namespace control {
namespace {

constexpr const char* kPolice = "Courier New";

// Space of the system: a negative count is an error of the routine, never a shorter text. The centred
// title relies on it failing for a tournée label that is too long.
std::string Space(std::int64_t nombre) {
    if (nombre < 0) {
        throw base::Error(base::codes::kBadData,
                          "Appel de procédure ou argument incorrect : Space(" + std::to_string(nombre) + ")");
    }
    return std::string(static_cast<std::size_t>(nombre), ' ');
}

// The blanks that centre a text on a line of a hundred characters, rounded halves to even.
std::string centrage(const std::string& texte) {
    return Space(base::roundHalfEven(50 - static_cast<double>(base::Len(texte)) / 2));
}

bool contient(const std::string& nom, const char* marque) {
    return base::UCase(nom).find(marque) != std::string::npos;
}

}  // namespace

Impression::Impression(Ctr_Zandorel& ctl) : m_ctl(ctl) {}

void Impression::setPrinters(std::shared_ptr<toolkit::Printers> printers) {
    m_printer = nullptr;
    m_printers = std::move(printers);
}

toolkit::Printer& Impression::setCurrentPrinter(int index) {
    if (!m_printers) {
        throw base::Error(base::codes::kNotBound, "Aucune imprimante n'a été donnée au contrôle Zandorel");
    }
    m_printer = &m_printers->at(index);
    return *m_printer;
}

toolkit::Printer& Impression::imprimante() const {
    if (!m_printer) {
        throw base::Error(base::codes::kNotBound, "Aucune imprimante n'a été choisie pour l'impression");
    }
    return *m_printer;
}

std::string Impression::dateImprimee() const {
    return m_ctl.Txt_Date.visible() ? m_ctl.Txt_Date.text() : m_ctl.Cbo_Date.text();
}

void Impression::imprimer() {
    // 1, 2.
    const std::string choix = m_ctl.ObjetConversion.ChoisirImprimante("A4");
    m_ctl.host().DoEvents();
    if (base::toNumber(choix) == -1) return;

    // 3, 4.
    toolkit::Printer& imprimante = setCurrentPrinter(static_cast<int>(base::toNumber(choix)));
    ReglerCopiesImprimante();
    MaxLignesPage = 40;
    LignesUtilisees = 0;
    UniteCm = 567;
    ImpressionPaysage();

    // 5, 6. A failure of a report still gives the screen back and ends what was printed, so that the
    // next print starts a document of its own.
    m_ctl.defautsLus.clear();
    m_ctl.debutCommandeLongue();
    try {
        if (!m_ctl.Txt_CodeTournee.text().empty()) {
            ImpressionUneTournee();
        } else {
            ImpressionToutesTournees();
        }
    } catch (...) {
        m_ctl.finCommandeLongue();
        imprimante.endDoc();
        throw;
    }

    // 7. Records left out of the paper are named once it is done.
    m_ctl.finCommandeLongue();
    imprimante.endDoc();
    m_ctl.signalerDefauts();
}

void Impression::ImpressionPaysage() {
    // A printer with A4 in its name is one set up for this report: it keeps its orientation.
    toolkit::Printer& p = imprimante();
    if (contient(p.deviceName(), "A4")) return;
    try {
        p.setOrientation(toolkit::kLandscape);
    } catch (const base::Error&) {
        // Some drivers refuse the setting; the report prints all the same.
    }
}

void Impression::ReglerCopiesImprimante() {
    // A matrix printer keeps its own count.
    toolkit::Printer& p = imprimante();
    if (contient(p.deviceName(), "MATRIC")) return;
    try {
        p.setCopies(m_ctl.ObjetConversion.NombreCopies());
    } catch (const base::Error&) {
        // As for the orientation: a refusal of the driver is not the user's concern.
    }
}

void Impression::EnteteDate() {
    toolkit::Printer& p = imprimante();
    p.setFontName(kPolice);
    p.setFontSize(10);
    p.print("");
    p.print(" Date : " + m_ctl.clock().today().text() + Space(106) + "Page : " + std::to_string(p.page()));
    p.print("");
}

void Impression::ImprimerCentre(const std::string& texte) {
    imprimante().print(centrage(texte) + texte);
}

void Impression::EntetePage(const std::string& W_CodeTournee) {
    toolkit::Printer& p = imprimante();
    // 1, 2.
    EnteteDate();

    // 3, 4.
    p.setFontBold(true);
    p.setFontSize(14);
    const std::optional<base::Date> jour = base::Date::parse(dateImprimee());
    const std::string L = "du " + (jour ? jour->longText() : std::string());

    // 5. Deliberate: without its record the head stops here, bold at 14, and what follows prints so.
    mvdb::DynamicRecord& tournee = m_ctl.Mod.fichiers.EnregSSIADCARACTTOURNEE;
    if (!data::LireEnregistrement(*m_ctl.Mod.fichiers.SSIADCARACTTOURNEE, tournee, W_CodeTournee)) return;

    // 6, 7.
    const std::string T = "TOURNEE : " + W_CodeTournee + " " + tournee(data::caracttournee::kLibelle);
    ImprimerCentre(T);
    ImprimerCentre(L);

    // 8. The size 12 is replaced at once; the order of the three settings is kept as it stands.
    p.setFontSize(12);
    p.setFontBold(false);
    p.setFontSize(10);
    p.print("");
}

void Impression::EnteteTableau() {
    toolkit::Printer& p = imprimante();
    const double u = UniteCm;
    p.print("");
    p.setFontSize(10);
    p.print("   Horaires     Aidé" + Space(55) + "Soins");
    // Left open: the first entry ends this line before its own.
    p.print("   De     A", toolkit::LineEnd::Open);

    p.line(0.2 * u, 2.9 * u, 28 * u, 2.9 * u, 0);
    p.line(0.2 * u, 3.4 * u, 2.8 * u, 3.4 * u, 0);
    p.line(0.2 * u, 3.9 * u, 28 * u, 3.9 * u, 0);
    p.line(1.5 * u, 3.4 * u, 1.5 * u, 3.9 * u, 0);
}

void Impression::Cadre() {
    toolkit::Printer& p = imprimante();
    const double u = UniteCm;
    p.line(1.5 * u, 3.4 * u, 1.5 * u, BasCadre, 0);
    for (const double x : {0.2, 2.8, 15.2, 28.0})
        p.line(x * u, 2.9 * u, x * u, BasCadre, 0);
}

}  // namespace control
