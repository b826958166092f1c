// The version resource of an executable image, and look-ups in it.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/images/image.h"

namespace delvane {

// The version information of one file.
class CVersionInfo {
public:
    virtual ~CVersionInfo() = default;
    // The text at a path such as "\StringFileInfo\040904E4\FileVersion", up to its first NUL, in the code page. Keys
    // are compared without regard to case. Nothing where the path leads nowhere.
    virtual std::optional<std::string> Query(std::string_view path) const = 0;
};

// The version resource of a PE (32 or 64 bit) or an NE image: a block in the 32-bit form (UTF-16) or in the 16-bit form
// (code page 1252). Its texts are in UTF-8; an unpaired surrogate is its three bytes. Null where the file is no such
// image, has no version resource, or is damaged on the way to it; a Query gives nothing where the block is damaged.
std::unique_ptr<const CVersionInfo> ReadVersionBlock(const CByteSource& file);

}  // namespace delvane
