// The picture that stands on the screen while a visible run starts.
#pragma once

#include "platform/win32/windows/pictures.h"

namespace delvane {

class CSplashWindow {
public:
    // Shown and painted at once, in the middle of the work area of the monitor nearest to `parent`, which may be null,
    // and at its scaling.
    explicit CSplashWindow(HWND parent);
    ~CSplashWindow();
    CSplashWindow(const CSplashWindow&) = delete;
    CSplashWindow& operator=(const CSplashWindow&) = delete;

    explicit operator bool() const { return m_hWnd != nullptr; }

private:
    static LRESULT CALLBACK OnSystemMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    void Draw(HDC context) const;
    bool RealizePalette(bool isBackground) const;

    CDib m_picture;
    HPALETTE m_hPalette = nullptr;  // on a display that works with one
    HWND m_hWnd = nullptr;
};

}  // namespace delvane
