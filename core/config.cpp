// The two small files beside the program: delvane.cfg with the stored options and delvane.err with the messages of a
// run that shows no window.
#include <array>
#include <cstring>

#include "core/context.h"

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

std::uint32_t GetU32(std::string_view bytes, std::size_t offset) {
    std::uint32_t value = 0;
    for (std::size_t i = 4; i-- > 0;)
        value = value << 8 | static_cast<unsigned char>(bytes[offset + i]);
    return value;
}

void PutU32(CString& bytes, std::uint32_t value) {
    for (int i = 0; i < 4; ++i, value >>= 8)
        bytes += static_cast<char>(value & 0xFF);
}

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
    m_dwDrivesOn = GetU32(bytes, 0);
    m_dwDrivesOff = GetU32(bytes, 4);
    for (std::size_t i = 0; i < kFlagCount; ++i)
        this->*kFlags[i] = GetU32(bytes, 8 + 4 * i) != 0;
    return true;
}

bool CRunContext::WriteConfig() const {
    CString bytes;
    PutU32(bytes, m_dwDrivesOn);
    PutU32(bytes, m_dwDrivesOff);
    for (const auto flag : kFlags)
        PutU32(bytes, this->*flag ? 1 : 0);
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
