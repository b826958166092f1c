// The program's pictures, in the form that the windows of the system take them.
#pragma once

#include <string_view>

#include "platform/toolkit_pictures.h"
#include "platform/win32/windows.h"

namespace delvane {

// A packed device-independent bitmap; a view of its bytes.
class CDib {
public:
    explicit CDib(std::string_view bytes) : m_bytes(bytes) {}

    const BITMAPINFO* GetInfo() const { return reinterpret_cast<const BITMAPINFO*>(m_bytes.data()); }
    int GetWidth() const { return GetInfo()->bmiHeader.biWidth; }
    int GetHeight() const { return GetInfo()->bmiHeader.biHeight; }
    // By the header: how many are used, else as many as the bits of a pixel can name.
    unsigned GetColourCount() const;
    const char* GetPixels() const;
    // The palette of its colours, for a display that has one; null where it has no colours.
    HPALETTE MakePalette() const;
    // Puts it into the whole of the bitmap, `factor` dots for each of its own.
    void StretchTo(HBITMAP bitmap, int factor) const;

private:
    std::string_view m_bytes;
};

// The library of common controls. It is loaded when it is first asked for: a run without a window leaves it alone, and
// with it whatever the system makes ready for windows.
HMODULE GetCommonControls();

// The drive images for a list, each dot `factor` dots wide; to be destroyed by the caller.
HIMAGELIST MakeDriveImages(const CPictureBytes& pictures, int factor);
void DestroyImages(HIMAGELIST images);

// The icon of the program's file in that size; shared.
HICON LoadProgramIcon(int size);

}  // namespace delvane
