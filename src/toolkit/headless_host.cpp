#include "toolkit/headless_host.h"

#include <algorithm>

#include "toolkit/controls.h"
#include "toolkit/form.h"

namespace toolkit {

std::vector<HeadlessHost::Shown> HeadlessHost::takeShown() {
    std::vector<Shown> out;
    out.swap(m_shown);
    return out;
}

int HeadlessHost::MsgBox(const std::string& prompt, int buttons, const std::string& title) {
    int answer = msgbox::kOk;
    if ((buttons & 7) != msgbox::kOkOnly) {
        if (m_answers.empty()) {
            m_shown.push_back({title, prompt, buttons, 0});
            throw Unanswered("message sans réponse : « " + prompt + " »");
        }
        answer = m_answers.front();
        m_answers.pop_front();
    } else if (!m_answers.empty() && m_answers.front() == msgbox::kOk) {
        m_answers.pop_front();  // an explicit answer to an OK box is accepted too
    }
    m_shown.push_back({title, prompt, buttons, answer});
    return answer;
}

void HeadlessHost::ShowModal(Form& form) {
    if (m_dialogs.empty() || m_dialogs.front().first != form.name()) {
        throw Unanswered("formulaire sans réponse : " + form.name());
    }
    DialogScript script = std::move(m_dialogs.front().second);
    m_dialogs.pop_front();
    form.setLoaded(true);
    form.setVisible(true);
    script(form);
    if (form.isLoaded() && form.visible())
        throw Unanswered("le formulaire " + form.name() + " est resté ouvert");
}

void HeadlessHost::PopupMenu(Menu& menu) {
    if (m_menuChoices.empty()) throw Unanswered("menu sans choix : " + menu.name());
    std::string entry = m_menuChoices.front();
    m_menuChoices.pop_front();
    if (entry.empty()) return;
    for (Control* child : menu.children()) {
        if (child->name() == entry && child->effectivelyEnabled() && child->visible()) {
            child->fireClick();
            return;
        }
    }
    throw Unanswered("le menu " + menu.name() + " n'a pas d'entrée active " + entry);
}

int HeadlessHost::ChoosePrinter(const std::vector<std::string>& devices, const std::string& paper,
                                int& copies) {
    if (m_printers.empty()) throw Unanswered("choix d'imprimante sans réponse (papier « " + paper + " »)");
    PrinterAnswer answer = m_printers.front();
    m_printers.pop_front();
    if (!answer.device) return -1;
    auto it = std::find(devices.begin(), devices.end(), *answer.device);
    if (it == devices.end()) throw Unanswered("pas d'imprimante « " + *answer.device + " » dans la liste");
    copies = answer.copies;
    return static_cast<int>(it - devices.begin());
}

void HeadlessHost::DoEvents() {
    ++m_doEvents;
    if (onDoEvents) onDoEvents();
}

}  // namespace toolkit
