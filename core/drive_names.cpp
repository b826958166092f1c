#include "core/drive_names.h"

#include <bit>

#include "core/context.h"
#include "resources/strings.h"

namespace delvane {
namespace {

CString RootOf(std::string_view name) { return CString(name.substr(0, 2)) + '\\'; }

}  // namespace

std::uint32_t DriveTypeOf(std::string_view name) { return theContext.GetMachine().GetDriveType(RootOf(name)); }

std::uint32_t DriveBit(std::string_view name) {
    const int letter = name.empty() ? 0 : static_cast<unsigned char>(name.front());
    return std::uint32_t{1} << (static_cast<unsigned>(letter - 'A') % 32);
}

CString DriveName(std::uint32_t mask) {
    if (mask == 0) return {};
    return CString(1, static_cast<char>('A' + std::countr_zero(mask))) + ':';
}

CString DriveNames(std::uint32_t mask) {
    CString names;
    for (; mask != 0; mask &= mask - 1) {
        if (!names.empty()) names += ", ";
        names += DriveName(mask);
    }
    return names;
}

CString DriveTypeText(std::uint32_t type) {
    return type <= DRIVE_RAMDISK ? CString(LoadResString(IDS_DRIVE_UNKNOWN + type)) : CString();
}

std::uint32_t ReadVolumeName(std::string_view name, CString& text) {
    CMachine& machine = theContext.GetMachine();
    const std::uint32_t error = DriveTypeOf(name) == DRIVE_REMOTE ? machine.GetConnection(name, text)
                                                                  : machine.GetVolumeLabel(RootOf(name), text);
    if (error != ERROR_SUCCESS) text.clear();
    return error;
}

CString VolumeNameOf(std::string_view name) {
    CString text;
    ReadVolumeName(name, text);
    return text;
}

CString DriveDisplayName(std::string_view name) {
    const CString volume = VolumeNameOf(name);
    return volume.empty() ? CString(name) : CString(name) + " [" + volume + "]";
}

}  // namespace delvane
