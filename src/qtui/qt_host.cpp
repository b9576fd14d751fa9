#include "qtui/qt_host.h"

#include <QApplication>
#include <QCloseEvent>
#include <QCursor>
#include <QDialog>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

#include "qtui/form_view.h"
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

}  // namespace

int QtHost::MsgBox(const std::string& prompt, int buttons, const std::string& title) {
    QMessageBox box(m_window);
    box.setWindowTitle(QString::fromStdString(title));
    box.setText(QString::fromStdString(prompt));
    box.setIcon((buttons & toolkit::msgbox::kExclamation) ? QMessageBox::Warning : QMessageBox::NoIcon);
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

}  // namespace qtui
