#pragma once

#include <functional>
#include <iosfwd>
#include <memory>
#include <string>

#include "toolkit/printer.h"

namespace app {

// Makes the printer that a script names "pdf:PATH": its device name, and the file it writes.
using PdfPrinterMaker =
    std::function<std::unique_ptr<toolkit::Printer>(const std::string& device, const std::string& path)>;

struct PlayOptions {
    std::string db;
    std::string today;  // "dd/mm/yyyy", empty for the computer's date
    // The PDF files of "printer pdf:PATH". Without it such a printer, like every other one a script
    // names, only records what it is asked to draw.
    PdfPrinterMaker pdfPrinter = {};
};

// Plays a scenario script on the screen, headless, one command per line ("#" starts a comment; texts
// may be double-quoted). Dumps go to `out`, messages to `err`. Returns the exit code: 0 success, 1 when
// a failure of the system reached the host (the script goes on, as the screen does), 2 for a line the
// runner cannot read (with its number), 3 for a message box or modal form the script did not answer.
int runPlay(const PlayOptions& options, std::istream& script, std::ostream& out, std::ostream& err);

}  // namespace app
