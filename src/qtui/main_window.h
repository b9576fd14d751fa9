#pragma once

#include <QMainWindow>
#include <utility>
#include <vector>

#include "qtui/form_view.h"
#include "qtui/qt_host.h"

class QKeyEvent;

namespace control {
class Ctr_Zandorel;
}

namespace qtui {

// The host's window: it carries the control, and closes when the control says the user has left
// (W_Sortir). It can be resized, and the screen's zoom follows its size; the zoom entries of its menu
// give the window the size of that zoom.
class MainWindow : public QMainWindow {
public:
    MainWindow(control::Ctr_Zandorel& ctl, QtHost& host, Zoom zoom);
    FormView& view() const { return *m_view; }
    // Runs the control's start-up, showing a failure as any other.
    void start();

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void setZoom(double factor);
    void zoomFollowed(Zoom zoom);
    void leaveIfAsked();
    // The "Édition" menu: undo and redo of moves, enabled only when the screen has one to undo or redo.
    void addEditMenu();
    void updateEditActions();
    // The title with "&" before its first letter that no menu of the bar underlines yet, for its Alt key.
    QString withFreeLetter(const QString& title) const;
    // The menu of the bar whose underlined letter, accents aside, is the key held with Alt alone; null
    // for any other key.
    QAction* menuOfKey(const QKeyEvent& key) const;
    // True for the widgets of this window and of the windows it owns (the week window).
    bool ownsWindowOf(const QWidget* widget) const;
    // Opens the menu of an Alt key that reached a widget of this window or of a window it owns; false,
    // the key left alone, when no menu has that letter or a modal window or a menu is open.
    bool openMenuOfKey(QWidget* widget, const QKeyEvent& key);

    control::Ctr_Zandorel& m_ctl;
    QtHost& m_host;
    FormView* m_view;
    std::vector<std::pair<QAction*, int>> m_zooms;  // entry, percent
    QAction* m_undo = nullptr;
    QAction* m_redo = nullptr;
};

}  // namespace qtui
