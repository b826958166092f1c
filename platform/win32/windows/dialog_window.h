// A dialog on the screen: real controls of the system, made of a template's data.
#pragma once

#include <deque>
#include <map>
#include <mutex>
#include <vector>

#include "platform/toolkit.h"
#include "platform/win32/windows.h"

namespace delvane {

// What the windows of a toolkit share.
struct CDesk {
    std::vector<HWND> m_windows;  // the open dialogs, the innermost last
    int m_nWaiting = 0;           // wait cursors

    HWND GetInnermost() const { return m_windows.empty() ? nullptr : m_windows.back(); }
};

class CWin32Window : public CDialogWindow {
public:
    CWin32Window(CDesk& desk, const CDialogTemplate& dialog, CDialogEvents& events);
    ~CWin32Window() override;

    void PostMessage(std::uint32_t message, std::uint32_t wParam, std::uint32_t lParam) override;
    std::uint32_t RunModal() override;
    void End(std::uint32_t result) override;

    void SetTitle(std::string_view title) override;
    void SetText(std::uint32_t id, std::string_view text) override;
    CString GetText(std::uint32_t id) const override;
    void SetCheck(std::uint32_t id, int state) override;
    int GetCheck(std::uint32_t id) const override;
    void Enable(std::uint32_t id, bool enabled) override;
    void EnableMenuEntry(std::uint32_t id, bool enabled) override;
    void AddEntry(std::uint32_t id, std::string_view text) override;
    void AddItem(std::uint32_t id, std::string_view text, std::uint32_t image, bool selected) override;
    void SelectItem(std::uint32_t id, std::size_t index, bool selected) override;
    bool IsItemSelected(std::uint32_t id, std::size_t index) const override;

private:
    struct CControl {
        const CControlTemplate* m_pTemplate;
        HWND m_hWnd;
    };
    struct CPosted {
        std::uint32_t m_nMessage;
        std::uint32_t m_wParam;
        std::uint32_t m_lParam;
    };

    static INT_PTR CALLBACK OnSystemMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    INT_PTR Handle(UINT message, WPARAM wParam, LPARAM lParam);
    void Create(HWND window);
    void AddControl(const CControlTemplate& control);
    void AddMenu();
    void Place();
    void ChangeFont(int dpi);
    SIZE GetWantedSize(const CControl& control, HDC context) const;
    HWND Get(std::uint32_t id) const { return m_controls[m_byId.at(id)].m_hWnd; }
    const CControl& GetControl(std::uint32_t id) const { return m_controls[m_byId.at(id)]; }
    void Tell(std::uint32_t id, EControlEvent event);
    bool OnCommand(std::uint32_t id, unsigned code);
    bool OnNotify(const NMHDR& notice);
    void OnHelpKey();
    void OnPosted();

    CDesk& m_desk;
    const CDialogTemplate& m_template;
    CDialogEvents& m_events;
    HWND m_hWnd = nullptr;
    HFONT m_hFont = nullptr;
    HMENU m_hMenu = nullptr;
    HIMAGELIST m_hImages = nullptr;
    int m_nDpi = 0;
    std::vector<CControl> m_controls;             // in the order of the template
    std::map<std::uint32_t, std::size_t> m_byId;  // those that have an id
    bool m_bEnded = false;
    std::uint32_t m_nResult = IDCANCEL;
    std::mutex m_mutex;  // guards the next two: any thread may post
    std::deque<CPosted> m_posted;
    HWND m_hTarget = nullptr;  // m_hWnd while the window can be posted to
};

}  // namespace delvane
