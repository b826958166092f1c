// The extensions' sub-tree: what the registry says of each file extension that the machine knows or that its files
// bear.
#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_map>

#include "tree/node.h"

namespace delvane {

class CTreeRoot;

class CDelvRegKeyObj;

// An extension, in lower case with its full stop. All that is known of it comes from the registry of its own snapshot.
class CDelvExtObj : public CDelvObj {
public:
    explicit CDelvExtObj(CDelvObj* parent) : CDelvObj(parent) {}
    CDelvExtObj(CDelvObj* parent, CTextRef name, CDelvObj* key) : CDelvObj(parent, name, name), m_pKey(key) {}

    void Serialize(CArchive& archive) override;
    // Changed when one of the three texts differs in more than case.
    bool Compare(CDelvObj& baseline, CReportObj& report) override;
    bool Capture(CCaptureProgress* progress) override;

    // Whether it has a file type, and the type an icon and a command, or NoOpen in place of a command.
    bool IsProperlyRegistered() const;

    CDelvObj* m_pKey = nullptr;  // the key of HKCR that bears the extension's name, or null; not stored
    CTextRef m_strFileType;      // the type's description, else its name
    CTextRef m_strIcon;
    CTextRef m_strOpenCommand;
    std::uint32_t m_bNoOpen = 0;
};

// The root of the extensions' sub-tree.
class CDelvAllExts : public CDelvObj {
public:
    explicit CDelvAllExts(CTreeRoot& root);

    void Serialize(CArchive& archive) override;
    CDelvObj* FindObject(std::string_view name) override;
    bool Compare(CDelvObj& baseline, CReportObj& report) override;

    // Told by the capture of HKCR of each key that begins with a full stop.
    void AddRegisteredExtension(CDelvRegKeyObj& key, CCaptureProgress* progress);
    // Told by the directory walk of each extension that it sees, in lower case. Most are known by then.
    void AddFileExtension(const CString& name, CCaptureProgress* progress);
    // Brings the list into order once the walks are over.
    void Sort() { SortByName(m_extensions); }

    CNodeList m_extensions;  // of CDelvExtObj

private:
    CDelvExtObj& Add(CTextRef name, CDelvObj* key);

    std::unordered_map<std::string_view, CDelvObj*> m_byName;  // of two of one name the later one
};

}  // namespace delvane
