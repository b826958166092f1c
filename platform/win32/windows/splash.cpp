#include "platform/win32/windows/splash.h"

#include "platform/win32/windows/scaling.h"

namespace delvane {
namespace {

constexpr const wchar_t* kClass = L"DelvaneSplash";

}  // namespace

CSplashWindow::CSplashWindow(HWND parent) : m_picture(DpiOf(parent) > kPlainDpi ? kDoubleSplashBitmap : kSplashBitmap) {
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
    windowClass.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));  // IDC_ARROW
    windowClass.lpszClassName = kClass;
    RegisterClassW(&windowClass);  // fails harmlessly the second time
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    const HMONITOR nearest = MonitorFromWindow(parent, MONITOR_DEFAULTTOPRIMARY);
    GetMonitorInfoW(nearest, &monitor);
    const RECT& work = monitor.rcWork;
    const int dpi = DpiOf(parent);
    const int dotsPerInch = dpi > kPlainDpi ? 2 * kPlainDpi : kPlainDpi;  // of the picture
    const int width = MulDiv(m_picture.GetWidth(), dpi, dotsPerInch);
    const int height = MulDiv(m_picture.GetHeight(), dpi, dotsPerInch);
    m_hWnd = CreateWindowExW(0, kClass, L"", WS_POPUP | WS_VISIBLE, (work.left + work.right - width) / 2,
                             (work.top + work.bottom - height) / 2, width, height, parent, nullptr,
                             windowClass.hInstance, this);
    if (m_hWnd != nullptr) UpdateWindow(m_hWnd);
}

CSplashWindow::~CSplashWindow() {
    if (m_hWnd != nullptr) DestroyWindow(m_hWnd);
    if (m_hPalette != nullptr) DeleteObject(m_hPalette);
}

LRESULT CALLBACK CSplashWindow::OnSystemMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        auto* const creation = reinterpret_cast<CREATESTRUCTW*>(lParam);
        auto* const made = static_cast<CSplashWindow*>(creation->lpCreateParams);
        made->m_hWnd = window;
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
            if (reinterpret_cast<HWND>(wParam) == window) return FALSE;
            return self->RealizePalette(true) ? TRUE : FALSE;
        default:
            return DefWindowProcW(window, message, wParam, lParam);
    }
}

void CSplashWindow::Draw(HDC context) const {
    const HPALETTE before = m_hPalette != nullptr ? SelectPalette(context, m_hPalette, FALSE) : nullptr;
    if (before != nullptr) ::RealizePalette(context);
    RECT room{};
    GetClientRect(m_hWnd, &room);
    m_picture.StretchTo(context, room.right, room.bottom);
    if (before != nullptr) SelectPalette(context, before, FALSE);
}

// Whether a colour changed; the window is then painted again.
bool CSplashWindow::RealizePalette(bool isBackground) const {
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

}  // namespace delvane
