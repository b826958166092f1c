// Fonts and sizes at the scaling of a monitor. The calls that newer systems have for it are looked for at run time.
#pragma once

#include "platform/win32/windows.h"

namespace delvane {

inline constexpr int kPlainDpi = 96;  // dots per inch at a scaling of 100 %

int DpiOf(HWND window);
// The font of message boxes, to be deleted by the caller.
HFONT MakeMessageFont(int dpi);
// The size of a window around a client area of that size.
SIZE WindowSizeOf(SIZE client, HWND window, bool hasMenu, int dpi);
// Keeps the system from moving the controls when the window comes to another monitor.
void SwitchOwnScalingOff(HWND dialog);

}  // namespace delvane
