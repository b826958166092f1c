// What a capture reads: drives by kind and one by one, hives, extensions.
#pragma once

#include <vector>

#include "shell/dialog.h"

namespace delvane {

// OK carries what is chosen into the options of theContext, and no other way out does.
class COptionsDlg : public CDialog {
public:
    COptionsDlg() : CDialog(IDD_OPTIONS) {}

protected:
    void OnInitDialog() override;
    void OnOK() override;
    void OnCommand(std::uint32_t id, EControlEvent event) override;

private:
    struct CItem {
        std::uint32_t m_dwBit = 0;
        std::uint32_t m_nType = 0;  // as GetDriveType gives it
    };

    void ApplyToContext();
    int GetKindState(std::uint32_t type) const;
    void SelectKind(std::uint32_t type, bool selected);
    void UpdateKindChecks();

    std::vector<CItem> m_items;  // of the list, in its order
    bool m_bBusy = false;        // the list changes by the dialog's own doing
};

}  // namespace delvane
