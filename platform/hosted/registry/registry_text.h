// Reader of Wine's registry files (system.reg, user.reg): text that lists keys and their values.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/hosted/registry/registry_escape.h"

namespace delvane {

// Pulls keys and values out of the text of a whole file, in the order in which they stand there.
//
//     for (CRegistryText::CKey key; text.NextKey(key);) {
//         for (CRegistryText::CValue value; text.NextValue(value);) ...
//     }
//
// A file lists only keys that have values or no subkeys; the parents of a key need no section of their own. The text
// comes from outside and may be damaged: a line that cannot be read is skipped and noted, and reading goes on behind
// it. A key line that cannot be read takes its values with it. Values stand in the file one a line, so a reader that
// is asked for the next key finds it without looking at them; damage in lines passed over so is not noted.
class CRegistryText {
public:
    struct CKey {
        std::string_view m_path;  // below the root of the hive, components joined by one backslash; empty: the root
        const char* m_pName = nullptr;  // where its last component stands in the text without an escape; else null
        std::size_t m_nCommon = 0;  // so many of its bytes, whole components, are those of the key line before as well
        bool m_bIsLink = false;     // a symbolic link key; its value SymbolicLinkValue (type 6) names the target
    };

    // Name and data as the ANSI calls of the registry give them in the code page UTF-8: types 1, 2 and 7 converted with
    // their terminators, an odd last byte dropped; all other types as they are. An unpaired surrogate is its three
    // bytes. Bytes that stand unescaped in the file are passed on.
    struct CValue {
        std::string_view m_name;  // empty: the unnamed value
        std::uint32_t m_dwType = 0;
        std::string_view m_data;
    };

    // The text must outlive the reader.
    explicit CRegistryText(std::string_view text);
    CRegistryText(const CRegistryText&) = delete;
    CRegistryText& operator=(const CRegistryText&) = delete;

    // Whether the text begins as such a file does. Without that there are no keys.
    bool HasHeader() const { return m_bHeader; }

    // The next key, and the next value of that key; false when there is none. What they hand out lives until the next
    // call. NextKey passes over the values that were not asked for.
    bool NextKey(CKey& key);
    bool NextValue(CValue& value);

    // Where reading goes on, as an offset into the text. Behind NextKey that is where the key's values begin; NextValue
    // hands them out again once the position is set there.
    std::size_t GetPosition() const { return static_cast<std::size_t>(m_pNext - m_pBegin); }
    void SetPosition(std::size_t position) { m_pNext = m_pBegin + position; }

    // What was wrong with the part read so far: how often, and the first in the form "line 12: a value without a
    // closing quotation mark"; empty when nothing was.
    std::size_t GetProblemCount() const { return m_nProblems; }
    const std::string& GetProblem() const { return m_strProblem; }
    // Whether the file breaks off: its last line has no end, or the text ends inside a value. Known once the end was
    // reached. A file that was cut between two lines cannot be told from a whole one.
    bool IsCut() const { return m_bCut; }

private:
    using CBuffer = std::vector<char>;  // its size is the room; it grows with what is written, never in advance

    char FindLine();
    bool ReadValue(CValue& value);
    const char* ReadName(CValue& value);
    const char* ReadNumber(const char* at, CValue& value);
    const char* ReadText(const char* at, CValue& value);
    const char* ReadHex(const char* at, CValue& value);
    const char* ReadBytes(const char* at, std::size_t& length);
    const char* ContinueBytes(const char* at);
    bool FindKey();
    bool ReadKey(CKey& key);
    bool ReadOptions();
    const char* GetLineEnd(const char* at) const;
    void SkipLine(const char* at);
    void FinishLine(const char* at);
    void SkipValue(const char* at);
    const char* Refuse(const char* at, const char* reason);
    void Note(const char* at, const char* reason);
    void NoteCut(const char* reason);
    void NoteEnd();

    const char* m_pBegin;
    const char* m_pEnd;
    const char* m_pNext;                   // where reading goes on: the start of a line, or of what is not blank in it
    const char* m_pKeyLine = nullptr;      // behind the bracket of the key line found last
    const char* m_pLastKeyLine = nullptr;  // and of the one read last,
    std::vector<registry_escape::CComponent> m_components;  // whose path has these
    CBuffer m_path, m_name, m_data, m_text;
    std::size_t m_nProblems = 0;
    std::string m_strProblem;
    bool m_bHeader = false;
    bool m_bCut = false;
    bool m_bEndSeen = false;
};

}  // namespace delvane
