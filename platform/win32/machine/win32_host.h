// The system that the program runs on, as the host of its own files.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "platform/host.h"

namespace delvane {

class CWin32Host : public CHost {
public:
    // The folder of the program's own files, without a backslash at its end.
    explicit CWin32Host(CString programFolder);
    ~CWin32Host() override;

    CString GetModuleFileName() override { return m_strProgramFolder + "\\delvane.exe"; }
    CString GetDocumentFolder() override;
    std::uint64_t GetSystemTime() override;

    bool FileExists(std::string_view path) override;
    bool DirectoryExists(std::string_view path) override;
    bool CreateDirectory(std::string_view path) override;
    bool DeleteFile(std::string_view path) override;
    std::vector<CString> ListFiles(std::string_view folder) override;
    CFileBytes ReadFile(std::string_view path, std::uint64_t limit) override;
    CFileBytes ReadFileHead(std::string_view path, std::size_t size) override;
    std::unique_ptr<CFileWriter> CreateFile(std::string_view path) override;
    std::unique_ptr<std::ostream> CreateTextFile(std::string_view path) override;
    CString GetDisplayPath(std::string_view path) const override { return SingleSeparators(path); }
    CString GetMachinePath(std::string_view path) const override { return CString(path); }
    bool LockProgramFolder() override;
    bool OpenDocument(std::string_view path) override;

private:
    class CLock;

    CString m_strProgramFolder;
    std::unique_ptr<CLock> m_pLock;
};

}  // namespace delvane
