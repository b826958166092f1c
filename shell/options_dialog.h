// What a capture reads: drives by kind and one by one, hives, extensions.
#pragma once

#include <vector>

#include "shell/dialog.h"

namespace delvane {

// Works on a copy of the options; ApplyToContext writes it back.
class COptionsDlg : public CDialog {
public:
    COptionsDlg();

    // After OK.
    void ApplyToContext();

    int m_nCompactDiscs = 0;  // the four kinds: 0 off, 1 on, 2 some of them
    int m_nExtensions = 0;
    int m_nHardDrives = 0;
    int m_nHkcr = 0;
    int m_nHkcu = 0;
    int m_nHklm = 0;
    int m_nNetworkDrives = 0;
    int m_nRemovableDrives = 0;
    int m_nSaveSettings = 0;
    std::uint32_t m_dwDrives = 0;  // single drives, collected by OK
    bool m_bBusy = false;          // the list changes by the dialog's own doing

protected:
    void DoDataExchange(bool save) override;
    void OnInitDialog() override;
    void OnOK() override;
    void OnCommand(std::uint32_t id, EControlEvent event) override;

private:
    struct CItem {
        std::uint32_t m_dwBit = 0;
        std::uint32_t m_nType = 0;  // as GetDriveType gives it
    };

    static std::uint32_t KindCheckId(std::uint32_t type);
    int GetKindState(std::uint32_t type) const;
    void SelectKind(std::uint32_t type, bool selected);
    void OnKind(std::uint32_t type);
    void UpdateKindChecks();

    std::vector<CItem> m_items;  // of the list, in its order
};

}  // namespace delvane
