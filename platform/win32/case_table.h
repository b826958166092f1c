// The characters beyond ASCII that have another case. Windows' own tables differ from release to release; with this one
// two machines agree, and the builds do.
#pragma once

#include <cstddef>
#include <cstdint>

namespace delvane {

struct CCaseEntry {
    std::uint32_t m_nCharacter;
    std::uint32_t m_nLower;
    std::uint32_t m_nFold;  // the form that all cases share
};

extern const CCaseEntry kCaseTable[];  // ascending
extern const std::size_t kCaseTableSize;

}  // namespace delvane
