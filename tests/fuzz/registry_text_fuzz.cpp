// Wine's registry text: any bytes are read to the end, and what is delivered keeps the reader's promises.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/hosted/registry/registry_text.h"

namespace {

void Expect(bool holds) {
    if (!holds) std::abort();
}

void CheckPath(std::string_view path) {
    Expect(!path.starts_with('\\') && !path.ends_with('\\') && path.find("\\\\") == std::string_view::npos);
}

// Touches every byte, so that a view that is too long is seen.
unsigned Sum(std::string_view text) {
    unsigned sum = 0;
    for (const char c : text)
        sum += static_cast<unsigned char>(c);
    return sum;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // A block of the exact size, so that reading behind its end is seen; half of the inputs get the first line.
    const std::string text =
        (size % 2 != 0 ? "WINE REGISTRY Version 2\n" : "") + std::string(reinterpret_cast<const char*>(data), size);
    unsigned sum = 0;
    delvane::CRegistryText reader(text);
    std::size_t delivered = 0;
    for (delvane::CRegistryText::CKey key; reader.NextKey(key);) {
        CheckPath(key.m_path);
        sum += Sum(key.m_path);
        ++delivered;
        for (delvane::CRegistryText::CValue value; reader.NextValue(value);) {
            sum += Sum(value.m_name) + Sum(value.m_data);
            Expect(value.m_data.size() <= 2 * text.size());
            ++delivered;
        }
    }
    Expect(delivered <= text.size());
    Expect((reader.GetProblemCount() == 0) == reader.GetProblem().empty());
    Expect(!reader.IsCut() || !reader.GetProblem().empty());
    Expect(reader.IsCut() || !reader.HasHeader() || text.ends_with('\n'));

    // Passing over sections finds the same keys.
    delvane::CRegistryText skipping(text);
    std::size_t keys = 0;
    for (delvane::CRegistryText::CKey key; skipping.NextKey(key); ++keys)
        if (key.m_pName != nullptr) {
            const std::string_view name = key.m_path.substr(key.m_path.rfind('\\') + 1);
            Expect(std::string_view(key.m_pName, name.size()) == name);
        }
    Expect(keys <= delivered && skipping.IsCut() == reader.IsCut());
    volatile unsigned sink = sum;
    static_cast<void>(sink);
    return 0;
}
