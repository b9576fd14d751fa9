#pragma once

#include <memory>

#include "shell/ctr_zandorel.h"
#include "support/memory_database.h"
#include "toolkit/headless_host.h"

namespace testing_support {

// A control on a private in-memory service, with a host that answers from the test's queues.
// The test writes the records it needs into `service`, then calls start().
struct ControlFixture {
    MemoryDatabase service;
    toolkit::HeadlessHost host;
    std::unique_ptr<control::Ctr_Zandorel> ctl = std::make_unique<control::Ctr_Zandorel>(host, service.clock);

    // Hands the control its three objects, in the host's order, and runs Init.
    control::Ctr_Zandorel& start(int rights = 2) {
        ctl->setTheClient(nullptr);
        ctl->setTheDatabase(service.db);
        ctl->setDroitsUtilisateur(std::make_shared<control::DroitsFixes>(rights));
        ctl->Init();
        return *ctl;
    }
};

}  // namespace testing_support
