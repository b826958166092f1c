// The window system of Windows itself.
#include <utility>

#include "platform/win32/machine/system.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows/dialog_window.h"
#include "platform/win32/windows/splash.h"

namespace delvane {
namespace {

class CWin32Toolkit : public CToolkit {
public:
    std::unique_ptr<CDialogWindow> CreateDialog(const CDialogTemplate& dialog, CDialogEvents& events) override {
        return std::make_unique<CWin32Window>(m_desk, dialog, events);
    }

    std::uint32_t ShowMessage(std::string_view text, std::string_view title, EMessageButtons buttons,
                              EMessageIcon icon) override {
        UINT form = icon == EMessageIcon::kQuestion  ? MB_ICONQUESTION
                    : icon == EMessageIcon::kWarning ? MB_ICONWARNING
                                                     : MB_ICONERROR;
        if (buttons == EMessageButtons::kYesNo) form |= MB_YESNO;
        if (buttons == EMessageButtons::kYesNoCancel) form |= MB_YESNOCANCEL;
        // A question may come while the program is busy, and wants an ordinary cursor.
        const int waiting = std::exchange(m_desk.m_nWaiting, 0);
        ShowCursorForm();
        const int answer =
            MessageBoxW(m_desk.GetInnermost(), Widen(text).c_str(), Widen(title).c_str(), form | MB_SETFOREGROUND);
        m_desk.m_nWaiting = waiting;
        ShowCursorForm();
        return static_cast<std::uint32_t>(answer);
    }

    void BeginWaitCursor() override {
        ++m_desk.m_nWaiting;
        ShowCursorForm();
    }
    void EndWaitCursor() override {
        --m_desk.m_nWaiting;
        ShowCursorForm();
    }

    bool ShowSplash() override {
        m_pSplash = std::make_unique<CSplashWindow>(m_desk.GetInnermost());
        if (!*m_pSplash) m_pSplash.reset();
        return m_pSplash != nullptr;
    }
    void HideSplash() override { m_pSplash.reset(); }
    void Sleep(std::uint32_t milliseconds) override { ::Sleep(milliseconds); }

private:
    void ShowCursorForm() const {
        constexpr int kArrow = 32512;
        constexpr int kWait = 32514;
        SetCursor(LoadCursorW(nullptr, MAKEINTRESOURCEW(m_desk.m_nWaiting != 0 ? kWait : kArrow)));
    }

    CDesk m_desk;
    std::unique_ptr<CSplashWindow> m_pSplash;
};

// Whether somebody could see a window: a service has a station of its own, and nobody looks at it.
bool HasVisibleStation() {
    USEROBJECTFLAGS flags{};
    const HWINSTA station = GetProcessWindowStation();
    if (GetUserObjectInformationW(station, UOI_FLAGS, &flags, sizeof flags, nullptr) == 0) return true;
    return (flags.dwFlags & WSF_VISIBLE) != 0;
}

}  // namespace

std::unique_ptr<CToolkit> LoadToolkit(CString& problem) {
    if (!HasVisibleStation()) {
        problem = "the program was started where nobody can see a window, as a service for instance";
        return nullptr;
    }
    const HWND trial =
        CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
    if (trial == nullptr) {
        problem = "the system makes none, as where there is no display (error " + std::to_string(GetLastError()) + ")";
        return nullptr;
    }
    DestroyWindow(trial);
    INITCOMMONCONTROLSEX controls{sizeof controls, ICC_STANDARD_CLASSES | ICC_LISTVIEW_CLASSES};
    if (auto* const init = FindOperation<decltype(InitCommonControlsEx)>(GetCommonControls(), "InitCommonControlsEx")) {
        init(&controls);
    }
    return std::make_unique<CWin32Toolkit>();
}

}  // namespace delvane
