// Any bytes as registry text: as a hive, and as a registry that links make a graph of.
#include <cstdlib>
#include <set>

#include "platform/hosted/registry/registry.h"
#include "platform/hosted/registry/text_hive.h"
#include "tests/fuzz/hive_checks.h"

namespace {

using namespace delvane;

// Opens what can be opened, as a walk does, until it has seen enough.
void Walk(CHostedRegistry& registry, HKEY key, std::size_t& opened) {
    CKeyInfo info;
    Expect(registry.RegQueryInfoKey(key, info) == ERROR_SUCCESS);
    std::vector<char> name(std::max(info.m_nLongestSubkey, info.m_nLongestValueName) + std::size_t{1});
    std::vector<char> data(info.m_nLargestData + std::size_t{1});
    for (std::uint32_t i = 0; i < info.m_nValues; ++i) {
        CRoom nameRoom{name.data(), info.m_nLongestValueName + 1};
        CRoom dataRoom{data.data(), info.m_nLargestData};
        std::uint32_t type = 0;
        Expect(registry.RegEnumValue(key, i, nameRoom, type, dataRoom) == ERROR_SUCCESS);
    }
    for (std::uint32_t i = 0; i < info.m_nSubkeys && opened < 5000; ++i) {
        CRoom room{name.data(), info.m_nLongestSubkey + 1};
        Expect(registry.RegEnumKeyEx(key, i, room) == ERROR_SUCCESS);
        HKEY below = 0;
        if (registry.RegOpenKeyEx(key, {name.data(), room.m_nSize}, below) != ERROR_SUCCESS) continue;
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
