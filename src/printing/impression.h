#pragma once

#include <memory>
#include <string>
#include <utility>

#include "mvdb/dynamic_record.h"
#include "toolkit/printer.h"

namespace control {

class Ctr_Zandorel;

// The paper reports of the planning screen: the tournée named on the screen, or every tournée of the
// date, as fixed-pitch text with the table's rules drawn over it. It owns the printers the host gave,
// the current one and the state of the page in progress; what it prints it reads from the control it
// belongs to: the code and date chosen, the labels of pane "DETAIL", the files.
class Impression {
public:
    explicit Impression(Ctr_Zandorel& ctl);
    Impression(const Impression&) = delete;
    Impression& operator=(const Impression&) = delete;

    // ---- The printers.
    // The printers of the machine as the host gives them. A new list forgets the current printer.
    // Until one is given, any print fails with a message.
    void setPrinters(std::shared_ptr<toolkit::Printers> printers);
    // Makes Printers(index) the current printer; fails for a number outside the list.
    toolkit::Printer& setCurrentPrinter(int index);
    // The current printer; nullptr before the first choice.
    toolkit::Printer* currentPrinter() const { return m_printer; }

    // ---- The reports.
    // The whole print: the printer choice, its settings, then the tournée of Txt_CodeTournee or, with
    // no code, every tournée of the date. A choice given up prints nothing and changes nothing. A report
    // that fails still gives the screen back and ends its document.
    void imprimer();
    // Landscape, unless the printer's name holds "A4"; a refusal of the driver is ignored.
    void ImpressionPaysage();
    // The copies of the printer choice, unless the printer's name holds "MATRIC"; a refusal is ignored.
    void ReglerCopiesImprimante();
    // The line that opens every page: the day's date and the page number, in "Courier New" 10, between
    // two empty lines.
    void EnteteDate();
    // A text centred on a line of a hundred characters; a text too long for it is an error of Space.
    void ImprimerCentre(const std::string& texte);
    // Date, page number and, when the tournée has its record, the centred title and the date shown.
    // Without the record the head ends bold at size 14, and what follows prints so.
    void EntetePage(const std::string& W_CodeTournee);
    // The column heads and their rules; the last head line stays open for the first entry.
    void EnteteTableau();
    // The vertical rules of the table, from its head down to BasCadre.
    void Cadre();
    // The tournée of Txt_CodeTournee: from its labels when it is on the screen, else from the file.
    void ImpressionUneTournee();
    // One entry from a label of pane "DETAIL": its planned start and the end after DureeMn.
    void RemplirTableauUneTournee(const std::string& CleProtocole, int NumEtq, double DureeMn);
    // Every tournée of the date, from the file, each from a new page.
    void ImpressionToutesTournees();
    // One entry from a SSIADTOURNEE row: its key, its end and its protocole.
    void RemplirTableauToutesTournees(const std::string& W_Cle, const std::string& W_Fin,
                                      const std::string& W_CleProtocole);

    // ---- The page in progress.
    int MaxLignesPage = 40;             // lines of entries on a page
    int LignesUtilisees = 0;            // lines of entries used on the current page
    int UniteCm = 567;                  // twips in a centimetre, the unit of the frame
    double BasCadre = 0;                // bottom of the table: CurrentY after the last entry
    double DernierX = 0;                // CurrentX after the last entry; written, never read
    mvdb::DynamicRecord TabImpression;  // one entry: column 1 the aidé's lines, column 2 the soins

private:
    // The current printer; a failure that says so before any choice.
    toolkit::Printer& imprimante() const;
    // The date the prints are for: that of Txt_Date while it shows, else that of Cbo_Date.
    std::string dateImprimee() const;
    // Fills TabImpression for a protocole and gives n (aidé rows + 1, one short after attribute 14) and
    // s (soins + 1). Missing records leave their column empty.
    std::pair<int, int> remplirTabImpression(const std::string& CleProtocole);
    // The entry's page tests, its rows (split across a page break when the soins do not fit), and its
    // bottom rule; a new page's head names CodeEntete.
    void imprimerEntree(double Debut, double Fin, const std::string& CleProtocole,
                        const std::string& CodeEntete);

    Ctr_Zandorel& m_ctl;
    std::shared_ptr<toolkit::Printers> m_printers;
    toolkit::Printer* m_printer = nullptr;
};

}  // namespace control
