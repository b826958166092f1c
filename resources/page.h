// The fixed pieces of the report page.
#pragma once

#include <string_view>

namespace delvane {

// The two addresses that the introduction links to.
inline constexpr std::string_view kTestPlanAddress = "http://www.example.org/delvane/test-plan";
inline constexpr std::string_view kCertificationAddress = "http://www.example.org/delvane/certification";

// %1 is the program's version text.
inline constexpr std::string_view kPageTitle = "Norvelle-Kestran Install Delvane (%1) Report";
inline constexpr std::string_view kPageBanner = "Norvelle-Kestran<P>Install Delvane (%1) Report";
// %1 and %2 are the labels of the two snapshots, the Current first.
inline constexpr std::string_view kPageSubject = "The following report compares %1 to %2";
inline constexpr std::string_view kSummaryTitle = "Application Specification Compliance Summary";
inline constexpr std::string_view kNoIssues = "No compliance issues detected.\n";

// The introduction, around its two links.
inline constexpr std::string_view kIntroduction1 =
    "The Installation Delvane helps detect certain issues related to the Application Specification for Microsoft "
    "Windows 2000, listed below. It is by no means a comprehensive test for Application Specification compliance or "
    "for the \"Certified for Windows\" logo program. For a full pretest, please follow the Certified for Microsoft "
    "Windows Test Plan available on the web at ";
inline constexpr std::string_view kIntroduction2 = " or request a       certification test from Norvelle, see   ";
inline constexpr std::string_view kIntroduction3 = ".";

// The headings of the eight sections, each with its own HTML.
inline constexpr int kSectionCount = 8;
extern const std::string_view kSectionHeadings[kSectionCount];

}  // namespace delvane
