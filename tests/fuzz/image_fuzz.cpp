// Any bytes as an executable image: which kind it is, and what its version block answers.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "platform/image.h"
#include "platform/version_block.h"

namespace {

class CMemorySource : public delvane::CByteSource {
public:
    explicit CMemorySource(std::string_view bytes) : m_bytes(bytes) {}

    std::uint64_t GetSize() const override { return m_bytes.size(); }
    std::size_t Read(std::uint64_t offset, void* into, std::size_t size) const override {
        if (offset >= m_bytes.size()) return 0;
        const std::string_view part = m_bytes.substr(static_cast<std::size_t>(offset), size);
        std::memcpy(into, part.data(), part.size());
        return part.size();
    }

private:
    std::string_view m_bytes;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const CMemorySource file({reinterpret_cast<const char*>(data), size});
    delvane::CLoadedImage image;
    const bool mapped = delvane::MapImage(file, image);
    if (image.fDOSImage && (mapped || image.fSystemImage)) std::abort();  // the answers exclude each other
    if (image.fSystemImage && !mapped) std::abort();

    const auto block = delvane::CVersionBlock::Read(file);
    if (!block) return 0;
    for (const char* const path :
         {"\\StringFileInfo\\040904E4\\ProductVersion", "\\StringFileInfo\\040904B0\\FileVersion",
          "\\VarFileInfo\\Translation", "\\", "a\\\\b"}) {
        const auto text = block->Query(path);
        if (text && text->find('\0') != std::string::npos) std::abort();
    }
    return 0;
}
