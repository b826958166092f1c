// What every hive promises, whatever the bytes it comes from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/hosted/registry/hive.h"
#include "platform/text.h"
#include "tests/support/hive_lines.h"

namespace delvane {

inline void Expect(bool holds) {
    if (!holds) std::abort();
}

// Visits every key. `size` is that of the bytes.
inline void CheckHive(CHive& hive, std::size_t size) {
    std::vector<std::uint32_t> keys = {hive.GetRoot()};
    std::uint64_t handedOut = 0;
    CKeyContents contents;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        Expect(keys.size() <= size + 1);  // no key comes twice, so there are fewer than bytes
        contents.Clear();
        hive.GetLink(keys[i]);
        if (!hive.ReadKey(keys[i], contents)) continue;
        for (const CKeyContents::CValue& value : contents.m_values)
            handedOut += contents.Get(value.m_name).size() + contents.Get(value.m_data).size();
        Expect(handedOut <= (std::uint64_t{size} + 64) * 16);
        for (const CKeyContents::CSubkey& subkey : contents.m_subkeys) {
            keys.push_back(subkey.m_nKey);
            const std::string_view name = contents.Get(subkey.m_name);
            if (contents.m_subkeys.size() > 50) continue;
            const auto found = hive.FindSubkey(keys[i], name);
            Expect(found.has_value());
            bool isOneOfThem = false;
            for (const CKeyContents::CSubkey& candidate : contents.m_subkeys) {
                isOneOfThem =
                    isOneOfThem || (candidate.m_nKey == *found && mbsicmp(contents.Get(candidate.m_name), name) == 0);
            }
            Expect(isOneOfThem);
        }
    }
    for (const CNotice& problem : hive.GetProblems())
        Expect(problem.m_strSentence.find('\n') == std::string::npos && problem.m_strSentence.size() < 1000);
}

}  // namespace delvane
