// The pictures that a toolkit needs, handed over as bytes.
#pragma once

#include <string_view>

#include "platform/toolkit.h"

namespace delvane {

// Each a packed device-independent bitmap: header, colour table, pixels from the bottom up.
struct CPictureBytes {
    std::string_view m_icon;       // 48 by 48, 32 bits a pixel with alpha
    std::string_view m_drives;     // eight images of 16 by 13 in a row, 16 colours
    std::string_view m_driveMask;  // the same size, one bit a pixel: set where the image is transparent
    std::string_view m_splash;     // 591 by 368, 256 colours
};

// The operation by which a module gives its toolkit, and its name. Null where there is no display to show a window on.
using CMakeToolkit = CToolkit*(const CPictureBytes& pictures);
inline constexpr const char* kMakeToolkit = "DelvaneMakeToolkit";

// The window system of this machine; null where there is none, and `problem` says why in a few words. Loaded when it is
// asked for.
std::unique_ptr<CToolkit> LoadToolkit(const CPictureBytes& pictures, CString& problem);

}  // namespace delvane
