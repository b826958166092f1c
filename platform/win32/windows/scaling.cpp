#include "platform/win32/windows/scaling.h"

#include "platform/win32/machine/system.h"

namespace delvane {
namespace {

template <class Operation>
Operation* Find(const char* name) {
    return FindOperation<Operation>(GetModuleHandleA("user32.dll"), name);
}

int SystemDpi() {
    const HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSY);
    ReleaseDC(nullptr, screen);
    return dpi > 0 ? dpi : kPlainDpi;
}

}  // namespace

int DpiOf(HWND window) {
    static auto* const getDpi = Find<UINT WINAPI(HWND)>("GetDpiForWindow");
    const UINT dpi = getDpi != nullptr ? getDpi(window) : 0;
    return dpi != 0 ? static_cast<int>(dpi) : SystemDpi();
}

HFONT MakeMessageFont(int dpi) {
    static auto* const getMetrics = Find<BOOL WINAPI(UINT, UINT, void*, UINT, UINT)>("SystemParametersInfoForDpi");
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    if (getMetrics == nullptr ||
        getMetrics(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0, static_cast<UINT>(dpi)) == 0) {
        SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
        metrics.lfMessageFont.lfHeight = MulDiv(metrics.lfMessageFont.lfHeight, dpi, SystemDpi());
    }
    return CreateFontIndirectW(&metrics.lfMessageFont);
}

SIZE WindowSizeOf(SIZE client, HWND window, bool hasMenu, int dpi) {
    static auto* const adjust = Find<BOOL WINAPI(RECT*, DWORD, BOOL, DWORD, UINT)>("AdjustWindowRectExForDpi");
    RECT frame{0, 0, client.cx, client.cy};
    const auto style = static_cast<DWORD>(GetWindowLongPtrW(window, GWL_STYLE));
    const auto extended = static_cast<DWORD>(GetWindowLongPtrW(window, GWL_EXSTYLE));
    if (adjust == nullptr || adjust(&frame, style, hasMenu, extended, static_cast<UINT>(dpi)) == 0) {
        AdjustWindowRectEx(&frame, style, hasMenu, extended);
    }
    return {frame.right - frame.left, frame.bottom - frame.top};
}

void SwitchOwnScalingOff(HWND dialog) {
    constexpr int kAll = 1;
    if (auto* const set = Find<BOOL WINAPI(HWND, int, int)>("SetDialogDpiChangeBehavior")) set(dialog, kAll, kAll);
}

}  // namespace delvane
