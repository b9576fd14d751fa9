#pragma once

#include <QMainWindow>

#include "qtui/form_view.h"
#include "qtui/qt_host.h"

namespace control {
class Ctr_Zandorel;
}

namespace qtui {

// The host's window: it carries the control, offers the zoom, and closes when the control says the
// user has left (W_Sortir).
class MainWindow : public QMainWindow {
public:
    MainWindow(control::Ctr_Zandorel& ctl, QtHost& host, Zoom zoom);
    FormView& view() const { return *m_view; }
    // Runs the control's start-up, showing a failure as any other.
    void start();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void setZoom(double factor);
    void leaveIfAsked();

    control::Ctr_Zandorel& m_ctl;
    QtHost& m_host;
    FormView* m_view;
};

}  // namespace qtui
