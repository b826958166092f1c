// What a machine has found wrong with itself.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>

#include "platform/text.h"

namespace delvane {

struct CNotice {
    CString m_strSentence;  // for a person; begins with the path where there is one
    std::string m_strPath =
        {};  // of the registry file that is missing, damaged or cannot be read, as the host spells it;
    std::uint32_t m_dwCode = 0;  // then an ERROR_... number. Empty and 0 for anything else

    // What is wrong with the file: the sentence without the file.
    CString GetReason() const {
        const std::size_t at = m_strSentence.starts_with(m_strPath) ? m_strPath.size() : 0;
        return m_strSentence.substr(std::min(m_strSentence.find_first_not_of(": ", at), m_strSentence.size()));
    }
    bool operator==(const CNotice&) const = default;
};

}  // namespace delvane
