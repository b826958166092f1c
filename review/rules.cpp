#include "review/rules.h"

#include <algorithm>

#include "resources/strings.h"

namespace delvane {
namespace {

using enum ESeverity;

constexpr std::array<CRule, 26> kRules = {{
    {IDS_OTHER_MACHINES, "other-machines", kError, 0, "Snapshots of different machines",
     "The two snapshots bear different computer names, so what differs between them may have been different all along. "
     "Take both on the same machine."},
    {IDS_CURRENT_ELSEWHERE, "current-from-elsewhere", kError, 0, "Current snapshot of another machine",
     "The current snapshot bears another computer name than the machine that compares. Executables are examined on the "
     "machine that compares: kinds and versions may be those of other files, or missing."},
    {IDS_BASELINE_ELSEWHERE, "baseline-from-elsewhere", kError, 0, "Baseline snapshot of another machine",
     "The baseline snapshot bears another computer name than the machine that compares. Compare where the snapshots "
     "were taken."},
    {IDS_OTHER_SYSTEMS, "other-systems", kError, 0, "Snapshots of different systems",
     "The two snapshots were taken on different versions of the system, whose own files and keys differ. Take both on "
     "the same one."},
    {IDS_CURRENT_OLDER, "current-older", kError, 0, "Current snapshot is older than the baseline",
     "The current snapshot was taken before the baseline. They may have been given in the wrong order: what was added "
     "then shows as deleted."},
    {IDS_DRIVES_ONLY_IN_BASELINE, "drives-only-in-baseline", kWarning, 0, "Drives in the baseline alone",
     "The baseline holds drives that the current snapshot does not. Nothing on them is compared."},
    {IDS_DRIVES_ONLY_IN_CURRENT, "drives-only-in-current", kWarning, 0, "Drives in the current snapshot alone",
     "The current snapshot holds drives that the baseline does not. Nothing on them is compared."},
    {IDS_DRIVE_TYPES_DIFFER, "drive-types-differ", kWarning, 0, "A drive of two types",
     "A drive letter stands for drives of two types. The drive is not compared."},
    {IDS_VOLUMES_DIFFER, "volumes-differ", kWarning, 0, "A drive of two volumes",
     "A drive letter stands for two volumes, by their labels or shares. The drive is not compared."},
    {IDS_DRIVE_NOT_IN_BASELINE, "drive-not-in-baseline", kWarning, 0, "Drive not in the baseline",
     "A drive of the current snapshot is not in the baseline. It is not compared."},
    {IDS_DRIVE_NOT_IN_CURRENT, "drive-not-in-current", kWarning, 0, "Drive not in the current snapshot",
     "A drive of the baseline is not in the current snapshot. It is not compared."},
    {IDS_CURRENT_WITHOUT_HIVE, "current-without-hive", kWarning, 0, "Current snapshot without a hive",
     "A hive is empty in the current snapshot, so it is not compared. Take the snapshot with the same options as the "
     "baseline."},
    {IDS_BASELINE_WITHOUT_HIVE, "baseline-without-hive", kWarning, 0, "Baseline without a hive",
     "A hive is empty in the baseline, so it is not compared. Take both snapshots with the same options."},
    {IDS_NO_UNINSTALL_ADDITIONS, "no-uninstall-entry", kWarning, 1, "No uninstall entry",
     "Nothing was added below the Uninstall key, so users find no way to remove the application. An installer "
     "registers itself there."},
    {IDS_EXES_ADDED_OUTSIDE, "executables-outside", kWarning, 1, "Executables in unusual places",
     "Executables were added neither below the program files folder nor below the Windows directory. An installer puts "
     "them into the program files folder."},
    {IDS_SYSTEM_EXES, "system-executables", kWarning, 1, "Executables in the Windows directory",
     "Executables were added or changed below the Windows directory. An application keeps its own in its own folder "
     "and leaves the system's to the system."},
    {IDS_UNINSTALL_ADDITIONS, "uninstall-entries", kInfo, 1, "Uninstall entries",
     "Keys or values were added below the Uninstall key. Check that they name the application and how to remove it."},
    {IDS_16BIT_EXES, "sixteen-bit-executables", kWarning, 2, "16-bit executables",
     "16-bit executables were added or changed. They do not run on 64-bit Windows."},
    {IDS_SYSTEM_FILE, "system-file", kWarning, 3, "System start-up files",
     "One of autoexec.bat, config.sys, win.ini and system.ini was added or changed. An application leaves them alone."},
    {IDS_CURRENT_WITHOUT_EXTENSIONS, "current-without-extensions", kWarning, 4, "Current snapshot without extensions",
     "The current snapshot holds no file extensions, so they are not compared. Take the snapshot with the same options "
     "as the baseline."},
    {IDS_BASELINE_WITHOUT_EXTENSIONS, "baseline-without-extensions", kWarning, 4, "Baseline without extensions",
     "The baseline holds no file extensions, so they are not compared. Take both snapshots with the same options."},
    {IDS_BAD_EXTENSIONS, "bad-extensions", kWarning, 4, "Extensions not properly registered",
     "Extensions were added or changed that lack a file type, an icon or a command. Files of an application's own "
     "types show an icon and open with it, or are marked NoOpen."},
    {IDS_FILES_OUTSIDE, "files-outside", kWarning, 5, "Files in unusual places",
     "Files or directories were added outside the program files, Windows, application data, start menu and document "
     "folders. An application keeps its files in these."},
    {IDS_HKCU_CHANGES, "user-settings-changed", kInfo, 5, "User settings changed",
     "Keys or values of HKEY_CURRENT_USER were added, changed or deleted. Check that they are the application's own."},
    {IDS_START_MENU_ADDITIONS, "start-menu-changed", kInfo, 6, "Start menu entries",
     "Entries of the start menu were added or changed. Check by hand that they follow the rules for the start menu."},
    {IDS_KERNEL_DRIVERS, "kernel-mode-executables", kWarning, 7, "Kernel mode executables",
     "Kernel mode executables were added or changed. Drivers need testing of their own."},
}};

constexpr std::array<std::string_view, kRequirementCount> kRequirements = {
    "The snapshots themselves", "Installation and removal",        "32-bit executables", "System start-up files",
    "File extensions",          "Where files and settings belong", "Start menu",         "Kernel mode drivers",
};

}  // namespace

std::span<const CRule> GetRules() { return kRules; }

const CRule* FindRule(std::string_view id) {
    const auto* const rule = std::ranges::find(kRules, id, &CRule::m_id);
    return rule == kRules.end() ? nullptr : rule;
}

const CRule* FindRuleOfText(std::uint32_t textId) {
    const auto* const rule = std::ranges::find(kRules, textId, &CRule::m_textId);
    return rule == kRules.end() ? nullptr : rule;
}

std::string_view RequirementTitle(std::size_t requirement) { return kRequirements[requirement]; }

}  // namespace delvane
