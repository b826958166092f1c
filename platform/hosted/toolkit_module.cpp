// The window system of the host: a module beside the program, loaded by a visible run alone.
#include <dlfcn.h>
#include <unistd.h>

#include "platform/hosted/choice.h"
#include "platform/qt/module.h"

namespace delvane {

std::unique_ptr<CToolkit> LoadToolkit(CString& problem) {
    const bool hasDisplay = !GetVariable("DISPLAY").empty() || !GetVariable("WAYLAND_DISPLAY").empty() ||
                            !GetVariable("QT_QPA_PLATFORM").empty();
    if (!hasDisplay) {
        problem = "there is no display (neither DISPLAY nor WAYLAND_DISPLAY is set)";
        return nullptr;
    }
    const std::string folder = ExecutableFolder();
    void* module = nullptr;
    for (const std::string& path : {folder + "/delvane-qt.so", folder + "/../lib/delvane/delvane-qt.so"}) {
        if (module != nullptr || access(path.c_str(), F_OK) != 0) continue;
        module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (module == nullptr) problem = dlerror();
    }
    if (module == nullptr && problem.empty()) problem = "delvane-qt.so is missing beside the program";
    // The module stays loaded to the end of the process.
    auto* const make = module == nullptr ? nullptr : reinterpret_cast<CMakeToolkit*>(dlsym(module, kMakeToolkit));
    if (make == nullptr) return nullptr;
    problem.clear();
    return std::unique_ptr<CToolkit>(make());
}

}  // namespace delvane
