// A dialog on the screen: real controls of the system, made of a template's data.
#pragma once

#include <memory>
#include <vector>

#include "platform/toolkit.h"
#include "platform/win32/windows.h"

namespace delvane {

// What the windows of a toolkit share.
struct CDesk {
    std::vector<HWND> m_windows;  // the open dialogs, the innermost last
    bool m_bWaiting = false;      // with the wait cursor

    HWND GetInnermost() const { return m_windows.empty() ? nullptr : m_windows.back(); }
};

std::unique_ptr<CDialogWindow> MakeDialogWindow(CDesk& desk, const CDialogTemplate& dialog, CDialogEvents& events);

}  // namespace delvane
