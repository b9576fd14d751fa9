#include "qtui/main_window.h"

#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QMenuBar>
#include <QTimer>

#include "base/text.h"
#include "qtui/week_window.h"
#include "shell/ctr_zandorel.h"
#include "toolkit/input.h"

namespace qtui {
namespace {

// The letter a character stands for when it opens a menu, accents aside: the "É" of "Édition" is
// reached by Alt+E as well as by Alt+É.
std::string menuLetter(QChar c) {
    return c.isLetterOrNumber() ? base::searchKey(QString(c).toStdString()) : std::string();
}

// The character that "&" underlines in a menu's title ("&&" is a plain "&"); null when none is.
QChar underlined(const QString& title) {
    for (qsizetype i = 0; i + 1 < title.size(); ++i) {
        if (title[i] != '&') continue;
        if (title[i + 1] != '&') return title[i + 1];
        ++i;
    }
    return {};
}

}  // namespace

MainWindow::MainWindow(control::Ctr_Zandorel& ctl, QtHost& host, Zoom zoom) : m_ctl(ctl), m_host(host) {
    setWindowTitle("Gestion des tournées SSIAD");
    m_view = new FormView(ctl.UserControl, zoom, this);
    m_view->setSizing(FormView::Sizing::FollowsSize);
    m_view->onZoomFollowed = [this](Zoom followed) { zoomFollowed(followed); };
    setCentralWidget(m_view);
    m_view->afterInput = [this] {
        updateEditActions();
        leaveIfAsked();
    };
    m_host.setWindow(this);

    addEditMenu();
    QMenu* display = menuBar()->addMenu("&Affichage");
    connect(display->addAction("Semaine"), &QAction::triggered, this,
            [this] { WeekWindow::showFor(m_ctl, *m_view, this); });
    display->addSeparator();
    auto* zooms = new QActionGroup(this);
    // A size of the user's own is none of the entries.
    zooms->setExclusionPolicy(QActionGroup::ExclusionPolicy::ExclusiveOptional);
    for (int percent : {100, 125, 150, 175, 200, 250}) {
        QAction* action = display->addAction(QString("Zoom %1 %").arg(percent));
        action->setCheckable(true);
        zooms->addAction(action);
        m_zooms.emplace_back(action, percent);
        connect(action, &QAction::triggered, this, [this, percent] { setZoom(percent / 100.0); });
    }
    zoomFollowed(zoom);
    QMenu* service = menuBar()->addMenu("&Service");
    const std::pair<const char*, control::EcranServiceType> ecrans[] = {
        {"Aidés", control::EcranServiceType::Aides},
        {"Accords", control::EcranServiceType::Accords},
        {"Protocoles", control::EcranServiceType::Protocoles},
        {"Soins", control::EcranServiceType::Soins},
        {"Éléments de gestion", control::EcranServiceType::ElementsGestion},
        {"Tournées", control::EcranServiceType::Tournees}};
    for (const auto& [texte, type] : ecrans) {
        connect(service->addAction(texte), &QAction::triggered, this,
                [this, type = type] { m_view->forward([this, type] { m_ctl.ouvrirEcranService(type); }); });
    }
    QMenu* help = menuBar()->addMenu(withFreeLetter(QString::fromStdString(ctl.Mnu_Aide.caption())));
    QAction* contents = help->addAction(QString::fromStdString(ctl.Mnu_Sommaire.caption()));
    connect(contents, &QAction::triggered, this,
            [this] { m_view->forward([this] { m_ctl.Mnu_Sommaire.fireClick(); }); });
    // The zoom asked for, not the two thirds of the screen that Qt gives a new window at most.
    resize(m_view->sizeHint() + QSize(0, menuBar()->sizeHint().height()));
}

void MainWindow::start() {
    m_view->forward([this] { m_ctl.Init(); });
}

void MainWindow::setZoom(double factor) {
    const Zoom zoom(factor);
    m_view->setZoom(zoom);
    zoomFollowed(zoom);
    if (isMaximized() || isFullScreen()) showNormal();
    // The window takes the size of the screen at that zoom; what is around the screen stays as it is.
    resize(size() - m_view->size() + m_view->sizeHint());
}

void MainWindow::zoomFollowed(Zoom zoom) {
    m_host.setZoom(zoom);
    for (auto& [action, percent] : m_zooms)
        action->setChecked(std::abs(zoom.factor() * 100 - percent) < 0.5);
}

void MainWindow::addEditMenu() {
    QMenu* edit = menuBar()->addMenu("&Édition");
    m_undo = edit->addAction("Annuler le déplacement");
    m_undo->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Z));
    m_redo = edit->addAction("Rétablir le déplacement");
    m_redo->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Y));
    connect(m_undo, &QAction::triggered, this, [this] { m_view->forward([this] { m_ctl.Annuler(); }); });
    connect(m_redo, &QAction::triggered, this, [this] { m_view->forward([this] { m_ctl.Retablir(); }); });
    connect(edit, &QMenu::aboutToShow, this, [this] { updateEditActions(); });
    updateEditActions();
    // The boxes of the screen take Ctrl+Z for their own text; while a move can be undone or redone, the
    // keys are the window's, whichever control has the focus. The filter also takes the Alt keys of the
    // menus that Qt leaves to the boxes.
    qApp->installEventFilter(this);
}

void MainWindow::updateEditActions() {
    m_undo->setEnabled(m_ctl.peutAnnuler());
    m_redo->setEnabled(m_ctl.peutRetablir());
}

QString MainWindow::withFreeLetter(const QString& title) const {
    std::vector<std::string> taken;
    for (const QAction* menu : menuBar()->actions())
        taken.push_back(menuLetter(underlined(menu->text())));
    for (qsizetype i = 0; i < title.size(); ++i) {
        const std::string letter = menuLetter(title[i]);
        if (!letter.empty() && std::find(taken.begin(), taken.end(), letter) == taken.end())
            return QString(title).insert(i, '&');
    }
    return title;
}

QAction* MainWindow::menuOfKey(const QKeyEvent& key) const {
    if (key.modifiers() != Qt::AltModifier || key.key() <= 0 || key.key() > 0xFFFF) return nullptr;
    const std::string letter = menuLetter(QChar(key.key()));
    if (letter.empty()) return nullptr;
    for (QAction* menu : menuBar()->actions()) {
        if (menu->menu() && menu->isEnabled() && menu->isVisible() &&
            menuLetter(underlined(menu->text())) == letter)
            return menu;
    }
    return nullptr;
}

bool MainWindow::ownsWindowOf(const QWidget* widget) const {
    for (const QWidget* w = widget->window(); w;
         w = w->parentWidget() ? w->parentWidget()->window() : nullptr) {
        if (w == this) return true;
    }
    return false;
}

bool MainWindow::openMenuOfKey(QWidget* widget, const QKeyEvent& key) {
    // Qt opens a menu by its Alt key only while this window is the active one, and only for the very
    // character underlined. The key comes to a box instead when the window is not active (a desktop
    // without window manager never makes it so), when it is typed in the week window, or when it is the
    // letter without its accent. A modal window keeps the menus behind it closed, as Qt does.
    QAction* menu = menuOfKey(key);
    if (!menu || QApplication::activeModalWidget() || QApplication::activePopupWidget() ||
        !ownsWindowOf(widget))
        return false;
    if (!isActiveWindow()) {
        // At once, not when the window system answers: the bar keeps the widget that has the focus now,
        // to give it back when Escape leaves the menus, and an inactive window has none. Raised too, so
        // that the menu hangs from a bar in sight, not over the week window.
        raise();
        activateWindow();
        QApplication::setActiveWindow(this);
    }
    menuBar()->setActiveAction(menu);
    // As Qt's own Alt key does: the first entry is lit, for the arrows and Enter.
    for (QAction* entry : menu->menu()->actions()) {
        if (entry->isEnabled() && entry->isVisible() && !entry->isSeparator()) {
            menu->menu()->setActiveAction(entry);
            break;
        }
    }
    return true;
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
    auto* widget = qobject_cast<QWidget*>(watched);
    if (!widget) return false;
    if (event->type() == QEvent::KeyPress) return openMenuOfKey(widget, *static_cast<QKeyEvent*>(event));
    if (event->type() != QEvent::ShortcutOverride) return false;
    if (widget != m_view && !m_view->isAncestorOf(widget)) return false;
    const auto* key = static_cast<QKeyEvent*>(event);
    const QKeySequence pressed(key->keyCombination());
    for (const QAction* action : {m_undo, m_redo}) {
        if (action->isEnabled() && pressed == action->shortcut()) {
            event->ignore();
            return true;
        }
    }
    return false;
}

void MainWindow::leaveIfAsked() {
    if (m_ctl.W_Sortir) QTimer::singleShot(0, this, [this] { close(); });
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (m_ctl.W_Sortir) return event->accept();
    // The close box leaves as the screen's own button does, with its question on unsaved changes.
    toolkit::CommandButton& sortir = m_ctl.Cmd_Sortir;
    if (!sortir.Click || !sortir.effectivelyEnabled() || !sortir.effectivelyVisible() ||
        !m_ctl.UserControl.enabled()) {
        return event->accept();
    }
    m_view->forward([&] { toolkit::input::click(sortir); });
    if (m_ctl.W_Sortir) {
        event->accept();
    } else {
        event->ignore();
    }
}

}  // namespace qtui
