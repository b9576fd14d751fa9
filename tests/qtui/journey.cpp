#include "journey.h"

#include <unistd.h>

#include <QAbstractItemView>
#include <QComboBox>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <sstream>

#include "app/commands.h"
#include "app/demo_data.h"
#include "mvdb/open_store.h"
#include "shell/droits.h"

namespace journey {
namespace {

// A click activates the window it lands in, once the click is in: an X server tells the window of its
// focus after the press that asked for it.
void activateFor(QWidget* w) {
    if (w->window()->isActiveWindow()) return;
    QApplication::setActiveWindow(w->window());
    QTest::qWait(1);
}

}  // namespace

std::filesystem::path Journey::templatePath() {
    return std::filesystem::temp_directory_path() /
           ("zandorel-journeys-" + std::to_string(::getpid()) + "-service.db");
}

void Journey::SetUpTestSuite() {
    const std::filesystem::path path = templatePath();
    if (std::filesystem::exists(path)) return;
    base::FixedClock clock(*base::Date::fromDmy(kJour, kMois, kAnnee), 8 * 3600);
    auto db = app::openDatabase(path.string(), mvdb::OpenMode::CreateIfMissing, clock);
    app::writeDemoService(*db, app::DemoOptions{clock.today(), 40, 60, 1});
}

void Journey::SetUp() {
    const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
    m_folder = std::filesystem::temp_directory_path() /
               ("zandorel-" + std::string(test->name()) + "-" + std::to_string(::getpid()));
    std::filesystem::remove_all(m_folder);
    std::filesystem::create_directories(m_folder);
    m_path = (m_folder / "service.db").string();
    if (!startsEmpty()) std::filesystem::copy_file(templatePath(), m_path);
    m_db = app::openDatabase(
        m_path, startsEmpty() ? mvdb::OpenMode::CreateIfMissing : mvdb::OpenMode::ExistingOnly, m_clock);

    m_guard = std::make_unique<qtui::TransactionGuard>([this] { return m_db->store().openTransaction(); });
    m_guard->setOnBreach([this](const std::string& where, const std::string& what) {
        m_breaches.push_back(where + " : " + what);
    });

    m_ctl = std::make_unique<control::Ctr_Zandorel>(m_host, m_clock);
    m_ctl->setTheClient(nullptr);
    m_ctl->setTheDatabase(m_db);
    m_ctl->setDroitsUtilisateur(std::make_shared<control::DroitsFixes>(2));
    m_printers = std::make_shared<qtui::PrinterList>();
    m_printers->add(
        std::make_unique<qtui::PdfPrinter>(qtui::kFichierPdf, (m_folder / "tournee.pdf").string()));
    m_host.setPdfPrinter(m_printers->pdfPrinter());
    m_ctl->setPrinters(m_printers);
    m_window = std::make_unique<qtui::MainWindow>(*m_ctl, m_host, qtui::Zoom(1.0));
    m_window->show();
    m_window->start();
    m_window->activateWindow();
    QApplication::setActiveWindow(m_window.get());

    m_watch.setInterval(10);
    QObject::connect(&m_watch, &QTimer::timeout, [this] { answerModal(); });
    m_watch.start();
}

void Journey::TearDown() {
    m_watch.stop();
    // A window left open by a failed step must not outlive the journey.
    while (QWidget* modal = QApplication::activeModalWidget())
        modal->close();
    m_window.reset();
    m_ctl.reset();
    m_guard.reset();
    m_db.reset();
    EXPECT_TRUE(m_breaches.empty()) << ::testing::PrintToString(m_breaches);
    EXPECT_TRUE(m_answers.empty()) << m_answers.size() << " modal window(s) expected and never shown";
    std::filesystem::remove_all(m_folder);
}

QWidget* Journey::widgetOf(const toolkit::Control& control) const {
    if (QWidget* w = m_window->view().widgetFor(&control)) return w;
    if (QWidget* modal = QApplication::activeModalWidget()) {
        for (auto* view : modal->findChildren<qtui::FormView*>()) {
            if (QWidget* w = view->widgetFor(&control)) return w;
        }
    }
    return nullptr;
}

void Journey::typeInto(const toolkit::Control& box, const QString& text) {
    QWidget* w = widgetOf(box);
    ASSERT_NE(w, nullptr) << box.name();
    QTest::mouseClick(w, Qt::LeftButton, {}, QPoint(w->width() - 4, w->height() / 2));
    activateFor(w);
    // The keys go where the focus is, as the user's keyboard sends them.
    for (QChar c : text) {
        QWidget* target = QApplication::focusWidget() ? QApplication::focusWidget() : w;
        QTest::keyClick(target, c.toLatin1());
        // A hand types a few keys a second: what the screen does meanwhile runs between them.
        QTest::qWait(20);
    }
}

void Journey::clickOn(const toolkit::Control& control) {
    QWidget* w = widgetOf(control);
    ASSERT_NE(w, nullptr) << control.name();
    ASSERT_TRUE(w->isVisible() && w->isEnabled()) << control.name() << " cannot be clicked";
    QTest::mouseClick(w, Qt::LeftButton);
    activateFor(w);
}

void Journey::chooseIn(const toolkit::Control& control, const QString& entry) {
    auto* combo = dynamic_cast<QComboBox*>(widgetOf(control));
    ASSERT_NE(combo, nullptr) << control.name();
    const int index = combo->findText(entry);
    ASSERT_GE(index, 0) << entry.toStdString() << " is not in " << control.name();
    combo->showPopup();
    QAbstractItemView* list = combo->view();
    const QRect row = list->visualRect(list->model()->index(index, 0));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, row.center());
}

void Journey::popupEntry(const toolkit::Control& label, const QString& entry,
                         std::function<void(qtui::FormView&)> inForm) {
    if (!inForm) return popupEntryAnswered(label, entry, {});
    popupEntryAnswered(label, entry, [inForm = std::move(inForm)](QWidget* window) {
        auto* view = window->findChild<qtui::FormView*>();
        ASSERT_NE(view, nullptr) << "a modal form was expected, not " << window->metaObject()->className();
        inForm(*view);
    });
}

void Journey::popupEntryAnswered(const toolkit::Control& label, const QString& entry,
                                 std::function<void(QWidget*)> next) {
    QWidget* w = widgetOf(label);
    ASSERT_NE(w, nullptr) << label.name();
    activateFor(w);
    whenModal([entry](QWidget* popup) {
        auto* menu = qobject_cast<QMenu*>(popup);
        ASSERT_NE(menu, nullptr) << "a pop-up menu was expected";
        for (QAction* action : menu->actions()) {
            if (action->text() == entry) {
                QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(action).center());
                return;
            }
        }
        menu->close();
        FAIL() << entry.toStdString() << " is not in the pop-up menu";
    });
    if (next) whenModal(std::move(next));
    QTest::mouseClick(w, Qt::RightButton, {}, QPoint(5, 5));
}

QAction* Journey::menuAction(const QString& menu, const QString& entry) const {
    for (QAction* top : m_window->menuBar()->actions()) {
        if (top->text().remove('&') != menu || !top->menu()) continue;
        for (QAction* action : top->menu()->actions()) {
            if (action->text().remove('&') == entry) return action;
        }
    }
    return nullptr;
}

void Journey::dragLabel(const toolkit::Control& label, QPoint grab, QPoint to) {
    QWidget* w = widgetOf(label);
    ASSERT_NE(w, nullptr) << label.name();
    const QPoint target = w->mapFrom(&m_window->view(), to);
    // The pointer comes from elsewhere, as a hand's does: a press where the last one was, a moment
    // ago, would count as a double click.
    QTest::mouseMove(&m_window->view(), QPoint(1, 1));
    QTest::qWait(QApplication::doubleClickInterval());
    QTest::mouseMove(w, grab);
    QTest::mousePress(w, Qt::LeftButton, {}, grab);
    QTest::mouseMove(w, (grab + target) / 2);
    QTest::mouseMove(w, target);
    QTest::mouseRelease(w, Qt::LeftButton, {}, target);
}

void Journey::whenModal(std::function<void(QWidget*)> answer) {
    m_answers.push_back(std::move(answer));
}

void Journey::answerBox(const QString& button, QString* seen) {
    whenModal([button, seen](QWidget* window) {
        auto* box = qobject_cast<QMessageBox*>(window);
        ASSERT_NE(box, nullptr) << "a message box was expected, not " << window->metaObject()->className();
        if (seen) *seen = box->text();
        for (QAbstractButton* b : box->buttons()) {
            if (b->text() == button) {
                QTest::mouseClick(b, Qt::LeftButton);
                return;
            }
        }
        box->close();
        FAIL() << "no button " << button.toStdString() << " in the box « " << box->text().toStdString()
               << " »";
    });
}

void Journey::inDialog(std::function<void(qtui::FormView&)> act) {
    whenModal([act = std::move(act)](QWidget* window) {
        auto* view = window->findChild<qtui::FormView*>();
        ASSERT_NE(view, nullptr) << "a modal form was expected, not " << window->metaObject()->className();
        act(*view);
    });
}

void Journey::answerModal() {
    QWidget* modal = QApplication::activePopupWidget();
    if (!modal) modal = QApplication::activeModalWidget();
    // A box is often made where the last one stood: each is marked once answered.
    if (!modal || !modal->isVisible() || modal->property("journeyAnswered").toBool()) return;
    modal->setProperty("journeyAnswered", true);
    if (m_answers.empty()) {
        ADD_FAILURE() << "unexpected modal window " << modal->metaObject()->className() << " « "
                      << modal->windowTitle().toStdString() << " »";
        if (auto* box = qobject_cast<QMessageBox*>(modal)) {
            if (!box->buttons().isEmpty()) return box->buttons().last()->click();
        }
        modal->close();
        return;
    }
    // Answered from the window's own event loop, so that a window it opens in turn is watched too.
    QTimer::singleShot(0, modal, [modal, answer = std::move(m_answers.front())] { answer(modal); });
    m_answers.pop_front();
}

bool Journey::waitFor(const std::function<bool()>& done) {
    return QTest::qWaitFor(done, 5000);
}

std::string Journey::elsewhere(const std::string& file, const std::string& list,
                               const std::string& sentence) const {
    // Another process, as another workstation is: a connection of this process would share its locks,
    // and would not see what a lost lock does to the others.
    QProcess query;
    query.start(ZANDOREL_EXECUTABLE,
                {"query", "--db", QString::fromStdString(m_path), "--file", QString::fromStdString(file),
                 "--list", QString::fromStdString(list), QString::fromStdString(sentence)});
    if (!query.waitForFinished(60000) || query.exitCode() != 0) {
        ADD_FAILURE() << "zandorel query failed: " << query.readAllStandardError().toStdString();
        return {};
    }
    return query.readAllStandardOutput().toStdString();
}

}  // namespace journey
