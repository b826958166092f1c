// The heading of a group of entries in a list of the page.
#pragma once

#include <string_view>
#include <utility>

#include "tree/node.h"

namespace delvane {

// How lists of objects and lists of changes end a group.
inline constexpr std::string_view kObjectGroupEnd = "</TABLE>\n</DD>\n</DL>\n";
inline constexpr std::string_view kNameGroupEnd = "</DL>\n";

// Follows the heading of the entries written so far: the full name of their parent.
class CHeading {
public:
    // True when the object's parent has another name than that of the entry before.
    bool Moves(const CDelvObj& object) {
        if (object.m_pParent == m_pParent) return false;  // no parent, or the same: no need to put its path together
        m_pParent = object.m_pParent;
        CString name = m_pParent == nullptr ? CString() : m_pParent->GetFullName();
        if (name == m_strName) return false;
        m_bOpen = !m_strName.empty();
        m_strName = std::move(name);
        return true;
    }
    bool WasOpen() const { return m_bOpen; }  // before the last move
    bool IsOpen() const { return !m_strName.empty(); }
    const CString& GetName() const { return m_strName; }

private:
    const CDelvObj* m_pParent = nullptr;
    CString m_strName;
    bool m_bOpen = false;
};

}  // namespace delvane
