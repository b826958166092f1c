// The rules whose findings a review tells: their stable ids, and what each of them is for.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "review/words.h"

namespace delvane {

struct CRule {
    std::uint32_t m_textId;      // of the finding's text in the string table
    std::string_view m_id;       // "files-outside"
    ESeverity m_severity;        // of all its findings
    std::size_t m_nRequirement;  // of all its findings, 0 to 7
    std::string_view m_title;    // a few words
    std::string_view m_help;     // what it means and what to do about it
};

inline constexpr std::size_t kRequirementCount = 8;

// All of them, by requirement, in each errors, warnings, infos.
std::span<const CRule> GetRules();
const CRule* FindRule(std::string_view id);         // null for an unknown id
const CRule* FindRuleOfText(std::uint32_t textId);  // null for a text that is no finding's
// What a requirement is about, in a few words: "Uninstallation and executables".
std::string_view RequirementTitle(std::size_t requirement);

}  // namespace delvane
