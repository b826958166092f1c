// Reader of Windows' registry hive files: SYSTEM, SOFTWARE, NTUSER.DAT and their like.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/host.h"
#include "platform/hosted/registry/hive.h"

namespace delvane {

// Bytes from outside: every offset and length in them is checked, each key is visited once, and damage costs the key or
// value that it hits. Keys are numbered by a table that Open makes. A library for such files takes five
// times the processor time for the same hive (docs/performance.md).
class CRegfHive : public CHive {
public:
    // Reads the hive file at that path of the host into memory. Where its last changes have not reached it, they are
    // taken from the transaction logs beside it (NAME.LOG1 and NAME.LOG2, or the older NAME.LOG; found without regard
    // to case). Nothing is written. Null where it cannot be read or is no hive: `problem` then says so.
    static std::unique_ptr<CRegfHive> Open(const std::string& hostPath, CNotice& problem);
    // The same on bytes in memory; `name` is what messages call the hive.
    static std::unique_ptr<CRegfHive> Read(CFileBytes bytes, const std::vector<CFileBytes>& logs, std::string name,
                                           CNotice& problem);
    // The transaction logs beside a hive file.
    static std::vector<std::string> FindLogs(const std::string& hostPath);

    bool ReadKey(std::uint32_t key, CKeyContents& contents) override;
    std::optional<std::string> GetLink(std::uint32_t key) override;
    bool IsCut() const override { return m_bCut; }
    std::vector<CNotice> GetProblems() const override;

private:
    // Whether the bytes that a key hands out have been counted, and the verdict.
    enum class ECounted : std::uint8_t { kNot, kWithin, kBeyond };
    // A key whose cell has been checked. The subkeys of one key stand together.
    struct CNode {
        std::uint32_t m_nCell = 0;
        std::uint32_t m_nParent = 0;
        std::uint32_t m_nFirstChild = 0;
        std::uint32_t m_nChildCount = 0;
    };

    CRegfHive(CFileBytes bytes, std::string name);
    bool MakeTable();
    void AddChildren(std::uint32_t parent);
    void AddListed(std::uint32_t parent, std::uint32_t list, unsigned depth);
    bool Claim(std::uint32_t cell);

    std::string_view GetCell(std::uint32_t cell) const;
    std::string_view GetKeyCell(std::uint32_t cell) const;
    static CKeyContents::CSpan AddName(std::string_view bytes, bool compressed, CKeyContents& contents);
    CKeyContents::CSpan AddKeyName(std::uint32_t key, CKeyContents& contents) const;
    static CKeyContents::CSpan AddText(std::string_view bytes, CKeyContents& contents);
    bool AddValue(std::uint32_t cell, CKeyContents& contents);
    bool GetData(std::uint32_t size, std::string_view valueCell, std::string_view& data);
    bool GetBigData(std::uint32_t size, std::string_view cell, std::string_view& data);
    std::uint32_t FirstSubkey(std::uint32_t key) const override {
        return m_nodes[key].m_nChildCount == 0 ? 0 : m_nodes[key].m_nFirstChild;
    }
    std::uint32_t NextSubkey(std::uint32_t key) const override {
        const bool isLast = key + 1 == m_nodes.size() || m_nodes[key + 1].m_nParent != m_nodes[key].m_nParent;
        return isLast ? 0 : key + 1;
    }
    std::uint32_t CountKeys() const override { return static_cast<std::uint32_t>(m_nodes.size()); }
    std::string NameOf(std::uint32_t key) const override;
    std::string PathOf(std::uint32_t key) const;
    void NoteBad(const char* what, std::uint32_t key);

    std::string_view m_cells;  // what lies behind the base block; cells are told by their offset in it
    std::uint32_t m_nMinorVersion = 0;
    std::size_t m_nCellHead = 4;  // what a cell begins with before its content
    CPageVector<CNode> m_nodes;
    std::vector<bool> m_claimed;  // where keys and lists of keys lie, by offset / 8
    std::vector<ECounted> m_counted;
    std::uint64_t m_nHandedOut = 0;  // bytes of values, each key counted once
    std::size_t m_nRefunds = 0;      // keys that were refused and not counted
    std::string m_bigData;
    std::string m_strFirstBad;
    bool m_bUnfinished = false;  // its last changes are lost
    bool m_bCut = false;         // its file is shorter than it says
};

}  // namespace delvane
