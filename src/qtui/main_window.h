#pragma once

#include <QMainWindow>
#include <utility>
#include <vector>

#include "qtui/form_view.h"
#include "qtui/qt_host.h"

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

    control::Ctr_Zandorel& m_ctl;
    QtHost& m_host;
    FormView* m_view;
    std::vector<std::pair<QAction*, int>> m_zooms;  // entry, percent
    QAction* m_undo = nullptr;
    QAction* m_redo = nullptr;
};

}  // namespace qtui
