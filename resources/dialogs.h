// The dialogs and the menu: their controls, texts and places.
#pragma once

#include "platform/toolkit.h"

namespace delvane {

// Of message boxes.
inline constexpr std::string_view kProgramTitle = "Norvelle-Kestran Install Delvane";

// Dialogs.
constexpr std::uint32_t IDD_ABOUT = 100;
constexpr std::uint32_t IDD_MAIN = 102;
constexpr std::uint32_t IDD_PROGRESS = 129;
constexpr std::uint32_t IDD_NEW_SNAPSHOT = 131;
constexpr std::uint32_t IDD_LOAD_SNAPSHOT = 133;
constexpr std::uint32_t IDD_OPTIONS = 136;

// Commands of the main dialog.
constexpr std::uint32_t IDC_CREATE_BASELINE = 1004;
constexpr std::uint32_t IDC_LOAD_BASELINE = 1005;
constexpr std::uint32_t IDC_COMPARE = 1012;
constexpr std::uint32_t IDC_CREATE_CURRENT = 1018;
constexpr std::uint32_t IDC_LOAD_CURRENT = 1019;
constexpr std::uint32_t IDM_ABOUT = 16;
constexpr std::uint32_t IDM_OPTIONS = 32772;
constexpr std::uint32_t IDM_EXIT = 57665;
constexpr std::uint32_t IDM_USING = 57670;

// The name dialogs.
constexpr std::uint32_t IDC_NAME = 1011;
constexpr std::uint32_t IDC_COMPARE_AFTER = 1012;
constexpr std::uint32_t IDC_SNAPSHOTS = 1013;

// The options dialog.
constexpr std::uint32_t IDC_EXTENSIONS = 1015;
constexpr std::uint32_t IDC_HKLM = 1016;
constexpr std::uint32_t IDC_HKCU = 1017;
constexpr std::uint32_t IDC_HKCR = 1018;
constexpr std::uint32_t IDC_SAVE_SETTINGS = 1019;
constexpr std::uint32_t IDC_HARD_DRIVES = 1021;
constexpr std::uint32_t IDC_REMOVABLE_DRIVES = 1022;
constexpr std::uint32_t IDC_COMPACT_DISCS = 1023;
constexpr std::uint32_t IDC_NETWORK_DRIVES = 1024;
constexpr std::uint32_t IDC_DRIVES = 1025;

// The template of that id, which must be one of the dialogs above.
const CDialogTemplate& GetDialogTemplate(std::uint32_t id);

}  // namespace delvane
