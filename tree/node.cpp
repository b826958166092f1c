#include "tree/node.h"

#include <algorithm>
#include <vector>

#include "report/base.h"
#include "tree/archive.h"
#include "tree/root.h"

namespace delvane {

void CDelvObj::Serialize(CArchive& archive) {
    archive.Transfer(m_name);
    if (archive.IsStoring() && m_bComposed) return archive.WritePath(*m_pParent, m_name);
    archive.Transfer(m_fullName);
    m_bComposed = false;
}

CDelvObj* CDelvObj::FindObject(std::string_view name) { return mbsicmp(m_name, name) == 0 ? this : nullptr; }

// Two captured trees are compared from the leaf upward, a captured one against a loaded one from the end of the loaded
// text; only where bytes differ are the paths put together and compared without regard to case.
bool CDelvObj::HasSameFullName(const CDelvObj& other) const {
    const CDelvObj* a = this;
    const CDelvObj* b = &other;
    while (a->m_bComposed && b->m_bComposed && a->m_name == b->m_name) {
        a = a->m_pParent;
        b = b->m_pParent;
    }
    if (a->m_bComposed != b->m_bComposed
            ? (a->m_bComposed ? a->IsComposedOf(b->m_fullName) : b->IsComposedOf(a->m_fullName))
            : (!a->m_bComposed && a->m_fullName == b->m_fullName)) {
        return true;
    }
    return mbsicmp(GetStoredFullName(), other.GetStoredFullName()) == 0;
}

bool CDelvObj::IsComposedOf(std::string_view path) const {
    const CDelvObj* node = this;
    for (; node->m_bComposed; node = node->m_pParent) {
        if (!path.ends_with(node->m_name)) return false;
        path.remove_suffix(node->m_name.size());
        if (!path.ends_with('\\')) return false;
        path.remove_suffix(1);
    }
    return path == node->m_fullName;
}

bool CDelvObj::Compare(CDelvObj& baseline, CReportObj&) {
    return typeid(*this) == typeid(baseline) && HasSameFullName(baseline);
}

void CDelvObj::ReportAdded(CReportObj& report) { report.AddAdded(*this); }

void CDelvObj::ReportDeleted(CReportObj& report) { report.AddDeleted(*this); }

bool CDelvObj::Capture(CCaptureProgress*) { return true; }

CString CDelvObj::GetStoredFullName() const {
    std::size_t length = 0;
    const CDelvObj* top = this;
    while (top->m_bComposed) {
        length += top->m_name.size() + 1;
        top = top->m_pParent;
    }
    length += top->m_fullName.size();
    CString path(length, '\\');
    char* end = path.data() + length;
    for (const CDelvObj* node = this; node != top; node = node->m_pParent) {
        const std::string_view name = node->m_name;
        end = std::copy_backward(name.begin(), name.end(), end) - 1;
    }
    const std::string_view begin = top->m_fullName;
    std::copy(begin.begin(), begin.end(), path.data());
    return path;
}

CString CDelvObj::GetFullName() const { return GetStoredFullName(); }

void CDelvObj::InsertSorted(CNodeList& list) {
    if (list.empty() || mbscmp(m_name, list.back()->m_name) >= 0) {
        list.push_back(this);
        return;
    }
    const auto sortsBefore = [](const CDelvObj* node, const CDelvObj* member) {
        return mbscmp(node->m_name, member->m_name) < 0;
    };
    list.insert(std::upper_bound(list.begin(), list.end(), this, sortsBefore), this);
}

void SortByName(CNodeList& list) {
    const auto sortsBefore = [](const CDelvObj* a, const CDelvObj* b) { return mbscmp(a->m_name, b->m_name) < 0; };
    if (std::is_sorted(list.begin(), list.end(), sortsBefore)) return;
    struct CEntry {
        std::uint64_t m_nHead;
        CDelvObj* m_pNode;
    };
    std::vector<CEntry> entries;
    entries.reserve(list.size());
    for (CDelvObj* node : list)
        entries.push_back({TextHead(node->m_name), node});
    std::stable_sort(entries.begin(), entries.end(), [&](const CEntry& a, const CEntry& b) {
        return a.m_nHead != b.m_nHead ? a.m_nHead < b.m_nHead : sortsBefore(a.m_pNode, b.m_pNode);
    });
    std::transform(entries.begin(), entries.end(), list.begin(), [](const CEntry& entry) { return entry.m_pNode; });
}

CDelvObj* FindIn(const CNodeList& list, std::string_view path) {
    for (CDelvObj* node : list) {
        if (CDelvObj* const found = node->FindObject(path)) return found;
    }
    return nullptr;
}

CDelvDiffObj::CDelvDiffObj(CDelvObj& object, CDelvObj& baseline)
    : m_pObject(&object), m_pBaseline(&baseline), m_strFullName(EncodeText(object.GetFullName())) {
    m_name = object.m_name;
    m_fullName = CTextRef(m_strFullName.data());
}

bool CompareLists(const CNodeList& current, const CNodeList& baseline, CReportObj& report) {
    CDelvObj** a = current.begin();
    CDelvObj** b = baseline.begin();
    while (a != current.end() || b != baseline.end()) {
        const int order = a == current.end() ? -1 : b == baseline.end() ? 1 : mbscmp((*b)->m_name, (*a)->m_name);
        if (order == 0) {
            (*a++)->Compare(**b++, report);
        } else if (order < 0) {
            (*b++)->ReportDeleted(report);
        } else {
            (*a++)->ReportAdded(report);
        }
    }
    report.CountCompared(current.size() + baseline.size());
    return true;
}

CTreeRoot& RootOf(CDelvObj& node) {
    CDelvObj* root = &node;
    while (root->m_pParent != nullptr)
        root = root->m_pParent;
    return dynamic_cast<CTreeRoot&>(*root);
}

CString SplitPath(std::string_view& path, char separator) {
    const std::size_t end = path.find(separator);
    const CString first(path.substr(0, end));
    path.remove_prefix(end == std::string_view::npos ? path.size() : end + 1);
    return first;
}

}  // namespace delvane
