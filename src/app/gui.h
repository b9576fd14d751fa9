#pragma once

#include <string>

namespace app {

struct GuiOptions {
    std::string db;     // empty: the user's own database, made with the demo service when absent
    std::string today;  // "dd/mm/yyyy", empty for the computer's date
    int rights = 2;
    double zoom = 0;  // 0: chosen from the screen's size
};

// Opens the planning screen in its window and runs until the user leaves. Returns the exit code.
int runGui(const GuiOptions& options, int argc, char** argv);

// The user's own database: the data folder's zandorel.db.
std::string defaultDatabasePath();

}  // namespace app
