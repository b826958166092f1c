#include "platform/win32/windows/drawing.h"

#include <vector>

#include "platform/win32/system.h"

namespace delvane {
namespace {

int SystemDpi() {
    const HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSY);
    ReleaseDC(nullptr, screen);
    return dpi > 0 ? dpi : kPlainDpi;
}

}  // namespace

int DpiOf(HWND window) {
    static auto* const getDpi = FindOperation<UINT WINAPI(HWND)>("user32.dll", "GetDpiForWindow");
    const UINT dpi = getDpi != nullptr ? getDpi(window) : 0;
    return dpi != 0 ? static_cast<int>(dpi) : SystemDpi();
}

HFONT MakeMessageFont(int dpi) {
    static auto* const getMetrics =
        FindOperation<BOOL WINAPI(UINT, UINT, void*, UINT, UINT)>("user32.dll", "SystemParametersInfoForDpi");
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
    static auto* const adjust =
        FindOperation<BOOL WINAPI(RECT*, DWORD, BOOL, DWORD, UINT)>("user32.dll", "AdjustWindowRectExForDpi");
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
    if (auto* const set = FindOperation<BOOL WINAPI(HWND, int, int)>("user32.dll", "SetDialogDpiChangeBehavior"))
        set(dialog, kAll, kAll);
}

RECT WorkAreaOf(HWND window) {
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    GetMonitorInfoW(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &monitor);
    return monitor.rcWork;
}

HCURSOR LoadCursorForm(bool waiting) {
    constexpr int kArrow = 32512;
    constexpr int kWait = 32514;
    return LoadCursorW(nullptr, MAKEINTRESOURCEW(waiting ? kWait : kArrow));
}

CDib::CDib(WORD number) {
    constexpr WORD kBitmap = 2;  // RT_BITMAP
    const HRSRC found = FindResourceW(nullptr, MAKEINTRESOURCEW(number), MAKEINTRESOURCEW(kBitmap));
    m_pInfo = found == nullptr ? nullptr : static_cast<const BITMAPINFO*>(LockResource(LoadResource(nullptr, found)));
}

unsigned CDib::GetColourCount() const {
    const BITMAPINFOHEADER& header = m_pInfo->bmiHeader;
    if (header.biClrUsed != 0) return header.biClrUsed;
    return header.biBitCount <= 8 ? 1U << header.biBitCount : 0;
}

HPALETTE CDib::MakePalette() const {
    constexpr WORD kVersion = 0x300;
    const unsigned count = GetColourCount();
    if (count == 0) return nullptr;
    std::vector<char> room(sizeof(LOGPALETTE) + count * sizeof(PALETTEENTRY));
    auto* const palette = reinterpret_cast<LOGPALETTE*>(room.data());
    palette->palVersion = kVersion;
    palette->palNumEntries = static_cast<WORD>(count);
    const RGBQUAD* const colours = m_pInfo->bmiColors;
    for (unsigned i = 0; i < count; ++i)
        palette->palPalEntry[i] = {colours[i].rgbRed, colours[i].rgbGreen, colours[i].rgbBlue, 0};
    return CreatePalette(palette);
}

void CDib::StretchTo(HDC context, int width, int height) const {
    // A small drawing grows by whole dots; what is drawn with soft edges keeps them.
    const bool isWhole = width % GetWidth() == 0 && height % GetHeight() == 0;
    SetStretchBltMode(context, isWhole ? COLORONCOLOR : HALFTONE);
    SetBrushOrgEx(context, 0, 0, nullptr);
    StretchDIBits(context, 0, 0, width, height, 0, 0, GetWidth(), GetHeight(), GetPixels(), m_pInfo, DIB_RGB_COLORS,
                  SRCCOPY);
}

void DestroyImages(HIMAGELIST images) {
    static auto* const destroy = FindOperation<decltype(ImageList_Destroy)>(kCommonControls, "ImageList_Destroy");
    if (images != nullptr && destroy != nullptr) destroy(images);
}

HIMAGELIST MakeDriveImages(int factor) {
    static auto* const create = FindOperation<decltype(ImageList_Create)>(kCommonControls, "ImageList_Create");
    static auto* const add = FindOperation<decltype(ImageList_Add)>(kCommonControls, "ImageList_Add");
    const CDib drives(kDrivesBitmap);
    const CDib mask(kDriveMaskBitmap);
    if (create == nullptr || add == nullptr || !drives || !mask) return nullptr;
    constexpr int kImageWidth = 16;
    const int width = drives.GetWidth() * factor;
    const int height = drives.GetHeight() * factor;
    const HDC screen = GetDC(nullptr);
    const HBITMAP colours = CreateCompatibleBitmap(screen, width, height);
    ReleaseDC(nullptr, screen);
    const HBITMAP transparent = CreateBitmap(width, height, 1, 1, nullptr);
    const HDC memory = CreateCompatibleDC(nullptr);
    const HGDIOBJ before = SelectObject(memory, colours);
    drives.StretchTo(memory, width, height);
    SelectObject(memory, transparent);
    mask.StretchTo(memory, width, height);
    SelectObject(memory, before);
    DeleteDC(memory);
    const HIMAGELIST images =
        create(kImageWidth * factor, height, ILC_COLOR24 | ILC_MASK, drives.GetWidth() / kImageWidth, 0);
    add(images, colours, transparent);
    DeleteObject(colours);
    DeleteObject(transparent);
    return images;
}

HICON LoadProgramIcon(int size) {
    return static_cast<HICON>(
        LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(kProgramIcon), IMAGE_ICON, size, size, LR_SHARED));
}

}  // namespace delvane
