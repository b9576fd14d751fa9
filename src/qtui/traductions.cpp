#include "qtui/traductions.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QTranslator>

namespace qtui {

bool installerTraductionsQt(QCoreApplication& application) {
    auto* traducteur = new QTranslator(&application);
    if (!traducteur->load(QStringLiteral("qtbase_fr"), QLibraryInfo::path(QLibraryInfo::TranslationsPath)) ||
        !QCoreApplication::installTranslator(traducteur)) {
        delete traducteur;
        return false;
    }
    return true;
}

}  // namespace qtui
