#pragma once

// The harness of the journeys: a planner's real window, on the offscreen platform, on a database file of
// its own, driven with real Qt events (keys into the line edits, clicks, mouse drags, menu entries), with
// the modal boxes and dialogs answered as a user would and a second connection that checks what other
// workstations see. Every journey also runs under the transaction guard: a store transaction open while
// the screen waits for its user fails the journey.
#include <gtest/gtest.h>

#include <QApplication>
#include <QTimer>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/clock.h"
#include "mvdb/database.h"
#include "qtui/form_view.h"
#include "qtui/main_window.h"
#include "qtui/printers.h"
#include "qtui/qt_host.h"
#include "qtui/transaction_guard.h"
#include "shell/ctr_zandorel.h"

class QAction;
class QMessageBox;

namespace journey {

// 23/11/2026, a Monday: the demo service's tournée 001 runs on Mondays.
inline constexpr int kJour = 23, kMois = 11, kAnnee = 2026;

class Journey : public ::testing::Test {
protected:
    // The demo service is written once into a file that each journey copies.
    static void SetUpTestSuite();
    void SetUp() override;
    void TearDown() override;
    // Whether the journey starts on a database without any record instead of the demo service.
    virtual bool startsEmpty() const { return false; }

    // The widget that shows a control of the planning screen, or of the modal form on top.
    QWidget* widgetOf(const toolkit::Control& control) const;
    template <typename W>
    W* widget(const toolkit::Control& control) const {
        return dynamic_cast<W*>(widgetOf(control));
    }

    // A click into the box, then each character as a key.
    void typeInto(const toolkit::Control& box, const QString& text);
    // A left click in the middle of the control's widget. Clicks activate the window they land in, as
    // the desktop's window manager does.
    void clickOn(const toolkit::Control& control);
    // Opens the combo box's list and clicks the entry.
    void chooseIn(const toolkit::Control& combo, const QString& entry);
    // A right click on a label, then a click on the pop-up menu's entry of that caption; `inForm`, when
    // given, acts in the modal form that the entry opens.
    void popupEntry(const toolkit::Control& label, const QString& entry,
                    std::function<void(qtui::FormView&)> inForm = {});
    // The same, with `next` answering whatever modal window the entry opens.
    void popupEntryAnswered(const toolkit::Control& label, const QString& entry,
                            std::function<void(QWidget*)> next);
    // The entry of the window's menu bar, by its menu's and its own text (without the "&").
    QAction* menuAction(const QString& menu, const QString& entry) const;
    // Presses the label at `grab` (pixels inside it), moves to `to` (pixels in the planning screen), and
    // releases there.
    void dragLabel(const toolkit::Control& label, QPoint grab, QPoint to);

    // What the next modal window gets: the handler runs once the window is up. A modal window that
    // nobody expected fails the journey and is closed.
    void whenModal(std::function<void(QWidget*)> answer);
    // The next message box is answered with its button of that text; its text is kept in `seen`.
    void answerBox(const QString& button, QString* seen = nullptr);
    // The next modal form: `act` runs on its view, for clicks on its controls.
    void inDialog(std::function<void(qtui::FormView&)> act);
    // Runs the event loop until `done` or the time runs out (5 s); false when it ran out.
    bool waitFor(const std::function<bool()>& done);
    // True when every expected modal window came and went.
    bool answersUsed() const { return m_answers.empty(); }
    // Drops the answers kept for windows that may not come (the anomaly list of a day without anomaly).
    void forgetAnswers() { m_answers.clear(); }

    // A new connection to the same database, as another workstation has: the reply of a query, one line
    // per record, values separated by tabs.
    std::string elsewhere(const std::string& file, const std::string& list,
                          const std::string& sentence) const;

    static std::filesystem::path templatePath();
    std::filesystem::path m_folder;
    std::string m_path;
    base::FixedClock m_clock{*base::Date::fromDmy(kJour, kMois, kAnnee), 8 * 3600};
    std::shared_ptr<mvdb::Database> m_db;
    qtui::QtHost m_host{qtui::Zoom(1.0)};
    std::shared_ptr<qtui::PrinterList> m_printers;
    std::unique_ptr<control::Ctr_Zandorel> m_ctl;
    std::unique_ptr<qtui::MainWindow> m_window;
    std::unique_ptr<qtui::TransactionGuard> m_guard;
    std::vector<std::string> m_breaches;

private:
    void answerModal();
    std::deque<std::function<void(QWidget*)>> m_answers;
    QTimer m_watch;
};

}  // namespace journey
