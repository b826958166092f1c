// The program's pictures, which are resources of its file.
#pragma once

#include <string_view>

#include "platform/win32/windows.h"

namespace delvane {

// Their numbers, as delvane.rc.in has them.
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
    const BITMAPINFO* GetInfo() const { return m_pInfo; }
    int GetWidth() const { return m_pInfo->bmiHeader.biWidth; }
    int GetHeight() const { return m_pInfo->bmiHeader.biHeight; }
    // By the header: how many are used, else as many as the bits of a pixel can name.
    unsigned GetColourCount() const;
    const void* GetPixels() const { return m_pInfo->bmiColors + GetColourCount(); }
    // The palette of its colours, for a display that has one; null where it has no colours.
    HPALETTE MakePalette() const;
    // Puts it into the whole of a room of that size.
    void StretchTo(HDC context, int width, int height) const;

private:
    const BITMAPINFO* m_pInfo;  // the system keeps it as long as the program runs; null if it is not there
};

// The library of common controls. It is loaded when it is first asked for: a run without a window leaves it alone, and
// with it whatever the system makes ready for windows.
HMODULE GetCommonControls();

// The drive images for a list, each dot `factor` dots wide; to be destroyed by the caller.
HIMAGELIST MakeDriveImages(int factor);
void DestroyImages(HIMAGELIST images);

// The icon of the program's file in that size; shared.
HICON LoadProgramIcon(int size);

}  // namespace delvane
