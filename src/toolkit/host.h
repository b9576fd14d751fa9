#pragma once

#include <string>
#include <vector>

namespace toolkit {

class Form;
class Menu;
class Observer;

// Buttons and icon of a message box, and its answers, with the toolkit's numbers.
namespace msgbox {
inline constexpr int kOkOnly = 0;
inline constexpr int kYesNoCancel = 3;
inline constexpr int kYesNo = 4;
inline constexpr int kQuestion = 32;
inline constexpr int kExclamation = 48;
// The bits that hold the icon: 32 and 48 share one.
inline constexpr int kIcone = 0x70;
inline constexpr int kOk = 1;
inline constexpr int kCancel = 2;
inline constexpr int kYes = 6;
inline constexpr int kNo = 7;
}  // namespace msgbox

// What the screen asks of whatever shows it: message boxes, modal forms, pop-up menus, the printer
// choice, the yield to the event queue, and the screen's mouse pointer. The Qt adapter shows real
// windows and waits for the user; the headless host answers from a script.
class Host {
public:
    virtual ~Host() = default;

    // Shows a message and returns the answer (msgbox::kOk, kYes, kNo, kCancel).
    virtual int MsgBox(const std::string& prompt, int buttons, const std::string& title) = 0;
    // Shows the form and returns when it is hidden or unloaded.
    virtual void ShowModal(Form& form) = 0;
    // Opens a pop-up menu at the pointer; an entry chosen fires its Click before this returns.
    virtual void PopupMenu(Menu& menu) = 0;
    // Lets waiting events run once.
    virtual void DoEvents() = 0;
    // Shows the printers by device name, for a paper (empty for any), and returns the number of the one
    // chosen, or -1 when the user gave up; `copies` then holds the count asked for, and is left alone
    // on -1. A host that has no such choice gives up.
    virtual int ChoosePrinter(const std::vector<std::string>& /*devices*/, const std::string& /*paper*/,
                              int& /*copies*/) {
        return -1;
    }

    // Opens a help page (a file name of the installed help) in a window of that title; returns at once.
    // A host with no help shows nothing.
    virtual void ShowHelp(const std::string& /*page*/, const std::string& /*title*/) {}

    // Screen.MousePointer: 0 default, 11 hourglass.
    int screenMousePointer() const { return m_screenPointer; }
    void setScreenMousePointer(int pointer) {
        if (pointer == m_screenPointer) return;
        m_screenPointer = pointer;
        screenMousePointerChanged(pointer);
    }

protected:
    virtual void screenMousePointerChanged(int) {}

private:
    int m_screenPointer = 0;
};

}  // namespace toolkit
