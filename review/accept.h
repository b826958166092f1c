// The reviewed list: what somebody has looked at and accepts, and why.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "platform/text.h"
#include "review/pattern.h"
#include "review/words.h"

namespace delvane {

struct CChange;
struct CRule;

struct CAcceptEntry {
    std::uint32_t m_nNumber = 0;  // its place in all lists, counted from 1
    CString m_strFile;            // as it was given in the call
    std::uint32_t m_nLine = 0;
    CString m_strPath;               // the pattern; empty where it accepts a rule
    std::optional<CString> m_name;   // the pattern of a value's name
    std::uint8_t m_kinds = 0xFF;     // a bit for each EKind
    std::uint8_t m_changes = 0xFF;   // a bit for each EChange
    const CRule* m_pRule = nullptr;  // what it accepts where it has no pattern
    CString m_strReason;
    CString m_strUntil;  // "2027-03-31", or empty
    bool m_bExpired = false;
    bool m_bFits = false;  // it fits a change or a finding, whichever entry gave the reason

    // "list.toml:12: C:\x\**", for messages and for the page's list of entries.
    CString GetPlace() const;
};

// A list that cannot be used: a line for each thing that is wrong with it, "list.toml:12:3: ...".
class CAcceptError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The entries of all lists of a call, in their order. The first that fits gives the reason.
class CAcceptList {
public:
    // Appends the entries of a list, `text`, that came from `file`. `today` is the day in ticks, for entries that
    // expire. CAcceptError where the list cannot be used.
    void Read(std::string_view file, std::string_view text, std::uint64_t today);

    // The first entry that fits, or null; it keeps its place when the list is moved. Marks all that fit.
    const CAcceptEntry* Find(const CChange& change);
    const CAcceptEntry* Find(const CRule& rule);

    const std::vector<CAcceptEntry>& GetEntries() const { return m_entries; }

private:
    std::vector<CAcceptEntry> m_entries;
    CPatternIndex m_index;
};

}  // namespace delvane
