#include "resources/dialogs.h"

#include <algorithm>

namespace delvane {
namespace {

using enum EControlKind;

constexpr CMenuEntry kFileMenu[] = {
    {IDC_CREATE_BASELINE, "C&reate Baseline Snapshot..."},
    {IDC_CREATE_CURRENT, "Cr&eate Current Snapshot..."},
    {},
    {IDC_LOAD_BASELINE, "L&oad Baseline Snapshot..."},
    {IDC_LOAD_CURRENT, "Lo&ad Current Snapshot..."},
    {},
    {IDC_COMPARE, "&Compare Snapshots"},
    {},
    {IDM_EXIT, "E&xit"},
};
constexpr CMenuEntry kToolsMenu[] = {{IDM_OPTIONS, "&Options..."}};
constexpr CMenuEntry kHelpMenu[] = {
    {IDM_USING, "&Using Install Delvane...\tF1"},
    {IDM_ABOUT, "&About Norvelle-Kestran Install Delvane..."},
};
constexpr CMenuPopup kMainMenu[] = {{"&File", kFileMenu}, {"&Tools", kToolsMenu}, {"&Help", kHelpMenu}};

constexpr CControlTemplate kAbout[] = {
    {kIcon, 128, "", {10, 10, 21, 20}, {}},
    {kLabel, 0, "Norvelle-Kestran Install Delvane\nVersion 2.1", {42, 10, 181, 20}, {}},
    {kDefaultButton, IDOK, "OK", {173, 38, 50, 14}, {}},
};

constexpr CControlTemplate kMain[] = {
    {kGroup, 0, "Baseline Snapshot", {7, 7, 286, 107}, {}},
    {kLabel, 0, "Name:", {15, 24, 66, 8}, {}},
    {kText, 1003, "", {84, 22, 201, 12}, {}},
    {kLabel, 0, "Machine:", {15, 38, 66, 8}, {}},
    {kText, 1006, "", {84, 36, 201, 12}, {}},
    {kLabel, 0, "User:", {15, 52, 66, 8}, {}},
    {kText, 1007, "", {84, 50, 201, 12}, {}},
    {kLabel, 0, "Time/Date:", {15, 66, 66, 8}, {}},
    {kText, 1009, "", {84, 64, 201, 12}, {}},
    {kLabel, 0, "Operating System:", {15, 80, 66, 8}, {}},
    {kText, 1016, "", {84, 78, 201, 12}, {}},
    {kButton, IDC_CREATE_BASELINE, "C&reate...", {177, 94, 52, 14}, {}},
    {kButton, IDC_LOAD_BASELINE, "L&oad...", {233, 94, 52, 14}, {}},
    {kButton, IDC_COMPARE, "&Compare...", {115, 120, 70, 14}, {}},
    {kGroup, 0, "Current Snapshot", {7, 140, 286, 107}, {}},
    {kLabel, 0, "Name:", {15, 157, 66, 8}, {}},
    {kText, 1017, "", {84, 155, 201, 12}, {}},
    {kLabel, 0, "Machine:", {15, 171, 66, 8}, {}},
    {kText, 1020, "", {84, 169, 201, 12}, {}},
    {kLabel, 0, "User:", {15, 185, 66, 8}, {}},
    {kText, 1021, "", {84, 183, 201, 12}, {}},
    {kLabel, 0, "Time/Date:", {15, 199, 66, 8}, {}},
    {kText, 1022, "", {84, 197, 201, 12}, {}},
    {kLabel, 0, "Operating System:", {15, 213, 66, 8}, {}},
    {kText, 1023, "", {84, 211, 201, 12}, {}},
    {kButton, IDC_CREATE_CURRENT, "Cr&eate...", {177, 227, 52, 14}, {}},
    {kButton, IDC_LOAD_CURRENT, "Lo&ad...", {233, 227, 52, 14}, {}},
};

constexpr CControlTemplate kProgress[] = {
    {kGroup, 0, "File Information", {7, 7, 108, 74}, {}},
    {kLabel, 0, "Drives", {15, 22, 44, 8}, {}},
    {kText, 1000, "", {62, 20, 45, 12}, {}},
    {kLabel, 0, "Directories", {15, 36, 44, 8}, {}},
    {kText, 1001, "", {62, 34, 45, 12}, {}},
    {kLabel, 0, "Files", {15, 50, 44, 8}, {}},
    {kText, 1002, "", {62, 48, 45, 12}, {}},
    {kLabel, 0, "Extensions", {15, 64, 44, 8}, {}},
    {kText, 1007, "", {62, 62, 45, 12}, {}},
    {kGroup, 0, "Registry Information", {122, 7, 108, 74}, {}},
    {kLabel, 0, "Hives", {130, 22, 44, 8}, {}},
    {kText, 1009, "", {177, 20, 45, 12}, {}},
    {kLabel, 0, "Keys", {130, 36, 44, 8}, {}},
    {kText, 1010, "", {177, 34, 45, 12}, {}},
    {kLabel, 0, "Values", {130, 50, 44, 8}, {}},
    {kText, 1011, "", {177, 48, 45, 12}, {}},
    {kButton, IDCANCEL, "Cancel", {180, 88, 50, 14}, {}},
};

constexpr std::string_view kNames[] = {"Pre-Install", "Post-Install (Pre-Functionality)", "Post-Functionality",
                                       "Uninstall"};

constexpr CControlTemplate kNewSnapshot[] = {
    {kLabel, 0, "&Name:", {7, 11, 28, 8}, {}},
    {kCombo, IDC_NAME, "", {38, 9, 155, 12}, kNames},
    {kCheck, IDC_COMPARE_AFTER, "&Compare After Creation", {38, 27, 155, 10}, {}},
    {kDefaultButton, IDOK, "OK", {89, 44, 50, 14}, {}},
    {kButton, IDCANCEL, "Cancel", {143, 44, 50, 14}, {}},
};

constexpr CControlTemplate kLoadSnapshot[] = {
    {kLabel, 0, "&Snapshots Available:", {7, 7, 186, 8}, {}},
    {kSortedList, IDC_SNAPSHOTS, "", {7, 18, 186, 84}, {}},
    {kDefaultButton, IDOK, "OK", {89, 109, 50, 14}, {}},
    {kButton, IDCANCEL, "Cancel", {143, 109, 50, 14}, {}},
};

constexpr CControlTemplate kOptions[] = {
    {kGroup, 0, "Drives", {7, 7, 236, 106}, {}},
    {kThreeState, IDC_HARD_DRIVES, "&Hard Drives", {15, 20, 105, 10}, {}},
    {kThreeState, IDC_REMOVABLE_DRIVES, "R&emovable Drives", {124, 20, 111, 10}, {}},
    {kThreeState, IDC_COMPACT_DISCS, "&Compact Discs", {15, 33, 105, 10}, {}},
    {kThreeState, IDC_NETWORK_DRIVES, "&Network Drives", {124, 33, 111, 10}, {}},
    {kLabel, 0, "Choose &Drives:", {15, 47, 105, 8}, {}},
    {kItemList, IDC_DRIVES, "", {15, 57, 220, 50}, {}},
    {kGroup, 0, "Registry", {7, 117, 236, 54}, {}},
    {kCheck, IDC_HKLM, "HKEY_LOCAL_&MACHINE", {15, 129, 220, 10}, {}},
    {kCheck, IDC_HKCU, "HKEY_CURRENT_&USER", {15, 142, 220, 10}, {}},
    {kCheck, IDC_HKCR, "HKEY_CLASSES_&ROOT", {15, 155, 220, 10}, {}},
    {kGroup, 0, "Extensions", {7, 175, 116, 28}, {}},
    {kCheck, IDC_EXTENSIONS, "Compare E&xtensions", {15, 187, 100, 10}, {}},
    {kGroup, 0, "Defaults", {127, 175, 116, 28}, {}},
    {kCheck, IDC_SAVE_SETTINGS, "&Save Settings", {135, 187, 100, 10}, {}},
    {kDefaultButton, IDOK, "OK", {139, 210, 50, 14}, {}},
    {kButton, IDCANCEL, "Cancel", {193, 210, 50, 14}, {}},
};

constexpr CDialogTemplate kDialogs[] = {
    {IDD_ABOUT, "About Norvelle-Kestran Install Delvane", 230, 59, kAbout, {}},
    {IDD_MAIN, "Norvelle-Kestran Install Delvane - v2.1", 300, 254, kMain, kMainMenu},
    {IDD_PROGRESS, "Creating Snapshot... Please Wait", 237, 109, kProgress, {}},
    {IDD_NEW_SNAPSHOT, "Create New Snapshot", 200, 65, kNewSnapshot, {}},
    {IDD_LOAD_SNAPSHOT, "Load Snapshot", 200, 130, kLoadSnapshot, {}},
    {IDD_OPTIONS, "Select Which Portions of the System to Analyze", 250, 231, kOptions, {}},
};

}  // namespace

const CDialogTemplate& GetDialogTemplate(std::uint32_t id) {
    return *std::ranges::find(kDialogs, id, &CDialogTemplate::m_id);
}

}  // namespace delvane
