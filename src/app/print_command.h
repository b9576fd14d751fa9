#pragma once

#include <memory>
#include <string>

#include "toolkit/printer.h"

class QGuiApplication;

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

// The PDF files that `zandorel play` prints to. Qt starts, on its offscreen platform unless
// QT_QPA_PLATFORM says otherwise, when the first file is asked for, and stops with this object, which
// must outlive the printers it made. `argc` and `argv` are the program's own.
class PlayPdfFiles {
public:
    PlayPdfFiles(int& argc, char** argv);
    ~PlayPdfFiles();
    PlayPdfFiles(const PlayPdfFiles&) = delete;
    PlayPdfFiles& operator=(const PlayPdfFiles&) = delete;

    // A printer named `device` that writes each document to the file `path`.
    std::unique_ptr<toolkit::Printer> make(const std::string& device, const std::string& path);

private:
    int& m_argc;
    char** m_argv;
    std::unique_ptr<QGuiApplication> m_application;
};

}  // namespace app
