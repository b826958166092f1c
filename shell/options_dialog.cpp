#include "shell/options_dialog.h"

#include <algorithm>

#include "core/context.h"
#include "core/drive_names.h"

namespace delvane {
namespace {

struct CCheck {
    std::uint32_t m_id;
    bool CRunContext::*m_option;
    std::uint32_t m_nType = DRIVE_UNKNOWN;  // the kind of drive that it stands for
};

constexpr CCheck kKinds[] = {
    {IDC_COMPACT_DISCS, &CRunContext::m_bCompactDiscs, DRIVE_CDROM},
    {IDC_HARD_DRIVES, &CRunContext::m_bHardDrives, DRIVE_FIXED},
    {IDC_NETWORK_DRIVES, &CRunContext::m_bNetworkDrives, DRIVE_REMOTE},
    {IDC_REMOVABLE_DRIVES, &CRunContext::m_bRemovableDrives, DRIVE_REMOVABLE},
};
constexpr CCheck kOthers[] = {
    {IDC_HKLM, &CRunContext::m_bHklm},
    {IDC_HKCU, &CRunContext::m_bHkcu},
    {IDC_HKCR, &CRunContext::m_bHkcr},
    {IDC_EXTENSIONS, &CRunContext::m_bExtensions},
};

// The check box of that kind of drive, or 0.
std::uint32_t KindCheckId(std::uint32_t type) {
    const auto* const found =
        std::find_if(std::begin(kKinds), std::end(kKinds), [type](const CCheck& kind) { return kind.m_nType == type; });
    return found != std::end(kKinds) ? found->m_id : 0;
}

}  // namespace

void COptionsDlg::OnInitDialog() {
    for (const CCheck& check : kOthers)
        GetWindow().SetCheck(check.m_id, theContext.*check.m_option ? 1 : 0);
    if (!theContext.m_bHkcr) GetWindow().SetCheck(IDC_EXTENSIONS, 0);
    for (const CCheck& kind : kKinds)
        GetWindow().Enable(kind.m_id, false);
    m_bBusy = true;
    for (std::uint32_t bit = 1; bit != 0 && bit <= theContext.m_dwLogicalDrives; bit <<= 1) {
        if ((theContext.m_dwLogicalDrives & bit) == 0) continue;
        const CString name = DriveName(bit);
        const std::uint32_t type = DriveTypeOf(name);
        m_items.push_back({bit, type});
        GetWindow().AddItem(IDC_DRIVES, DriveDisplayName(name), type, theContext.IsDriveSelected(name));
        if (const std::uint32_t check = KindCheckId(type)) GetWindow().Enable(check, true);
    }
    UpdateKindChecks();
    m_bBusy = false;
    GetWindow().Enable(IDOK, false);
}

int COptionsDlg::GetKindState(std::uint32_t type) const {
    std::size_t drives = 0;
    std::size_t selected = 0;
    for (std::size_t i = 0; i < m_items.size(); ++i) {
        if (m_items[i].m_nType != type) continue;
        ++drives;
        if (GetWindow().IsItemSelected(IDC_DRIVES, i)) ++selected;
    }
    if (selected == 0) return 0;
    return selected == drives ? 1 : 2;
}

void COptionsDlg::UpdateKindChecks() {
    for (const CCheck& kind : kKinds)
        GetWindow().SetCheck(kind.m_id, GetKindState(kind.m_nType));
}

void COptionsDlg::SelectKind(std::uint32_t type, bool selected) {
    m_bBusy = true;
    for (std::size_t i = 0; i < m_items.size(); ++i) {
        if (m_items[i].m_nType == type) GetWindow().SelectItem(IDC_DRIVES, i, selected);
    }
    m_bBusy = false;
}

void COptionsDlg::OnCommand(std::uint32_t id, EControlEvent event) {
    if (id == IDC_DRIVES) {
        if (m_bBusy || event != EControlEvent::kSelected) return;
        UpdateKindChecks();
    } else if (event != EControlEvent::kClicked) {
        return;
    }
    // A click only switches a kind off or on; "some of them" comes from the list alone.
    for (const CCheck& kind : kKinds) {
        if (id != kind.m_id) continue;
        if (GetWindow().GetCheck(id) == 2) GetWindow().SetCheck(id, 0);
        SelectKind(kind.m_nType, GetWindow().GetCheck(id) == 1);
    }
    // Extensions are found through HKCR.
    if (id == IDC_HKCR && GetWindow().GetCheck(IDC_HKCR) == 0) GetWindow().SetCheck(IDC_EXTENSIONS, 0);
    if (id == IDC_EXTENSIONS && GetWindow().GetCheck(IDC_EXTENSIONS) == 1) GetWindow().SetCheck(IDC_HKCR, 1);
    GetWindow().Enable(IDOK, true);
}

void COptionsDlg::OnOK() {
    ApplyToContext();
    CDialog::OnOK();
}

// A drive whose kind is not on as a whole is chosen by itself.
void COptionsDlg::ApplyToContext() {
    theContext.m_dwDrivesOn = 0;
    for (std::size_t i = 0; i < m_items.size(); ++i) {
        const std::uint32_t check = KindCheckId(m_items[i].m_nType);
        const bool isCovered = check != 0 && GetWindow().GetCheck(check) == 1;
        if (GetWindow().IsItemSelected(IDC_DRIVES, i) && !isCovered) theContext.m_dwDrivesOn |= m_items[i].m_dwBit;
    }
    const auto apply = [this](const CCheck& check) {
        theContext.*check.m_option = GetWindow().GetCheck(check.m_id) == 1;
    };
    std::ranges::for_each(kKinds, apply);
    std::ranges::for_each(kOthers, apply);
    if (GetWindow().GetCheck(IDC_SAVE_SETTINGS) != 0) theContext.WriteConfig();
}

}  // namespace delvane
