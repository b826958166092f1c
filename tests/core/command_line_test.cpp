// The switches: each form, what it sets, and what is refused.
#include <functional>

#include "tests/support/machine_test.h"

namespace delvane {
namespace {

class CommandLine : public CMachineTest {
protected:
    // The bad tokens of a command line, one a line, as the log has them.
    CString BadTokens(const CString& commandLine) {
        Start("", commandLine);
        CString log = ErrorLog();
        const CString head = "Bad Cmdline Switch: ";
        for (std::size_t at = log.find(head); at != CString::npos; at = log.find(head))
            log.erase(at, head.size());
        return log;
    }
};

TEST_F(CommandLine, TokensEndAtBlanksAndAtASecondQuotationMark) {
    theApp.SetCommandLine(" \t/s  /bc:\"My Snap\"/g a\"b c\"d \"open to the end");
    const char* const expected[] = {"/s", "/bc:\"My Snap\"", "/g", "a\"b c\"", "d", "\"open to the end", "", ""};
    for (const char* token : expected)
        EXPECT_EQ(theApp.GetNextToken(), token);
}

TEST_F(CommandLine, BadTokensAreLoggedInTheirOrderAndTheRestIsRead) {
    EXPECT_EQ(BadTokens("/q s /n /nologox /b /b: /bc /bl /bz:name /cc /extra /r:hk /r:hkxx /r:hklm? /d: /d:1 /d:c? "
                        "/dg: /dg:xx / \"/s\" /gx"),
              "/q\ns\n/n\n/nologox\n/b\n/b:\n/extra\n/r:hk\n/r:hkxx\n/r:hklm?\n/d:\n/d:1\n/d:c?\n/dg:\n/dg:xx\n/\n"
              "\"/s\"\n/gx\n");
    EXPECT_TRUE(theContext.m_bGenerateReport) << "/gx asks for a report before it turns out bad";
    EXPECT_FALSE(theContext.m_bSilent || theContext.m_bCreateBaseline);
    EXPECT_EQ(theContext.m_strBaselineName, "") << "forms of a name without a colon are dropped in silence";
}

TEST_F(CommandLine, AnUnattendedRunSaysWhichSwitchesDoNothing) {
    const char* const line = "/compare /bcBefore /bc: Before /c: /res:out /gx /b:\"x\" /q -s";
    testing::internal::CaptureStderr();
    EXPECT_EQ(BadTokens(line), "/bc:\nBefore\n/c:\n/gx\n/q\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "delvane: switch passed over: /compare: a name stands behind a colon, as in /bc:NAME or /b:NAME\n"
              "delvane: switch passed over: /bcBefore: a name stands behind a colon, as in /bc:NAME or /b:NAME\n"
              "delvane: switch passed over: /bc:: no name stands behind the colon\n"
              "delvane: switch passed over: Before: a switch begins with / or -\n"
              "delvane: switch passed over: /c:: no name stands behind the colon\n"
              "delvane: switch passed over: /res:out: a directory is known by a separator behind it\n"
              "delvane: switch passed over: /gx: there is no such switch\n"
              "delvane: switch passed over: /q: there is no such switch\n");
    EXPECT_EQ(theApp.m_nExitCode, 0);
}

TEST_F(CommandLine, ATokenOverTheLimitIsRefusedWhole) {
    const CString longest = "/b:" + CString(256, 'n');
    EXPECT_EQ(BadTokens(longest), "");
    EXPECT_EQ(theContext.m_strBaselineName.size(), 256U);
    EXPECT_EQ(BadTokens(longest + "n"), longest + "n\n");
}

TEST_F(CommandLine, SwitchesSetTheirFields) {
    const struct {
        const char* m_line;
        std::function<bool()> m_holds;
    } kCases[] = {
        {"/S", [] { return theContext.m_bSilent; }},
        {"-silent", [] { return theContext.m_bSilent; }},
        {"/NoLogo", [] { return theContext.m_bNoLogo; }},
        {"/bc:\"My Snap\"", [] { return theContext.m_strBaselineName == "My Snap" && theContext.m_bCreateBaseline; }},
        {"/bc:a /b:c", [] { return theContext.m_strBaselineName == "c" && theContext.m_bCreateBaseline; }},
        {"/b:a /b:", [] { return theContext.m_strBaselineName.empty(); }},
        {"-CL:x", [] { return theContext.m_strCurrentName == "x" && !theContext.m_bCreateCurrent; }},
        {"/res:C:\\Out\\", [] { return theContext.m_strResultsDir == "C:\\Out\\"; }},
        {"/res:C:\\Out", [] { return theContext.m_strResultsDir == "C:\\Out"; }},
        {"/res:plain", [] { return theContext.m_strResultsDir.empty(); }},
        {"/gu", [] { return theContext.m_bUseExistingReport && !theContext.m_bDisplayReport; }},
        {"/gdux", [] { return theContext.m_bUseExistingReport && theContext.m_bDisplayReport; }},
        {"/guu", [] { return !theContext.m_bDisplayReport && theContext.m_bGenerateReport; }},
        {"/ext-", [] { return !theContext.m_bExtensions; }},
        {"/ext- /ext+more", [] { return theContext.m_bExtensions; }},
        {"/r:HKLM- /r:hkcu-x", [] { return !theContext.m_bHklm && !theContext.m_bHkcu && theContext.m_bHkcr; }},
        {"/d:c /d:E- /d:e+", [] { return theContext.m_dwDrivesOn == 0x14 && theContext.m_dwDrivesOff == 0x10; }},
        {"/dg:ND /dg:rd+ /dg:Cd /dg:hd-",
         [] {
             return theContext.m_bNetworkDrives && theContext.m_bRemovableDrives && theContext.m_bCompactDiscs &&
                    !theContext.m_bHardDrives;
         }},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.m_line);
        std::destroy_at(&theContext);
        std::construct_at(&theContext);
        theContext.SetSystem({std::make_unique<CScriptedMachine>(), std::make_unique<CScriptedHost>()});
        theContext.Initialize();
        Parse(test.m_line);
        EXPECT_TRUE(test.m_holds());
    }
    m_pMachine = nullptr;
}

}  // namespace
}  // namespace delvane
