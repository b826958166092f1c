// Any bytes as an executable image: which kind it is, and what its version block answers. Little is read, and an answer
// is no longer than what the block could hold.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/images/image.h"
#include "tests/support/memory_source.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const delvane::CMemorySource file(std::string_view(reinterpret_cast<const char*>(data), size));
    delvane::CLoadedImage image;
    const bool mapped = delvane::MapImage(file, image);
    if (image.fDOSImage && (mapped || image.fSystemImage)) std::abort();  // the answers exclude each other
    if (image.fSystemImage && !mapped) std::abort();

    const auto block = delvane::ReadVersionBlock(file);
    if (file.m_nAskedFor > 2048 + size * 8) std::abort();
    if (!block) return 0;
    for (const char* const path :
         {"\\StringFileInfo\\040904E4\\ProductVersion", "\\StringFileInfo\\040904B0\\FileVersion",
          "\\VarFileInfo\\Translation", "\\", "a\\\\b"}) {
        const auto text = block->Query(path);
        if (text && (text->find('\0') != std::string::npos || text->size() > size * 3 / 2)) std::abort();
    }
    return 0;
}
