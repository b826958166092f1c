// A window system without windows: a script presses the buttons, and the test reads what would stand on the screen.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <stdexcept>
#include <vector>

#include "platform/toolkit.h"

namespace delvane {

// Messages are handled first, then the next step of the script runs. A dialog whose script has ended waits for messages
// of another thread, and throws if none comes.
class CScriptedWindow : public CDialogWindow {
public:
    using CStep = std::function<void(CScriptedWindow&)>;

    CScriptedWindow(const CDialogTemplate& dialog, CDialogEvents& events, std::deque<CStep> script);

    void PostMessage(std::uint32_t message, std::uint32_t wParam) override;
    void SetText(std::uint32_t id, std::string_view text) override { m_texts.at(id) = text; }
    CString GetText(std::uint32_t id) const override { return m_texts.at(id); }
    void SetCheck(std::uint32_t id, int state) override { m_checks.at(id) = state; }
    int GetCheck(std::uint32_t id) const override { return m_checks.at(id); }
    void Enable(std::uint32_t id, bool enabled) override;
    void AddEntry(std::uint32_t id, std::string_view text) override;
    void AddItem(std::uint32_t id, std::string_view text, std::uint32_t image, bool selected) override;
    void SelectItem(std::uint32_t id, std::size_t index, bool selected) override;
    bool IsItemSelected(std::uint32_t id, std::size_t index) const override;

    // What a user does. Each throws where the control is not there or not enabled.
    void Click(std::uint32_t id);  // a check box moves on, a menu entry is chosen
    void Type(std::uint32_t id, std::string_view text);
    void Choose(std::uint32_t id, std::string_view entry);  // in a combo box or a list
    void ToggleItem(std::uint32_t id, std::size_t index);
    void PressClose() { Tell(&CDialogEvents::OnControl, IDCANCEL, EControlEvent::kClicked); }
    // Where there is no button for it, too.
    void Enter() { Tell(&CDialogEvents::OnControl, IDOK, EControlEvent::kClicked); }

    bool IsEnabled(std::uint32_t id) const { return !m_disabled.contains(id); }
    using CDialogWindow::HasEnded;

    struct CItem {
        CString m_strText;
        std::uint32_t m_nImage;
        bool m_bSelected;
    };
    CString m_strTitle;
    std::map<std::uint32_t, CString> m_texts;
    std::map<std::uint32_t, int> m_checks;
    std::map<std::uint32_t, std::vector<CString>> m_entries;
    std::vector<CItem> m_items;
    std::set<std::uint32_t> m_disabled;

protected:
    void Run() override;
    void Close() override {}

private:
    struct CMessage {
        std::uint32_t m_nMessage;
        std::uint32_t m_wParam;
    };
    void RequireEnabled(std::uint32_t id) const;

    std::deque<CStep> m_script;
    std::mutex m_mutex;  // of the messages
    std::condition_variable m_arrived;
    std::deque<CMessage> m_messages;
};

class CScriptedToolkit : public CToolkit {
public:
    std::unique_ptr<CDialogWindow> CreateDialog(const CDialogTemplate& dialog, CDialogEvents& events) override;
    std::uint32_t ShowBox(std::string_view text, std::string_view title, EMessageKind kind) override;
    void ShowWaitCursor(bool shown) override { m_bWaiting = shown; }
    void ShowSplash() override { m_bSplash = true; }
    void HideSplash() override { m_bSplash = false; }
    void Sleep(std::chrono::milliseconds time) override { m_slept += time; }

    // What the next dialog of that template does; each time it is shown it takes one script.
    void Script(std::uint32_t dialog, std::deque<CScriptedWindow::CStep> steps) {
        m_scripts[dialog].push_back(std::move(steps));
    }

    std::map<std::uint32_t, std::deque<std::deque<CScriptedWindow::CStep>>> m_scripts;
    std::deque<std::uint32_t> m_answers;   // to message boxes; IDOK when there is none
    std::vector<CString> m_messages;       // the texts of those that were shown
    std::vector<std::uint32_t> m_dialogs;  // the templates that were shown
    bool m_bWaiting = false;
    bool m_bSplash = false;
    std::chrono::milliseconds m_slept{0};
};

}  // namespace delvane
