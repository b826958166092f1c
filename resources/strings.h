// The string table: the texts that go by an id, findings and messages above all.
#pragma once

#include <cstdint>
#include <string_view>

namespace delvane {

// The version of the snapshot format and of the program, as its texts show it.
inline constexpr std::string_view kVersionText = "v2.1";

enum : std::uint32_t {
    IDS_MY_COMPUTER = 110,
    IDS_DRIVE_TYPES_DIFFER = 112,
    IDS_DRIVE_NOT_IN_BASELINE = 113,
    IDS_DRIVE_NOT_IN_CURRENT = 114,
    IDS_MY_COMPUTER_EXTENSIONS = 115,
    IDS_EXES_ADDED_OUTSIDE = 182,
    IDS_KERNEL_DRIVERS = 183,
    IDS_SYSTEM_FILE = 184,
    IDS_OTHER_MACHINES = 223,
    IDS_CURRENT_ELSEWHERE = 224,
    IDS_OTHER_SYSTEMS = 226,
    IDS_WRONG_SIGNATURE = 227,
    IDS_LATER_VERSION = 228,
    IDS_CURRENT_OLDER = 229,
    IDS_16BIT_EXES = 230,
    IDS_DRIVE_UNKNOWN = 231,  // 231 to 237: the words of the drive types 0 to 6
    IDS_DRIVE_RAMDISK = 237,
    IDS_VOLUMES_DIFFER = 238,
    IDS_DRIVES_ONLY_IN_BASELINE = 239,
    IDS_DRIVES_ONLY_IN_CURRENT = 240,
    IDS_BASELINE_ELSEWHERE = 241,
    IDS_NO_UNINSTALL_ADDITIONS = 259,
    IDS_FILES_OUTSIDE = 261,
    IDS_START_MENU_ADDITIONS = 263,
    IDS_SYSTEM_EXES = 265,
};

// The text of an id; empty for an id that is not in the table.
std::string_view LoadResString(std::uint32_t id);

}  // namespace delvane
