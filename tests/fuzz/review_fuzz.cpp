// What a review reads that people and other programs write: reviewed lists and lists of gaps.
#include <cstddef>
#include <cstdint>

#include "review/change_list.h"
#include "review/gap_list.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace delvane;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    std::vector<CReviewGap> gaps;
    CString problem;
    ReadGaps(text, gaps, problem);
    try {
        CAcceptList list;
        list.Read("list.toml", text, kUnixEpochTicks);
        CChange change;
        change.m_path = "C:\\Program Files\\App\\a[1].exe";
        list.Find(change);
    } catch (const CAcceptError&) {
    }
    return 0;
}
