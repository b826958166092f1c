// A hive in Wine's text form: system.reg, user.reg.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/host.h"
#include "platform/hosted/registry/hive.h"
#include "platform/hosted/registry/registry_text.h"

namespace delvane {

// Keeps the text (of no more than 4 GB) and a table of the keys in it; what a key holds is decoded when it is asked
// for. Keys are numbered in the order of their first appearance.
class CTextHive : public CHive {
public:
    // Null where the file cannot be read or is no registry text: `problem` then says so.
    static std::unique_ptr<CTextHive> Open(const std::string& hostPath, CNotice& problem);
    // `name` is what messages call the text.
    CTextHive(CFileBytes text, std::string name);

    // The account whose hive it is, as the text says at its head; empty where it does not.
    std::string FindUserSid() const;

    bool ReadKey(std::uint32_t key, CKeyContents& contents) override;
    std::optional<std::string> GetLink(std::uint32_t key) override;
    bool IsCut() const override { return m_text.IsCut(); }
    std::vector<CNotice> GetProblems() const override;

private:
    struct CNode {
        std::uint32_t m_nName = 0;  // where it begins in the text, or behind its size in m_strNames
        std::uint32_t m_nNameLength = 0;
        std::uint32_t m_nLastChild = 0;  // 0: none, since nobody has the root for a child
        std::uint32_t m_nSiblingBefore = 0;
        std::uint32_t m_nSection = 0;  // where its values begin in the text; 0: it has no section
    };
    std::uint32_t FirstSubkey(std::uint32_t key) const override { return m_nodes[key].m_nLastChild; }
    std::uint32_t NextSubkey(std::uint32_t key) const override { return m_nodes[key].m_nSiblingBefore; }
    std::uint32_t CountKeys() const override { return static_cast<std::uint32_t>(m_nodes.size()); }
    std::string NameOf(std::uint32_t key) const override { return std::string(NameAt(key)); }
    std::string_view NameAt(std::uint32_t key) const {
        const CNode& node = m_nodes[key];
        const bool isInText = node.m_nName < m_bytes.m_nSize;
        return {
            isInText ? m_bytes.GetBytes().data() + node.m_nName : m_strNames.data() + (node.m_nName - m_bytes.m_nSize),
            node.m_nNameLength};
    }
    std::uint32_t MakeKey(const CRegistryText::CKey& section);
    std::uint32_t MakeChild(std::uint32_t parent, std::string_view name, const char* inText);
    void AddSection(std::uint32_t key, std::size_t position);
    void ReadLink(std::uint32_t key);
    void ReadSection(std::size_t position, CKeyContents& contents);

    CRegistryText m_text;
    CPageVector<CNode> m_nodes;
    std::string m_strNames;
    struct CLink {
        std::uint32_t m_nKey;
        std::size_t m_nPathEnd;  // where the names below it begin in the path
    };
    std::vector<CLink> m_chain;  // the keys on the path that was made last, the root left out
    bool m_bAscends = true;      // so far all siblings came in the order of their names without case
    std::unordered_map<std::uint32_t, std::vector<std::size_t>> m_moreSections;  // of keys that stand twice in the file
    std::unordered_map<std::uint32_t, std::string> m_links;
};

}  // namespace delvane
