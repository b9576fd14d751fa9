#include "qtui/transaction_guard.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QEvent>
#include <QWidget>
#include <cstdlib>
#include <iostream>

namespace qtui {

TransactionGuard::TransactionGuard(Probe probe, QObject* parent)
    : QObject(parent), m_probe(std::move(probe)) {
    m_onBreach = [](const std::string& where, const std::string& what) {
        std::cerr << "zandorel : transaction encore ouverte (" << what << ") au moment suivant : " << where
                  << ". Les écritures resteraient invisibles aux autres postes.\n";
        std::abort();
    };
    if (QAbstractEventDispatcher* loop = QAbstractEventDispatcher::instance()) {
        connect(loop, &QAbstractEventDispatcher::aboutToBlock, this,
                [this] { check("boucle d'événements au repos"); });
    }
    qApp->installEventFilter(this);
}

TransactionGuard::~TransactionGuard() {
    if (qApp) qApp->removeEventFilter(this);
}

void TransactionGuard::check(const char* where) {
    // A breach handler that shows something must not be judged again by the windows it opens.
    if (m_reporting) return;
    const std::string what = m_probe();
    if (what.empty()) return;
    m_reporting = true;
    m_onBreach(where, what);
    m_reporting = false;
}

bool TransactionGuard::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Show && watched->isWidgetType()) {
        auto* window = static_cast<QWidget*>(watched);
        if (window->isWindow() && (window->isModal() || window->windowType() == Qt::Popup))
            check(window->windowType() == Qt::Popup ? "menu surgissant" : "fenêtre modale");
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace qtui
