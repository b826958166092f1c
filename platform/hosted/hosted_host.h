// The host that a machine is examined from: the program's own files in its file system.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/host.h"
#include "platform/hosted/files/host_file.h"
#include "platform/hosted/files/path_map.h"

namespace delvane {

class CHostedHost : public CHost {
public:
    // `paths` are those of the machine, which outlives this: the program's own files may lie on its disks.
    // `programFolder` is the folder of the program's own files, on the host.
    CHostedHost(const CPathMap& paths, std::string programFolder)
        : m_paths(paths), m_strProgramFolder(std::move(programFolder)) {}

    CString GetModuleFileName() override;
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
    CString GetDisplayPath(std::string_view path) const override { return m_paths.ToDisplay(path); }
    CString GetMachinePath(std::string_view path) const override;
    bool LockProgramFolder() override;
    bool OpenDocument(std::string_view path) override;

private:
    const CPathMap& m_paths;
    std::string m_strProgramFolder;
    CDescriptor m_lock;
};

}  // namespace delvane
