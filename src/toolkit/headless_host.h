#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "toolkit/host.h"

namespace toolkit {

// A message box, modal form or menu that the script did not answer. The screen's state is kept; the
// runner stops with its own exit code.
class Unanswered : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The host without a screen: answers message boxes and modal forms from queues a script fills, and
// records every box shown.
class HeadlessHost : public Host {
public:
    struct Shown {
        std::string title, text;
        int style = 0;
        int answer = 0;
    };
    // What to do with a modal form once shown: the steps of the user until it closes.
    using DialogScript = std::function<void(Form&)>;

    void queueAnswer(int answer) { m_answers.push_back(answer); }
    void queueDialog(const std::string& formName, DialogScript script) {
        m_dialogs.push_back({formName, std::move(script)});
    }
    // Boxes shown since the last call, in order; the record is emptied.
    std::vector<Shown> takeShown();
    const std::vector<Shown>& shown() const { return m_shown; }
    int doEventsCount() const { return m_doEvents; }
    // Called at each DoEvents, so a test can look at the screen while a command waits.
    std::function<void()> onDoEvents;
    // Boxes with only an OK button need no answer: the script gets kOk for them.
    int MsgBox(const std::string& prompt, int buttons, const std::string& title) override;
    void ShowModal(Form& form) override;
    void PopupMenu(Menu& menu) override;
    void DoEvents() override;
    // The entry to choose in the next pop-up menu; empty to close it without choosing.
    void queueMenuChoice(const std::string& entry) { m_menuChoices.push_back(entry); }
    // Choices queued that no pop-up menu took yet; dropping them forgets them.
    std::size_t menuChoicesQueued() const { return m_menuChoices.size(); }
    void dropMenuChoices() { m_menuChoices.clear(); }

    // The answer to the next printer choice: the printer of that device name, with a count of copies.
    // A name the list does not hold is no answer. `queuePrinterCancel` gives up instead.
    void queuePrinter(const std::string& device, int copies) { m_printers.push_back({device, copies}); }
    void queuePrinterCancel() { m_printers.push_back({std::nullopt, 0}); }
    int ChoosePrinter(const std::vector<std::string>& devices, const std::string& paper,
                      int& copies) override;

    // Records the help asked for: page and title, in order.
    void ShowHelp(const std::string& page, const std::string& title) override {
        m_help.push_back({page, title});
    }
    const std::vector<std::pair<std::string, std::string>>& helpShown() const { return m_help; }

private:
    std::deque<int> m_answers;
    std::deque<std::pair<std::string, DialogScript>> m_dialogs;
    std::deque<std::string> m_menuChoices;
    struct PrinterAnswer {
        std::optional<std::string> device;  // none: the user gives up
        int copies = 1;
    };
    std::deque<PrinterAnswer> m_printers;
    std::vector<Shown> m_shown;
    std::vector<std::pair<std::string, std::string>> m_help;
    int m_doEvents = 0;
};

}  // namespace toolkit
