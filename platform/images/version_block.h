// The version resource of an executable image, and look-ups in it.
#pragma once

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

// The bytes of one VS_VERSIONINFO block, in the 32-bit form (UTF-16, from a PE image) or the 16-bit form (code page
// 1252, from an NE image).
class CVersionBlock : public CVersionInfo {
public:
    // Finds the version resource of a PE (32 or 64 bit) or an NE image and copies it. Nothing where the file is no
    // such image, has no version resource, or is damaged on the way to it.
    static std::optional<CVersionBlock> Read(const CByteSource& file);

    // In UTF-8; an unpaired surrogate is written as its three bytes. Nothing where the block is damaged on the way.
    std::optional<std::string> Query(std::string_view path) const override;

private:
    std::string m_bytes;
    bool m_bWide = false;  // the 32-bit form
};

}  // namespace delvane
