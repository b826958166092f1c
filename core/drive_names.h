// Drive names, masks, kinds and volume texts.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/text.h"

namespace delvane {

// The kind of the drive that the first two characters name, asked of the machine.
std::uint32_t DriveTypeOf(std::string_view name);
// The drive's bit in a mask, bit 0 for A:. The shift is taken modulo 32.
std::uint32_t DriveBit(std::string_view name);
// The name of the lowest drive in the mask; empty for an empty mask.
CString DriveName(std::uint32_t mask);
// The names of all drives in the mask with ", " between them.
CString DriveNames(std::uint32_t mask);
// The word for a kind of drive; empty for a number that is none.
CString DriveTypeText(std::uint32_t type);
// The volume label, for a network drive the remote share, as the machine gives it now; empty if it gives none. Gives an
// error number.
std::uint32_t ReadVolumeName(std::string_view name, CString& text);
CString VolumeNameOf(std::string_view name);
// The name, and the volume text in brackets behind it if there is one.
CString DriveDisplayName(std::string_view name);

}  // namespace delvane
