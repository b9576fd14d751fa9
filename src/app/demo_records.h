#pragma once

#include "app/demo_data.h"
#include "app/demo_model.h"

namespace mvdb {
class Store;
}

namespace app {

// Writes every record of the service to the store, file by file, and counts them. The caller holds
// the transaction.
DemoSummary writeDemoRecords(mvdb::Store& store, const DemoService& service);

}  // namespace app
