// Any bytes as registry text: as a hive, and as a registry that links make a graph of.
#include "platform/hosted/registry/registry.h"
#include "platform/hosted/registry/text_hive.h"
#include "tests/fuzz/hive_checks.h"
#include "tests/support/key_view.h"

namespace {

using namespace delvane;

// Opens what can be opened, as a walk does, until it has seen enough.
void Walk(CHostedRegistry& registry, HKEY key, std::size_t& opened) {
    for (const CString& name : ViewKey(registry, key).m_subkeys) {
        HKEY below = 0;
        if (opened >= 5000 || registry.RegOpenKeyEx(key, name, below) != ERROR_SUCCESS) continue;
        ++opened;
        Walk(registry, below, opened);
        registry.RegCloseKey(below);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = "WINE REGISTRY Version 2\n" + std::string(reinterpret_cast<const char*>(data), size);
    CTextHive hive(BytesOf(text), "HIVE");
    CheckHive(hive, text.size());

    CHostedRegistry registry;
    for (const HKEY root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) {
        registry.SetRoot(root, {registry.AddHive(std::make_unique<CTextHive>(BytesOf(text), "HIVE")), {}});
    }
    const auto machine = registry.Find(HKEY_LOCAL_MACHINE, "a");
    const auto user = registry.Find(HKEY_CURRENT_USER, "A\\a");
    if (machine && user) {
        registry.SetRoot(HKEY_CLASSES_ROOT, {user->m_first, machine->m_first});
        registry.Mount(machine->m_first, "b", user->m_first);
    }
    for (const HKEY root : {HKEY_LOCAL_MACHINE, HKEY_CLASSES_ROOT}) {
        std::size_t opened = 0;
        Walk(registry, root, opened);
        Expect(registry.GetOpenCount() == 0);
    }
    return 0;
}
