#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "app/demo_data.h"
#include "qtui/main_window.h"
#include "qtui/qt_host.h"
#include "shell/ctr_zandorel.h"
#include "shell/droits.h"
#include "support/memory_database.h"

namespace testing_support {

// The planning screen in its real window, over the demo service of Monday 23/11/2026 (the day the demo's
// two-intervenant tournée runs), shown and started as the program does.
class DemoScreen : public ::testing::Test {
protected:
    void SetUp() override {
        service.clock.setToday(*base::Date::fromDmy(23, 11, 2026));
        app::writeDemoService(*service.db, app::DemoOptions{service.clock.today(), 40, 60, 1});
        ctl = std::make_unique<control::Ctr_Zandorel>(host, service.clock);
        ctl->setTheClient(nullptr);
        ctl->setTheDatabase(service.db);
        ctl->setDroitsUtilisateur(std::make_shared<control::DroitsFixes>(2));
        window = std::make_unique<qtui::MainWindow>(*ctl, host, qtui::Zoom(1.0));
        window->show();
        window->start();
    }

    // The widget that mirrors a control of the planning screen.
    template <typename W>
    W* widget(const toolkit::Control& c) {
        return dynamic_cast<W*>(window->view().widgetFor(&c));
    }

    MemoryDatabase service;
    qtui::QtHost host{qtui::Zoom(1.0)};
    std::unique_ptr<control::Ctr_Zandorel> ctl;
    std::unique_ptr<qtui::MainWindow> window;
};

}  // namespace testing_support
