#pragma once

class QCoreApplication;

namespace qtui {

// Puts Qt's own texts in French: the file and print dialogs, the standard buttons, the context menus of
// the text boxes. Reads the catalogue "qtbase_fr" of Qt's translations folder (Debian's
// qt6-translations-l10n). False when it is missing or unreadable: Qt then speaks English, nothing else
// changes. The translator lives as long as `application`.
bool installerTraductionsQt(QCoreApplication& application);

}  // namespace qtui
