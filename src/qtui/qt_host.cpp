#include "qtui/qt_host.h"

#include <QAbstractFileIconProvider>
#include <QApplication>
#include <QCloseEvent>
#include <QCursor>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QPrinterInfo>
#include <QPushButton>
#include <QSpinBox>
#include <QTextBrowser>
#include <QVBoxLayout>
#include <algorithm>

#include "qtui/form_view.h"
#include "qtui/printers.h"
#include "toolkit/controls.h"
#include "toolkit/form.h"

namespace qtui {
namespace {

// A modal form: the close box asks the form, which may refuse; the dialog ends when the form hides.
class FormDialog : public QDialog {
public:
    FormDialog(toolkit::Form& form, Zoom zoom, QWidget* parent) : QDialog(parent), m_form(form) {
        setWindowTitle(QString::fromStdString(form.caption()));
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        m_view = new FormView(form, zoom, this);
        layout->addWidget(m_view);
        m_view->onFormHidden = [this] { done(0); };
        setFixedSize(m_view->size());
    }
    FormView* view() const { return m_view; }

protected:
    void closeEvent(QCloseEvent* e) override {
        e->ignore();
        if (!m_form.visible() || !m_form.isLoaded()) return QDialog::done(0);
        m_view->forward([&] { m_form.unload(0); });
    }
    void reject() override {
        // Escape is the close box.
        if (!m_form.visible() || !m_form.isLoaded()) return QDialog::reject();
        m_view->forward([&] { m_form.unload(0); });
    }

private:
    toolkit::Form& m_form;
    FormView* m_view;
};

// Tells files apart by their name alone. Qt's own provider opens a file whose name it does not know to
// read its type. Opening and closing the database's own files that way drops this process's locks on
// them (POSIX locks belong to the process, and any close of the file releases them all); another
// workstation then takes the database for unused, folds its journal in and removes it from under the
// screen, whose later writes go to the removed journal where nobody sees them.
class IconesSansLecture : public QAbstractFileIconProvider {
public:
    using QAbstractFileIconProvider::icon;
    QIcon icon(const QFileInfo& info) const override { return icon(info.isDir() ? Folder : File); }
    QString type(const QFileInfo& info) const override {
        if (info.isDir()) return "Dossier";
        return info.suffix().isEmpty() ? QString("Fichier") : "Fichier " + info.suffix();
    }
};

// Where a PDF goes: Qt's own file dialog, with icons that never open a file.
QString fichierPdf(QWidget* parent, const QString& propose) {
    QFileDialog dialogue(parent, "Enregistrer le PDF", propose, "PDF (*.pdf)");
    dialogue.setAcceptMode(QFileDialog::AcceptSave);
    dialogue.setOption(QFileDialog::DontUseNativeDialog);
    IconesSansLecture icones;
    dialogue.setIconProvider(&icones);
    if (dialogue.exec() != QDialog::Accepted || dialogue.selectedFiles().isEmpty()) return {};
    return dialogue.selectedFiles().front();
}

// The printer choice: the printers by name, the system's default first chosen, and the copies.
class ChoixImprimante : public QDialog {
public:
    ChoixImprimante(const std::vector<std::string>& devices, const std::string& paper, int copies,
                    QWidget* parent)
        : QDialog(parent), m_liste(new QListWidget(this)), m_copies(new QSpinBox(this)) {
        setWindowTitle("Imprimer");
        const std::string parDefaut = QPrinterInfo::defaultPrinterName().toStdString();
        for (std::size_t i = 0; i < devices.size(); ++i) {
            m_liste->addItem(QString::fromStdString(devices[i]));
            if (devices[i] == parDefaut) m_liste->setCurrentRow(static_cast<int>(i));
        }
        if (m_liste->currentRow() < 0 && !devices.empty()) m_liste->setCurrentRow(0);
        m_copies->setRange(1, 99);
        m_copies->setValue(std::clamp(copies, 1, 99));
        auto* boutons = new QDialogButtonBox(this);
        boutons->addButton("OK", QDialogButtonBox::AcceptRole);
        boutons->addButton("Annuler", QDialogButtonBox::RejectRole);
        QObject::connect(boutons, &QDialogButtonBox::accepted, this, &QDialog::accept);
        QObject::connect(boutons, &QDialogButtonBox::rejected, this, &QDialog::reject);
        QObject::connect(m_liste, &QListWidget::itemDoubleClicked, this, &QDialog::accept);
        auto* grille = new QFormLayout(this);
        grille->addRow("Imprimante :", m_liste);
        if (!paper.empty()) grille->addRow("Papier :", new QLabel(QString::fromStdString(paper), this));
        grille->addRow("Copies :", m_copies);
        grille->addRow(boutons);
    }
    int index() const { return m_liste->currentRow(); }
    int copies() const { return m_copies->value(); }

private:
    QListWidget* m_liste;
    QSpinBox* m_copies;
};

}  // namespace

int QtHost::MsgBox(const std::string& prompt, int buttons, const std::string& title) {
    QMessageBox box(m_window);
    box.setWindowTitle(QString::fromStdString(title));
    box.setText(QString::fromStdString(prompt));
    switch (buttons & toolkit::msgbox::kIcone) {
        case toolkit::msgbox::kExclamation:
            box.setIcon(QMessageBox::Warning);
            break;
        case toolkit::msgbox::kQuestion:
            box.setIcon(QMessageBox::Question);
            break;
        default:
            box.setIcon(QMessageBox::NoIcon);
            break;
    }
    struct Choice {
        const char* label;
        QMessageBox::ButtonRole role;
        int answer;
    };
    std::vector<Choice> choices;
    switch (buttons & 7) {
        case toolkit::msgbox::kYesNoCancel:
            choices = {{"Oui", QMessageBox::YesRole, toolkit::msgbox::kYes},
                       {"Non", QMessageBox::NoRole, toolkit::msgbox::kNo},
                       {"Annuler", QMessageBox::RejectRole, toolkit::msgbox::kCancel}};
            break;
        case toolkit::msgbox::kYesNo:
            choices = {{"Oui", QMessageBox::YesRole, toolkit::msgbox::kYes},
                       {"Non", QMessageBox::NoRole, toolkit::msgbox::kNo}};
            break;
        default:
            choices = {{"OK", QMessageBox::AcceptRole, toolkit::msgbox::kOk}};
            break;
    }
    std::vector<QAbstractButton*> made;
    for (const Choice& c : choices)
        made.push_back(box.addButton(c.label, c.role));
    box.setDefaultButton(static_cast<QPushButton*>(made.front()));
    // Whatever the wait cursor says, the user has to be able to answer.
    QApplication::setOverrideCursor(Qt::ArrowCursor);
    box.exec();
    QApplication::restoreOverrideCursor();
    for (std::size_t i = 0; i < made.size(); ++i) {
        if (box.clickedButton() == made[i]) return choices[i].answer;
    }
    // Closed without a button: the safe answer, Cancel where there is one.
    return choices.size() == 1 ? toolkit::msgbox::kOk : toolkit::msgbox::kCancel;
}

void QtHost::ShowModal(toolkit::Form& form) {
    form.setLoaded(true);
    form.setVisible(true);
    FormDialog dialog(form, m_zoom, m_window);
    QApplication::setOverrideCursor(Qt::ArrowCursor);
    dialog.exec();
    QApplication::restoreOverrideCursor();
}

void QtHost::PopupMenu(toolkit::Menu& menu) {
    QMenu popup(m_window);
    std::vector<std::pair<QAction*, toolkit::Control*>> entries;
    for (toolkit::Control* child : menu.children()) {
        if (!child->visible()) continue;
        QAction* action = popup.addAction(QString::fromStdString(child->caption()));
        action->setEnabled(child->enabled());
        entries.emplace_back(action, child);
    }
    QAction* chosen = popup.exec(QCursor::pos());
    for (auto& [action, control] : entries) {
        if (action == chosen) control->fireClick();
    }
}

namespace {

// The help pages ship inside the program, under this folder of its resources; their links stay there.
QUrl pageAide(const QString& page) {
    const QString chemin = QStringLiteral(":/aide/") + page;
    if (!QFileInfo(chemin).isFile()) return {};
    return QUrl(QStringLiteral("qrc") + chemin);
}

}  // namespace

void QtHost::ShowHelp(const std::string& page, const std::string& title) {
    const QUrl adresse = pageAide(QString::fromStdString(page));
    if (adresse.isEmpty()) {
        MsgBox("La page d'aide " + page + " est introuvable.", toolkit::msgbox::kExclamation, title);
        return;
    }
    QDialog fenetre(m_window);
    fenetre.setWindowTitle(QString::fromStdString(title));
    auto* texte = new QTextBrowser(&fenetre);
    texte->setOpenExternalLinks(true);
    texte->setSource(adresse);
    auto* boutons = new QDialogButtonBox(&fenetre);
    boutons->addButton("Fermer", QDialogButtonBox::RejectRole);
    QObject::connect(boutons, &QDialogButtonBox::rejected, &fenetre, &QDialog::reject);
    auto* colonne = new QVBoxLayout(&fenetre);
    colonne->addWidget(texte);
    colonne->addWidget(boutons);
    fenetre.resize(760, 620);
    fenetre.exec();
}

void QtHost::DoEvents() {
    QApplication::processEvents();
}

void QtHost::screenMousePointerChanged(int pointer) {
    bool wait = pointer == toolkit::kPointerHourglass;
    if (wait == m_waitCursor) return;
    m_waitCursor = wait;
    if (wait) {
        QApplication::setOverrideCursor(Qt::WaitCursor);
    } else {
        QApplication::restoreOverrideCursor();
    }
}

int QtHost::ChoosePrinter(const std::vector<std::string>& devices, const std::string& paper, int& copies) {
    ChoixImprimante dialog(devices, paper, copies, m_window);
    QApplication::setOverrideCursor(Qt::ArrowCursor);
    const bool choisi = dialog.exec() == QDialog::Accepted && dialog.index() >= 0;
    const bool pdf = choisi && m_pdf && devices[static_cast<std::size_t>(dialog.index())] == kFichierPdf;
    QString fichier;
    if (pdf) {
        fichier = fichierPdf(m_window, QString::fromStdString(m_pdf->path()));
    }
    QApplication::restoreOverrideCursor();
    if (!choisi || (pdf && fichier.isEmpty())) return -1;
    if (pdf) {
        if (!fichier.endsWith(".pdf", Qt::CaseInsensitive)) fichier += ".pdf";
        m_pdf->setPath(fichier.toStdString());
    }
    copies = dialog.copies();
    return dialog.index();
}

}  // namespace qtui
