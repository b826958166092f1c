// Compares two snapshots node by node, whatever a report would say of them.
//   compare_snapshots KNOWN A.dvs B.dvs
// Each line of KNOWN is an expected difference: the beginning of a line of the output, without regard to case; a star
// in it stands for one component of a path. A line that begins with # is a comment. The differences that nobody expects
// are printed, a line each: "only in A: PATH", "only in B: PATH", "PATH: WHAT: in A, in B". Exit codes: 0 there are
// none, 1 there are some, 2 a file could not be read.
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <vector>

#include "capture/drives.h"
#include "capture/extensions.h"
#include "capture/registry.h"
#include "core/context.h"
#include "tests/support/scripted_machine.h"
#include "tree/snapshot.h"

namespace delvane {
namespace {

std::string ReadAll(const char* path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error(std::string(path) + " cannot be opened");
    return {std::istreambuf_iterator<char>(file), {}};
}

class CKnown {
public:
    explicit CKnown(const std::string& text) {
        std::size_t begin = 0;
        while (begin < text.size()) {
            const std::size_t end = std::min(text.find('\n', begin), text.size());
            if (end != begin && text[begin] != '#') m_rules.push_back({text.substr(begin, end - begin), 0});
            begin = end + 1;
        }
    }
    bool Explains(std::string_view line) {
        for (CRule& rule : m_rules) {
            if (!IsMatch(rule.m_strText, line)) continue;
            ++rule.m_nUses;
            return true;
        }
        return false;
    }
    void PrintUses() const {
        for (const CRule& rule : m_rules)
            std::printf("%6d expected: %s\n", rule.m_nUses, rule.m_strText.c_str());
    }

private:
    struct CRule {
        CString m_strText;
        int m_nUses;
    };
    static bool IsMatch(std::string_view rule, std::string_view line) {
        while (true) {
            const std::size_t star = rule.find('*');
            const std::string_view part = rule.substr(0, star);
            if (!part.empty() && !IsPrefixNoCase(part, line)) return false;
            line.remove_prefix(part.size());
            if (star == std::string_view::npos) return true;
            rule.remove_prefix(star + 1);
            line.remove_prefix(std::min(line.size(), line.find_first_of("\\:")));
        }
    }

    std::vector<CRule> m_rules;
};

class CComparison {
public:
    explicit CComparison(CKnown& known) : m_known(known) {}

    int GetCount() const { return m_nCount; }
    std::size_t GetNodes() const { return m_nNodes; }

    void Compare(const CSnapshot& a, const CSnapshot& b) {
        Differ("snapshot: computer", a.m_strComputerName, b.m_strComputerName);
        Differ("snapshot: user", a.m_strUserName, b.m_strUserName);
        Differ("snapshot: system", a.m_strOsName, b.m_strOsName);
        Pair(a.m_pDrives->m_subdirs, b.m_pDrives->m_subdirs);
        Pair(a.m_pRegistry->m_subkeys, b.m_pRegistry->m_subkeys);
        Pair(a.m_pExtensions->m_extensions, b.m_pExtensions->m_extensions);
    }

private:
    template <class Value>
    void Differ(const CString& what, const Value& a, const Value& b) {
        if (a == b) return;
        if constexpr (std::is_integral_v<Value>) {
            Print(what + ": " + std::to_string(a) + ", " + std::to_string(b));
        } else {
            Print(what + ": " + Shown(a) + ", " + Shown(b));
        }
    }
    static CString Shown(std::string_view bytes) {
        CString text = "\"";
        for (const char c : bytes.substr(0, 60))
            text += static_cast<unsigned char>(c) < ' ' ? '~' : c;
        return text + "\" (" + std::to_string(bytes.size()) + ")";
    }
    void Print(const CString& line) {
        if (m_known.Explains(line)) return;
        ++m_nCount;
        std::printf("%s\n", line.c_str());
    }

    // Both lists ascend by name, and names may come twice.
    void Pair(const CNodeList& listA, const CNodeList& listB) {
        auto a = listA.begin();
        auto b = listB.begin();
        while (a != listA.end() || b != listB.end()) {
            const int order = a == listA.end() ? 1 : b == listB.end() ? -1 : mbscmp((*a)->m_name, (*b)->m_name);
            if (order == 0) {
                ++m_nNodes;
                ComparePair(**a, **b);
            } else {
                const CDelvObj& alone = order < 0 ? **a : **b;
                Print(CString(order < 0 ? "only in A: " : "only in B: ") + PathOf(alone));
            }
            if (order <= 0) ++a;
            if (order >= 0) ++b;
        }
    }
    // A value's own path is that of its key.
    static CString PathOf(const CDelvObj& node) {
        const bool isValue = dynamic_cast<const CDelvRegValObj*>(&node) != nullptr &&
                             dynamic_cast<const CDelvRegKeyObj*>(&node) == nullptr;
        return isValue ? node.GetFullName() + ": " + CString(node.m_name) : node.GetFullName();
    }
    void ComparePair(const CDelvObj& a, const CDelvObj& b) {
        const CString path = PathOf(a);
        if (const auto* const file = dynamic_cast<const CDelvFileObj*>(&a)) {
            const auto& other = dynamic_cast<const CDelvFileObj&>(b);
            Differ(path + ": attributes", file->m_dwAttributes, other.m_dwAttributes);
            Differ(path + ": size", file->GetSize(), other.GetSize());
            Differ(path + ": last write", file->m_ftLastWrite.GetTicks(), other.m_ftLastWrite.GetTicks());
            Differ(path + ": creation", file->m_ftCreation.GetTicks(), other.m_ftCreation.GetTicks());
        }
        if (const auto* const directory = dynamic_cast<const CDelvDirObj*>(&a)) {
            const auto& other = dynamic_cast<const CDelvDirObj&>(b);
            Pair(directory->m_files, other.m_files);
            Pair(directory->m_subdirs, other.m_subdirs);
        }
        if (const auto* const drive = dynamic_cast<const CDelvDriveObj*>(&a)) {
            const auto& other = dynamic_cast<const CDelvDriveObj&>(b);
            Differ(path + ": kind", drive->m_nDriveType, other.m_nDriveType);
            Differ(path + ": volume", drive->m_strVolume.Get(), other.m_strVolume.Get());
        }
        if (const auto* const key = dynamic_cast<const CDelvRegKeyObj*>(&a)) {
            const auto& other = dynamic_cast<const CDelvRegKeyObj&>(b);
            Pair(key->m_values, other.m_values);
            Pair(key->m_subkeys, other.m_subkeys);
        } else if (const auto* const value = dynamic_cast<const CDelvRegValObj*>(&a)) {
            const auto& other = dynamic_cast<const CDelvRegValObj&>(b);
            Differ(path + ": type", value->m_dwType, other.m_dwType);
            Differ(path + ": data", value->m_data, other.m_data);
        }
        if (const auto* const extension = dynamic_cast<const CDelvExtObj*>(&a)) {
            const auto& other = dynamic_cast<const CDelvExtObj&>(b);
            Differ(path + ": file type", extension->m_strFileType.Get(), other.m_strFileType.Get());
            Differ(path + ": icon", extension->m_strIcon.Get(), other.m_strIcon.Get());
            Differ(path + ": open command", extension->m_strOpenCommand.Get(), other.m_strOpenCommand.Get());
            Differ(path + ": no open", extension->m_bNoOpen, other.m_bNoOpen);
        }
    }

    CKnown& m_known;
    int m_nCount = 0;
    std::size_t m_nNodes = 0;
};

int Run(char** arguments) {
    auto host = std::make_unique<CScriptedHost>();
    CScriptedHost& files = *host;
    theContext.SetSystem({std::make_unique<CScriptedMachine>(), std::move(host)});
    theContext.Initialize();
    CKnown known(ReadAll(arguments[1]));
    CSnapshot snapshots[2];
    for (int i = 0; i < 2; ++i) {
        snapshots[i].SetName(std::to_string(i));
        files.m_files[snapshots[i].GetLoadPath()] = ReadAll(arguments[2 + i]);
        if (!snapshots[i].Load()) throw std::runtime_error(snapshots[i].GetError());
    }
    CComparison comparison(known);
    comparison.Compare(snapshots[0], snapshots[1]);
    known.PrintUses();
    std::printf("%zu nodes of both are paired; %d differences that nobody expects\n", comparison.GetNodes(),
                comparison.GetCount());
    return comparison.GetCount() == 0 ? 0 : 1;
}

}  // namespace
}  // namespace delvane

int main(int argumentCount, char** arguments) {
    if (argumentCount != 4) return 2;
    try {
        return delvane::Run(arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "compare_snapshots: %s\n", error.what());
        return 2;
    }
}
