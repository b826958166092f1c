// The registry of a Wine prefix.
#pragma once

#include <memory>
#include <string>

#include "platform/host.h"
#include "platform/hosted/registry/registry.h"

namespace delvane {

// A registry file of a prefix, read into memory; nothing where it cannot be read.
struct CPrefixText {
    explicit CPrefixText(std::string path);
    // Reads it again if the file is in another state by now.
    void Refresh();

    std::string m_path;
    CFileStamp m_stamp;
    CFileBytes m_bytes;
    CString m_strProblem;  // why there is nothing, in one sentence
};

// HKLM is system.reg and HKCU user.reg; HKCR is the machine's classes alone, as Wine has it. A file that cannot be read
// costs its hive and is told as a problem.
std::unique_ptr<CHostedRegistry> LoadPrefixRegistry(CPrefixText system, CPrefixText user);

}  // namespace delvane
