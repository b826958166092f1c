// Makes a registry hive out of registry text as Wine writes it: what lies below one key of the text.
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include "platform/hosted/registry/registry_text.h"
#include "platform/text.h"
#include "samples/regf_writer.h"

namespace {

using delvane::CRegfWriter;
using delvane::CRegistryText;

// The path below `top`, its first component renamed if it is `from`. False where it does not lie there.
bool TakeBelow(std::string& path, const std::string& top, const std::string& from, const std::string& to) {
    if (!top.empty()) {
        if (delvane::mbsicmp(path.substr(0, top.size()), top) != 0) return false;
        if (path.size() > top.size() && path[top.size()] != '\\') return false;
        path.erase(0, path.size() > top.size() ? top.size() + 1 : top.size());
    }
    const std::string first = path.substr(0, path.find('\\'));
    if (!from.empty() && delvane::mbsicmp(first, from) == 0) path.replace(0, first.size(), to);
    return true;
}

bool IsText(std::uint32_t type) { return type == 1 || type == 2 || type == 7; }

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount < 4 || argumentCount > 5) {
        std::fprintf(stderr, "usage: %s TEXT HIVE KEY [NAME=OTHER]\n", arguments[0]);
        return 2;
    }
    std::ifstream file(arguments[1], std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    CRegistryText reader(text);
    if (!reader.HasHeader()) {
        std::fprintf(stderr, "%s: %s is no registry text\n", arguments[0], arguments[1]);
        return 1;
    }
    const std::string rename = argumentCount == 5 ? arguments[4] : "=";
    const std::size_t equals = rename.find('=');
    CRegfWriter hive;
    hive.GetRoot().m_strName = "ROOT";
    for (CRegistryText::CKey key; reader.NextKey(key);) {
        std::string path(key.m_path);
        if (!TakeBelow(path, arguments[3], rename.substr(0, equals), rename.substr(equals + 1))) continue;
        CRegfWriter::CKey& made = hive.GetRoot().Make(path);
        if (key.m_bIsLink) made.m_nFlags = 0x10;
        for (CRegistryText::CValue value; reader.NextValue(value);) {
            made.Set(value.m_name, value.m_dwType,
                     IsText(value.m_dwType) ? delvane::ToUtf16(value.m_data) : std::string(value.m_data));
        }
    }
    if (reader.GetProblemCount() != 0) {
        std::fprintf(stderr, "%s: %s: %s\n", arguments[0], arguments[1], reader.GetProblem().c_str());
        return 1;
    }
    std::ofstream output(arguments[2], std::ios::binary);
    output << hive.Build() << std::flush;
    return output ? 0 : 1;
}
