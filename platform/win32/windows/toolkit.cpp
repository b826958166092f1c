// The window system of Windows itself.
#include "platform/win32/system.h"
#include "platform/win32/windows/dialog_window.h"
#include "platform/win32/windows/drawing.h"

namespace delvane {
namespace {

// The picture that stands on the screen while a visible run starts.
class CSplashWindow {
public:
    // Shown and painted at once, in the middle of the work area of the monitor nearest to `parent`, which may be null,
    // and at its scaling.
    explicit CSplashWindow(HWND parent)
        : m_nDpi(DpiOf(parent)), m_picture(m_nDpi > kPlainDpi ? kDoubleSplashBitmap : kSplashBitmap) {
        if (!m_picture) return;
        const HDC screen = GetDC(nullptr);
        const bool hasPalette = (GetDeviceCaps(screen, RASTERCAPS) & RC_PALETTE) != 0;
        ReleaseDC(nullptr, screen);
        if (hasPalette) {
            m_hPalette = m_picture.MakePalette();
            if (m_hPalette == nullptr) return;
        }
        WNDCLASSW windowClass{};
        windowClass.lpfnWndProc = OnSystemMessage;
        windowClass.hInstance = GetModuleHandleW(nullptr);
        windowClass.hCursor = LoadCursorForm(false);
        windowClass.lpszClassName = L"DelvaneSplash";
        RegisterClassW(&windowClass);  // fails harmlessly the second time
        const RECT work = WorkAreaOf(parent);
        const int dotsPerInch = m_nDpi > kPlainDpi ? 2 * kPlainDpi : kPlainDpi;  // of the picture
        const int width = MulDiv(m_picture.GetWidth(), m_nDpi, dotsPerInch);
        const int height = MulDiv(m_picture.GetHeight(), m_nDpi, dotsPerInch);
        m_hWnd = CreateWindowExW(0, windowClass.lpszClassName, L"", WS_POPUP | WS_VISIBLE,
                                 (work.left + work.right - width) / 2, (work.top + work.bottom - height) / 2, width,
                                 height, parent, nullptr, windowClass.hInstance, this);
        if (m_hWnd != nullptr) UpdateWindow(m_hWnd);
    }
    ~CSplashWindow() {
        if (m_hWnd != nullptr) DestroyWindow(m_hWnd);
        if (m_hPalette != nullptr) DeleteObject(m_hPalette);
    }
    CSplashWindow(const CSplashWindow&) = delete;
    CSplashWindow& operator=(const CSplashWindow&) = delete;

private:
    static LRESULT CALLBACK OnSystemMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_NCCREATE) {
            auto* const made = reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams;
            static_cast<CSplashWindow*>(made)->m_hWnd = window;
            SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(made));
        }
        const auto* const self = reinterpret_cast<const CSplashWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        switch (message) {
            case WM_PAINT: {
                PAINTSTRUCT paint{};
                self->Draw(BeginPaint(window, &paint));
                EndPaint(window, &paint);
                return 0;
            }
            case WM_QUERYNEWPALETTE:
                return self->RealizePalette(false) ? TRUE : FALSE;
            case WM_PALETTECHANGED:
                return reinterpret_cast<HWND>(wParam) != window && self->RealizePalette(true) ? TRUE : FALSE;
            default:
                return DefWindowProcW(window, message, wParam, lParam);
        }
    }

    void Draw(HDC context) const {
        const HPALETTE before = m_hPalette != nullptr ? SelectPalette(context, m_hPalette, FALSE) : nullptr;
        if (before != nullptr) ::RealizePalette(context);
        RECT room{};
        GetClientRect(m_hWnd, &room);
        m_picture.StretchTo(context, room.right, room.bottom);
        if (before != nullptr) SelectPalette(context, before, FALSE);
    }

    // Whether a colour changed; the window is then painted again.
    bool RealizePalette(bool isBackground) const {
        if (m_hPalette == nullptr) return false;
        const HDC context = GetDC(m_hWnd);
        const HPALETTE before = SelectPalette(context, m_hPalette, isBackground ? TRUE : FALSE);
        const UINT changed = ::RealizePalette(context);
        SelectPalette(context, before, TRUE);
        ReleaseDC(m_hWnd, context);
        if (changed == 0 || changed == GDI_ERROR) return false;
        InvalidateRect(m_hWnd, nullptr, TRUE);
        return true;
    }

    int m_nDpi;
    CDib m_picture;
    HPALETTE m_hPalette = nullptr;  // on a display that works with one
    HWND m_hWnd = nullptr;
};

class CWin32Toolkit : public CToolkit {
public:
    std::unique_ptr<CDialogWindow> CreateDialog(const CDialogTemplate& dialog, CDialogEvents& events) override {
        return MakeDialogWindow(m_desk, dialog, events);
    }
    void ShowSplash() override { m_pSplash = std::make_unique<CSplashWindow>(m_desk.GetInnermost()); }
    void HideSplash() override { m_pSplash.reset(); }

protected:
    std::uint32_t ShowBox(std::string_view text, std::string_view title, EMessageKind kind) override {
        const UINT form = kind == EMessageKind::kError     ? MB_ICONERROR
                          : kind == EMessageKind::kWarning ? MB_ICONWARNING
                          : kind == EMessageKind::kYesNo   ? MB_ICONQUESTION | MB_YESNO
                                                           : MB_ICONQUESTION | MB_YESNOCANCEL;
        return static_cast<std::uint32_t>(
            MessageBoxW(m_desk.GetInnermost(), Widen(text).c_str(), Widen(title).c_str(), form | MB_SETFOREGROUND));
    }
    void ShowWaitCursor(bool shown) override {
        m_desk.m_bWaiting = shown;
        SetCursor(LoadCursorForm(shown));
    }

private:
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
    const INITCOMMONCONTROLSEX controls{sizeof controls, ICC_STANDARD_CLASSES | ICC_LISTVIEW_CLASSES};
    if (auto* const init = FindOperation<decltype(InitCommonControlsEx)>(kCommonControls, "InitCommonControlsEx")) {
        init(&controls);
    }
    return std::make_unique<CWin32Toolkit>();
}

}  // namespace delvane
