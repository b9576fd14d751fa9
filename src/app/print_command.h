#pragma once

#include <string>

namespace app {

struct PrintOptions {
    std::string db;
    std::string date;     // "dd/mm/yyyy"
    std::string tournee;  // three characters; empty for every tournée of the date
    std::string out;      // the PDF file
    std::string today;    // "dd/mm/yyyy", empty for the computer's date
};

// `zandorel print`: the report that Cmd_Imprimer prints, written to a PDF file without a screen (Qt's
// offscreen platform unless QT_QPA_PLATFORM says otherwise). The database is only read: the start of
// the screen, with its purge, is not run. Fails with base::Error for a code that is no tournée, a day
// with nothing to print (the screen's message), or a file that cannot be written.
void runPrint(const PrintOptions& options, int argc, char** argv);

}  // namespace app
