#pragma once

#include <QWidget>

#include "qtui/geometry.h"
#include "toolkit/host.h"

namespace qtui {

class PdfPrinter;

// The host on a real screen: message boxes with the exclamation icon and French buttons, modal forms
// as dialogs, pop-up menus at the pointer, the hourglass as Qt's wait cursor.
class QtHost : public toolkit::Host {
public:
    explicit QtHost(Zoom zoom) : m_zoom(zoom) {}
    void setZoom(Zoom zoom) { m_zoom = zoom; }
    // The window that boxes and dialogs belong to.
    void setWindow(QWidget* window) { m_window = window; }

    int MsgBox(const std::string& prompt, int buttons, const std::string& title) override;
    void ShowModal(toolkit::Form& form) override;
    void PopupMenu(toolkit::Menu& menu) override;
    void DoEvents() override;
    // A dialog with the printers, copies from 1 to 99, and OK or Annuler. Choosing kFichierPdf asks
    // where the file goes, for the PDF printer given here; giving that up gives the choice up.
    int ChoosePrinter(const std::vector<std::string>& devices, const std::string& paper,
                      int& copies) override;
    void setPdfPrinter(PdfPrinter* pdf) { m_pdf = pdf; }
    // A window with the page, which ships inside the program, in a QTextBrowser; a message box when the
    // program holds no such page.
    void ShowHelp(const std::string& page, const std::string& title) override;

protected:
    void screenMousePointerChanged(int pointer) override;

private:
    Zoom m_zoom;
    QWidget* m_window = nullptr;
    bool m_waitCursor = false;
    PdfPrinter* m_pdf = nullptr;
};

}  // namespace qtui
