// The window system of Windows itself.
#include "platform/toolkit_pictures.h"

namespace delvane {

std::unique_ptr<CToolkit> LoadToolkit(const CPictureBytes&, CString& problem) {
    problem = "this build has no windows yet";
    return nullptr;
}

}  // namespace delvane
