// What windows are drawn with: the program's pictures, fonts and sizes at the scaling of a monitor, cursors.
#pragma once

#include "platform/win32/windows.h"

namespace delvane {

inline constexpr int kPlainDpi = 96;  // dots per inch at a scaling of 100 %

// The calls that newer systems have for it are looked for at run time.
int DpiOf(HWND window);
// The font of message boxes, to be deleted by the caller.
HFONT MakeMessageFont(int dpi);
// The size of a window around a client area of that size.
SIZE WindowSizeOf(SIZE client, HWND window, bool hasMenu, int dpi);
// Keeps the system from moving the controls when the window comes to another monitor.
void SwitchOwnScalingOff(HWND dialog);

// The work area of the monitor nearest to the window; without one, of the primary monitor.
RECT WorkAreaOf(HWND window);

// The arrow, or that of waiting.
HCURSOR LoadCursorForm(bool waiting);

// The pictures' numbers, as delvane.rc.in has them.
constexpr WORD kProgramIcon = 128;
constexpr WORD kDrivesBitmap = 134;
constexpr WORD kDriveMaskBitmap = 135;
constexpr WORD kSplashBitmap = 141;
constexpr WORD kDoubleSplashBitmap = 142;  // twice as wide and high

// A packed device-independent bitmap of the program's file: header, colour table, pixels from the bottom up.
class CDib {
public:
    explicit CDib(WORD number);

    explicit operator bool() const { return m_pInfo != nullptr; }
    int GetWidth() const { return m_pInfo->bmiHeader.biWidth; }
    int GetHeight() const { return m_pInfo->bmiHeader.biHeight; }
    // The palette of its colours, for a display that has one; null where it has no colours.
    HPALETTE MakePalette() const;
    // Puts it into the whole of a room of that size.
    void StretchTo(HDC context, int width, int height) const;

private:
    // By the header: how many are used, else as many as the bits of a pixel can name.
    unsigned GetColourCount() const;
    const void* GetPixels() const { return m_pInfo->bmiColors + GetColourCount(); }

    const BITMAPINFO* m_pInfo;  // the system keeps it as long as the program runs; null if it is not there
};

// The library of common controls is loaded when windows need it: a run without one leaves it alone, and with it
// whatever the system makes ready for windows.
inline constexpr const char* kCommonControls = "comctl32.dll";  // the version that the manifest names

// The drive images for a list, each dot `factor` dots wide; to be destroyed by the caller.
HIMAGELIST MakeDriveImages(int factor);
void DestroyImages(HIMAGELIST images);

// The icon of the program's file in that size; shared.
HICON LoadProgramIcon(int size);

}  // namespace delvane
