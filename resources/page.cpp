#include "resources/page.h"

namespace delvane {

const std::string_view kSectionHeadings[kSectionCount] = {
    "<P>&nbsp;</P></FONT><B><FONT face=Arial>General Issues Which Might Cause Inaccuracies In This "
    "Report.</B><FONT face=Arial size=2>",
    "<P>&nbsp;</P></FONT><B><FONT face=Arial>1. Install to Program Files by default, do not attempt to "
    "install files protected by System File Protection on Windows 2000, and ensure correct uninstall "
    "support.</FONT>\n<UL><FONT face=Arial size=2><LI>Application Specification 2.4\n<LI>Application "
    "Specification 2.7</LI></UL></B>",
    "<P>&nbsp;</P></FONT><B><FONT face=Arial>2. Provide 32-bit components.</FONT>\n<UL><FONT face=Arial "
    "size=2><LI>Application Specification 1.2</LI></UL></B>",
    "<P>&nbsp;</P></FONT><B><FONT face=Arial>3. Do not read from or write to Win.ini, System.ini, "
    "Autoexec.bat or Config.sys on any Windows operating system based on NT "
    "technology.</FONT>\n<UL><FONT face=Arial size=2><LI>Application Specification 1.5</LI></UL></B>",
    "<P>&nbsp;</P></FONT><B><FONT face=Arial>4. Ensure non-hidden files have associated file-types, and "
    "all file-types have associated icons, descriptions, and actions. </FONT>\n<UL><FONT face=Arial "
    "size=2><LI>Application Specification 1.6</LI></UL></B>",
    "<P>&nbsp;</P></FONT><B><FONT face=Arial>5. Classify and store application data "
    "correctly.\n</FONT><UL><FONT face=Arial size=2><LI>Application Specification 4.2</LI></UL></B>",
    "<P>&nbsp;</P></FONT><B><FONT face=Arial>6. Do not place shortcuts to documents, help, or uninstall "
    "in the Start Menu.\n</FONT><UL><FONT face=Arial size=2><LI>Application Specification "
    "5.6</LI></UL></B>",
    "<P>&nbsp;</P></FONT><B><FONT face=Arial>7. Kernel mode drivers must pass verification testing on "
    "Windows 2000.\n</FONT><UL><FONT face=Arial size=2><LI>Application Specification 1.9</LI></UL></B>",
};

}  // namespace delvane
