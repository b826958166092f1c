// The window system as the program sees it: dialogs that are described by data, message boxes, posted messages, a
// splash.
//
// A dialog is a template and a class with handlers (CDialog of shell/); a toolkit makes a window of the template and
// tells the handlers what the user does. Texts are in the code page; an ampersand stands before a mnemonic. All but
// PostMessage is called by one thread, the one that made the toolkit.
#pragma once

#include <chrono>
#include <cstdint>
#include <exception>
#include <memory>
#include <span>
#include <string_view>
#include <thread>
#include <type_traits>

#include "platform/text.h"

namespace delvane {

constexpr std::uint32_t WM_USER = 0x400;

// Ids of controls and results of dialogs and message boxes.
constexpr std::uint32_t IDOK = 1;
constexpr std::uint32_t IDCANCEL = 2;
constexpr std::uint32_t IDYES = 6;
constexpr std::uint32_t IDNO = 7;

// Something with a message queue of its own, a dialog for instance.
class CMessageTarget {
public:
    virtual ~CMessageTarget() = default;
    // Puts a message at the end of the target's queue and returns at once. Any thread may call it; messages of one
    // thread are handled in the order of the calls.
    virtual void PostMessage(std::uint32_t message, std::uint32_t wParam) = 0;
};

// The templates.

enum class EControlKind {
    kLabel,
    kGroup,
    kIcon,
    kText,  // read-only, to be selected and copied
    kButton,
    kDefaultButton,
    kCheck,
    kThreeState,  // moves through its three states by itself
    kCombo,       // free text with a list of suggestions
    kSortedList,  // one entry may be selected
    kItemList,    // items with a small image, any number of them selected
};

// In dialog units: a quarter of the average width of the font's characters, an eighth of their height. A toolkit makes
// the units larger where a text would not fit.
struct CPlace {
    int m_nLeft = 0;
    int m_nTop = 0;
    int m_nWidth = 0;
    int m_nHeight = 0;
};

struct CControlTemplate {
    EControlKind m_kind = EControlKind::kLabel;
    std::uint32_t m_id = 0;
    std::string_view m_text;
    CPlace m_place;
    std::span<const std::string_view> m_entries;  // of a combo box
};

struct CMenuEntry {
    std::uint32_t m_id = 0;   // 0: a separator
    std::string_view m_text;  // a key of its own behind a tab
};

struct CMenuPopup {
    std::string_view m_text;
    std::span<const CMenuEntry> m_entries;
};

// Tab goes through the controls in their order; a label gives its mnemonic to the control behind it.
struct CDialogTemplate {
    std::uint32_t m_id = 0;
    std::string_view m_title;
    int m_nWidth = 0;  // in dialog units
    int m_nHeight = 0;
    std::span<const CControlTemplate> m_controls;
    std::span<const CMenuPopup> m_menu;
};

// The windows.

enum class EControlEvent {
    kClicked,  // a button, a check box or a menu entry; Enter, Esc and the close box are IDOK and IDCANCEL
    kEdited,   // the text of a combo box, or its list was closed
    kSelected  // another entry of a combo box (its text is still the old one), a list or an item list
};

// What a window tells its dialog.
class CDialogEvents {
public:
    virtual ~CDialogEvents() = default;
    virtual void OnInitDialog() = 0;  // before the window appears
    virtual void OnControl(std::uint32_t id, EControlEvent event) = 0;
    virtual void OnMessage(std::uint32_t message, std::uint32_t wParam) = 0;
};

// The window of one dialog. Ids are those of its template. Its controls are there from OnInitDialog on; messages may be
// posted before.
class CDialogWindow : public CMessageTarget {
public:
    CDialogWindow(const CDialogTemplate& dialog, CDialogEvents& events) : m_template(dialog), m_events(events) {}

    // Shows the window and handles its events until End. Gives the result, or throws what the dialog has thrown.
    std::uint32_t RunModal() {
        Run();
        if (m_pFailure != nullptr) std::rethrow_exception(m_pFailure);
        return m_nResult;
    }
    void End(std::uint32_t result) {
        m_bEnded = true;
        m_nResult = result;
        Close();
    }

    virtual void SetText(std::uint32_t id, std::string_view text) = 0;
    virtual CString GetText(std::uint32_t id) const = 0;  // of a list the selected entry
    virtual void SetCheck(std::uint32_t id, int state) = 0;
    virtual int GetCheck(std::uint32_t id) const = 0;
    virtual void Enable(std::uint32_t id, bool enabled) = 0;  // the control, and the menu entry of its id
    virtual void AddEntry(std::uint32_t id, std::string_view text) = 0;

    // Of an item list, by index. The image is that of the drive strip.
    virtual void AddItem(std::uint32_t id, std::string_view text, std::uint32_t image, bool selected) = 0;
    virtual void SelectItem(std::uint32_t id, std::size_t index, bool selected) = 0;
    virtual bool IsItemSelected(std::uint32_t id, std::size_t index) const = 0;

protected:
    virtual void Run() = 0;  // until Close
    virtual void Close() = 0;

    // Tells the dialog, until it has ended: a window system still sends some events while the window goes. No exception
    // goes through a window system; the first one ends the dialog.
    template <class... Arguments>
    void Tell(void (CDialogEvents::*event)(Arguments...), std::type_identity_t<Arguments>... arguments) {
        if (m_bEnded) return;
        try {
            (m_events.*event)(arguments...);
        } catch (...) {
            m_pFailure = std::current_exception();
            End(IDCANCEL);
        }
    }
    bool HasEnded() const { return m_bEnded; }

    const CDialogTemplate& m_template;

private:
    CDialogEvents& m_events;
    bool m_bEnded = false;
    std::uint32_t m_nResult = IDCANCEL;
    std::exception_ptr m_pFailure;
};

enum class EMessageKind { kError, kWarning, kYesNo, kYesNoCancel };

class CToolkit {
public:
    virtual ~CToolkit() = default;

    virtual std::unique_ptr<CDialogWindow> CreateDialog(const CDialogTemplate& dialog, CDialogEvents& events) = 0;
    // Gives IDOK, IDYES, IDNO or IDCANCEL. A question may come while the program is busy, and its buttons want an
    // ordinary cursor.
    std::uint32_t ShowMessage(std::string_view text, std::string_view title, EMessageKind kind) {
        const bool isWaiting = m_bWaiting;
        SetWaiting(false);
        const std::uint32_t answer = ShowBox(text, title, kind);
        SetWaiting(isWaiting);
        return answer;
    }
    void SetWaiting(bool waiting) {
        m_bWaiting = waiting;
        ShowWaitCursor(waiting);
    }
    // A picture without a frame in the middle of the screen, painted at once, until it is hidden.
    virtual void ShowSplash() = 0;
    virtual void HideSplash() = 0;
    // Blocks the thread.
    virtual void Sleep(std::chrono::milliseconds time) { std::this_thread::sleep_for(time); }

protected:
    virtual std::uint32_t ShowBox(std::string_view text, std::string_view title, EMessageKind kind) = 0;
    virtual void ShowWaitCursor(bool shown) = 0;

private:
    bool m_bWaiting = false;
};

// The window system of this machine; null where there is none, and `problem` says why in a few words. Loaded when it is
// asked for.
std::unique_ptr<CToolkit> LoadToolkit(CString& problem);

}  // namespace delvane
