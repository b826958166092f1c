#include "shell/options_dialog.h"

#include "core/context.h"
#include "core/drive_names.h"
#include "resources/dialogs.h"

namespace delvane {
namespace {

constexpr std::uint32_t kKinds[] = {DRIVE_CDROM, DRIVE_FIXED, DRIVE_REMOTE, DRIVE_REMOVABLE};

struct CCheck {
    std::uint32_t m_id;
    int COptionsDlg::*m_state;
};

constexpr CCheck kChecks[] = {
    {IDC_COMPACT_DISCS, &COptionsDlg::m_nCompactDiscs},
    {IDC_EXTENSIONS, &COptionsDlg::m_nExtensions},
    {IDC_HARD_DRIVES, &COptionsDlg::m_nHardDrives},
    {IDC_HKCR, &COptionsDlg::m_nHkcr},
    {IDC_HKCU, &COptionsDlg::m_nHkcu},
    {IDC_HKLM, &COptionsDlg::m_nHklm},
    {IDC_NETWORK_DRIVES, &COptionsDlg::m_nNetworkDrives},
    {IDC_REMOVABLE_DRIVES, &COptionsDlg::m_nRemovableDrives},
    {IDC_SAVE_SETTINGS, &COptionsDlg::m_nSaveSettings},
};

}  // namespace

COptionsDlg::COptionsDlg() : CDialog(IDD_OPTIONS) {
    m_nCompactDiscs = theContext.m_bCompactDiscs ? 1 : 0;
    m_nExtensions = theContext.m_bExtensions && theContext.m_bHkcr ? 1 : 0;
    m_nHardDrives = theContext.m_bHardDrives ? 1 : 0;
    m_nHkcr = theContext.m_bHkcr ? 1 : 0;
    m_nHkcu = theContext.m_bHkcu ? 1 : 0;
    m_nHklm = theContext.m_bHklm ? 1 : 0;
    m_nNetworkDrives = theContext.m_bNetworkDrives ? 1 : 0;
    m_nRemovableDrives = theContext.m_bRemovableDrives ? 1 : 0;
}

void COptionsDlg::ApplyToContext() {
    theContext.m_bRemovableDrives = m_nRemovableDrives == 1;
    theContext.m_bCompactDiscs = m_nCompactDiscs == 1;
    theContext.m_bNetworkDrives = m_nNetworkDrives == 1;
    theContext.m_bHardDrives = m_nHardDrives == 1;
    theContext.m_bHklm = m_nHklm == 1;
    theContext.m_bHkcr = m_nHkcr == 1;
    theContext.m_bHkcu = m_nHkcu == 1;
    theContext.m_bExtensions = m_nExtensions == 1;
    theContext.m_dwDrivesOn = m_dwDrives;
    if (m_nSaveSettings != 0) theContext.WriteConfig();
}

void COptionsDlg::DoDataExchange(bool save) {
    for (const CCheck& check : kChecks) {
        if (save) {
            this->*check.m_state = GetWindow().GetCheck(check.m_id);
        } else {
            GetWindow().SetCheck(check.m_id, this->*check.m_state);
        }
    }
}

void COptionsDlg::OnInitDialog() {
    for (const std::uint32_t type : kKinds)
        GetWindow().Enable(KindCheckId(type), false);
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

std::uint32_t COptionsDlg::KindCheckId(std::uint32_t type) {
    switch (type) {
        case DRIVE_REMOVABLE:
            return IDC_REMOVABLE_DRIVES;
        case DRIVE_FIXED:
            return IDC_HARD_DRIVES;
        case DRIVE_REMOTE:
            return IDC_NETWORK_DRIVES;
        case DRIVE_CDROM:
            return IDC_COMPACT_DISCS;
        default:
            return 0;
    }
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
    for (const std::uint32_t type : kKinds)
        GetWindow().SetCheck(KindCheckId(type), GetKindState(type));
}

void COptionsDlg::SelectKind(std::uint32_t type, bool selected) {
    m_bBusy = true;
    for (std::size_t i = 0; i < m_items.size(); ++i) {
        if (m_items[i].m_nType == type) GetWindow().SelectItem(IDC_DRIVES, i, selected);
    }
    m_bBusy = false;
}

// A click only switches a kind off or on; "some of them" comes from the list alone.
void COptionsDlg::OnKind(std::uint32_t type) {
    const std::uint32_t check = KindCheckId(type);
    if (GetWindow().GetCheck(check) == 2) GetWindow().SetCheck(check, 0);
    SelectKind(type, GetWindow().GetCheck(check) == 1);
}

void COptionsDlg::OnCommand(std::uint32_t id, EControlEvent event) {
    if (id == IDC_DRIVES) {
        if (m_bBusy || event != EControlEvent::kSelected) return;
        UpdateKindChecks();
    } else if (event != EControlEvent::kClicked) {
        return;
    }
    for (const std::uint32_t type : kKinds) {
        if (id == KindCheckId(type)) OnKind(type);
    }
    // Extensions are found through HKCR.
    if (id == IDC_HKCR && GetWindow().GetCheck(IDC_HKCR) == 0) GetWindow().SetCheck(IDC_EXTENSIONS, 0);
    if (id == IDC_EXTENSIONS && GetWindow().GetCheck(IDC_EXTENSIONS) == 1) GetWindow().SetCheck(IDC_HKCR, 1);
    GetWindow().Enable(IDOK, true);
}

void COptionsDlg::OnOK() {
    for (std::size_t i = 0; i < m_items.size(); ++i) {
        if (!GetWindow().IsItemSelected(IDC_DRIVES, i)) continue;
        const std::uint32_t check = KindCheckId(m_items[i].m_nType);
        if (check == 0 || GetWindow().GetCheck(check) != 1) m_dwDrives |= m_items[i].m_dwBit;
    }
    CDialog::OnOK();
}

}  // namespace delvane
