#include "platform/hosted/prefix_registry.h"

#include "platform/hosted/text_hive.h"

namespace delvane {
namespace {

void AddHiveFile(CHostedRegistry& registry, HKEY root, const std::string& path) {
    registry.Watch(path);
    std::string problem;
    std::unique_ptr<CHive> hive = CTextHive::Open(path, problem);
    if (hive == nullptr) {
        registry.AddProblem(std::move(problem));
        return;
    }
    CHive& added = registry.AddHive(std::move(hive));
    registry.SetRoot(root, {{&added, added.GetRoot()}, {}});
}

}  // namespace

std::unique_ptr<CHostedRegistry> LoadPrefixRegistry(const std::string& folder) {
    auto registry = std::make_unique<CHostedRegistry>();
    AddHiveFile(*registry, HKEY_LOCAL_MACHINE, folder + "/system.reg");
    AddHiveFile(*registry, HKEY_CURRENT_USER, folder + "/user.reg");
    if (const auto classes = registry->Find(HKEY_LOCAL_MACHINE, "Software\\Classes")) {
        registry->SetRoot(HKEY_CLASSES_ROOT, *classes);
    }
    // Wine hands out the performance data in place of this key.
    const auto performance =
        registry->Find(HKEY_LOCAL_MACHINE, "Software\\Microsoft\\Windows NT\\CurrentVersion\\Perflib\\009");
    if (performance) registry->SetUnopenable(performance->m_first);
    return registry;
}

}  // namespace delvane
