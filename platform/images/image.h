// Executable images: which kind of image a file is, as the loader of Windows sees it, and its version resource.
//
// Facts from the published formats: the MZ header of MS-DOS, NE (16-bit Windows), LE (virtual device drivers) and
// PE (32 and 64 bit).
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace delvane {

// Random access to the bytes of a file or of a block in memory.
class CByteSource {
public:
    virtual ~CByteSource() = default;
    virtual std::uint64_t GetSize() const = 0;
    // Reads up to `size` bytes from `offset` on into `into` and gives how many there were; fewer than asked for
    // at the end of the file or where it cannot be read.
    virtual std::size_t Read(std::uint64_t offset, void* into, std::size_t size) const = 0;
};

// The two members of a LOADED_IMAGE that the program reads.
struct CLoadedImage {
    bool fSystemImage = false;  // a kernel mode image: a PE file of the native subsystem
    bool fDOSImage = false;     // a 16-bit image: MZ with no newer header, NE or LE
};

// Says of the bytes what MapAndLoad says of a file. True for a PE image, and then fSystemImage tells whether it is a
// kernel mode image. False for everything else; fDOSImage is then true for MZ without a newer header, NE and LE.
bool MapImage(const CByteSource& file, CLoadedImage& image);

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
