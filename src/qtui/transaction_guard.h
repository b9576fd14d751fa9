#pragma once

#include <QObject>
#include <functional>
#include <string>

namespace qtui {

// Watches that no store transaction, read or write, is open while the screen waits for its user: when
// the event loop is about to sleep, and when a modal box, dialog or pop-up menu opens. Work left open
// there hides the planner's writes from every other workstation until the program ends, and a kill
// loses them. Meant for debug and test builds: the default answer to a breach is to stop the program
// with a message that says where and what, so that the path that left it open is found at once.
class TransactionGuard : public QObject {
public:
    // Says what is open, or an empty text when nothing is.
    using Probe = std::function<std::string()>;
    // Told where the breach was seen ("boîte modale", "boucle d'événements au repos") and what was open.
    using Breach = std::function<void(const std::string& where, const std::string& what)>;

    explicit TransactionGuard(Probe probe, QObject* parent = nullptr);
    ~TransactionGuard() override;

    // Replaces the stop of the program, for a test that records breaches instead.
    void setOnBreach(Breach breach) { m_onBreach = std::move(breach); }
    // Checks now; `where` names the moment for the message.
    void check(const char* where);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    Probe m_probe;
    Breach m_onBreach;
    bool m_reporting = false;
};

}  // namespace qtui
