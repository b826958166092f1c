// A few keys out of a Wine registry file: what the identity of a machine is made of.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace delvane {

class CRegistryText;

// Reads the values of the wanted keys in one pass over the text and passes over all others without decoding them. The
// text is not needed afterwards.
//
// Keys are paths below the root of the hive, components joined by one backslash ("Software\Microsoft\Windows
// NT\CurrentVersion"). Names of keys and values are compared without regard to case. Only keys that were asked for at
// the start may be asked for later.
class CRegistryLookup {
public:
    struct CValue {
        std::string m_name;  // empty: the unnamed value
        std::uint32_t m_dwType = 0;
        std::string m_data;  // as the ANSI calls give it in UTF-8

        // The data up to its first NUL, as a program sees text (types 1 and 2).
        std::string GetText() const { return m_data.substr(0, m_data.find('\0')); }
    };

    CRegistryLookup(std::string_view text, const std::vector<std::string>& keys);

    // A text value (types 1 and 2) up to its first NUL, and a number (type 4); nothing where there is no such value.
    std::optional<std::string> FindText(std::string_view key, std::string_view name) const;
    std::optional<std::uint32_t> FindNumber(std::string_view key, std::string_view name) const;

    // All values of a key in the order of the file; empty where there is no such key. A name stands there once unless
    // the file is damaged; then the last one counts.
    const std::vector<CValue>& GetValues(std::string_view key) const;

    // Where the key leads when it or a key above it is a symbolic link: the link's target with the rest of the path,
    // \Registry\Machine\... or \Registry\User\<SID>\... Nothing where no link is on the way. Links at the target
    // are not followed, so a caller that follows counts its steps.
    std::optional<std::string> FindLink(std::string_view key) const;

    // As CRegistryText has them. Of the keys passed over only what ends the file is looked at.
    bool HasHeader() const { return m_bHeader; }
    const std::string& GetProblem() const { return m_problem; }
    bool IsCut() const { return m_bCut; }

private:
    struct CWanted {
        std::string m_path;
        std::vector<CValue> m_values;
        std::string m_target;     // of a symbolic link
        bool m_bLinkOnly = true;  // above a wanted key: its values do not matter
    };

    void AddWanted(std::string_view path, bool linkOnly);
    CWanted* FindWanted(std::string_view path);
    const CWanted* FindWanted(std::string_view path) const;
    const CValue* FindValue(std::string_view key, std::string_view name) const;
    static void ReadValues(CRegistryText& reader, bool isLink, CWanted& wanted);

    std::vector<CWanted> m_wanted;
    std::string m_problem;
    bool m_bHeader = false;
    bool m_bCut = false;
};

}  // namespace delvane
