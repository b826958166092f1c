// The two small files beside the program: delvane.cfg with the stored options and delvane.err with the messages of a
// run that shows no window.
#include <array>
#include <cstring>

#include "core/context.h"
#include "platform/little_endian.h"

namespace delvane {
namespace {

// Ten values of 32 bits, least significant byte first, with nothing around them.
constexpr std::size_t kConfigSize = 40;
constexpr std::size_t kFlagCount = 8;

// The flags in the order of the file.
constexpr std::array<bool CRunContext::*, kFlagCount> kFlags = {&CRunContext::m_bRemovableDrives,
                                                                &CRunContext::m_bCompactDiscs,
                                                                &CRunContext::m_bNetworkDrives,
                                                                &CRunContext::m_bHardDrives,
                                                                &CRunContext::m_bHklm,
                                                                &CRunContext::m_bHkcr,
                                                                &CRunContext::m_bHkcu,
                                                                &CRunContext::m_bExtensions};

}  // namespace

bool CRunContext::ReadConfig() {
    CFileBytes file;
    try {
        file = GetHost().ReadFileHead(GetConfigPath(), kConfigSize);
    } catch (const CFileError&) {
        return false;
    }
    const std::string_view bytes = file.GetBytes();
    if (bytes.size() < kConfigSize) return false;
    m_dwDrivesOn = U32(bytes, 0);
    m_dwDrivesOff = U32(bytes, 4);
    for (std::size_t i = 0; i < kFlagCount; ++i)
        this->*kFlags[i] = U32(bytes, 8 + 4 * i) != 0;
    return true;
}

bool CRunContext::WriteConfig() const {
    CString bytes;
    bytes += BytesOf(m_dwDrivesOn, 4);
    bytes += BytesOf(m_dwDrivesOff, 4);
    for (const auto flag : kFlags)
        bytes += BytesOf(this->*flag ? 1 : 0, 4);
    try {
        const std::unique_ptr<CFileWriter> file = GetHost().CreateFile(GetConfigPath());
        file->Write(bytes);
        file->Commit();
        return true;
    } catch (const CFileError&) {
        return false;
    }
}

std::ostream& CRunContext::GetErrorLog() {
    if (m_pErrorLog == nullptr) m_pErrorLog = GetHost().CreateTextFile(GetErrorLogPath());
    if (m_pErrorLog == nullptr) m_pErrorLog = std::make_unique<std::ostream>(nullptr);
    return *m_pErrorLog;
}

}  // namespace delvane
