// The program's entry.
#include <iostream>
#include <string_view>

#include "core/app.h"
#include "core/context.h"
#include "core/usage.h"
#include "platform/host.h"
#include "platform/machine.h"
#include "review/calls.h"

int main(int argumentCount, char** arguments) {
    using namespace delvane;
    PrepareStandardStreams();
    if (argumentCount == 2) {
        const std::string_view only = arguments[1];
        if (only == "--version" || only == "--help") {
            std::cout << (only == "--version" ? GetVersionText() : GetUsageText()) << std::flush;
            return std::cout.good() ? 0 : 1;
        }
    }
    if (const std::optional<int> exitCode = RunCall(argumentCount - 1, arguments + 1)) return *exitCode;
    try {
        theContext.SetSystem(MakeSystem());
        theApp.SetCommandLine(MakeCommandLine(argumentCount - 1, arguments + 1));
        theApp.InitInstance();
        return theApp.ExitInstance();
    } catch (...) {
        theContext.Say(DescribeCurrentException());
        return theApp.m_nExitCode | kExitNotStarted;
    }
}
