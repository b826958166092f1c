#include "review/call_files.h"

#include <algorithm>

#include "core/context.h"
#include "platform/file_stream.h"
#include "platform/machine.h"
#include "review/calls.h"
#include "review/describe.h"
#include "review/gap_list.h"

namespace delvane {
namespace {

constexpr std::uint64_t kLargestGapList = std::uint64_t{256} << 20;

bool HasEnding(const CString& name) {
    return name.size() > kSnapshotEnding.size() && IsSuffixNoCase(kSnapshotEnding, name);
}

bool IsPath(const CString& name) { return name.find_first_of("\\/") != CString::npos || HasEnding(name); }

// The snapshot's file without its ending.
CString StemOf(const CString& name) {
    if (!IsPath(name)) {
        const CString& results = theContext.GetResultsDir();
        return results + (results.ends_with('\\') ? "" : "\\") + name;
    }
    const CString path = MakeOwnPath(name);
    return HasEnding(path) ? path.substr(0, path.size() - kSnapshotEnding.size()) : path;
}

void MakeFolder(const CString& path) {
    CHost& host = theContext.GetHost();
    if (path.empty() || path.ends_with(':') || host.DirectoryExists(path)) return;
    const std::size_t parent = path.rfind('\\');
    if (parent != CString::npos && parent != 0) MakeFolder(path.substr(0, parent));
    if (!host.CreateDirectory(path)) {
        throw CCallError(kReviewNoFile, host.GetDisplayPath(path) + ": the folder cannot be made");
    }
}

CString WithoutSeparator(CString path) {
    while (path.size() > 1 && path.ends_with('\\'))
        path.pop_back();
    return path;
}

using CRow = std::array<CString, 6>;

void WriteTable(const std::vector<CRow>& rows, std::ostream& stream) {
    std::array<std::size_t, std::tuple_size_v<CRow>> widths{};
    for (const CRow& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], CountCharacters(row[i]));
    }
    for (const CRow& row : rows) {
        for (std::size_t i = 0; i + 1 < row.size(); ++i)
            stream << row[i] << CString(widths[i] - CountCharacters(row[i]) + 2, ' ');
        stream << row.back() << '\n';
    }
}

}  // namespace

void PrepareContext() {
    theContext.SetSystem(MakeSystem());
    theContext.m_bSilent = true;
    theContext.Initialize();
    // What the snapshots hold is reviewed, whatever this machine has and its stored options leave out.
    theContext.m_dwLogicalDrives = theContext.m_dwDrivesOn = ~std::uint32_t{0};
    theContext.m_bHklm = theContext.m_bHkcu = theContext.m_bHkcr = theContext.m_bExtensions = true;
}

void UseResultsFolder(const CString& typed, const std::vector<CString>& names, bool writes) {
    const auto named =
        std::find_if(names.begin(), names.end(), [](const CString& n) { return !n.empty() && !IsPath(n); });
    const bool isNeeded = writes || named != names.end();
    if (typed.empty() && isNeeded) return;
    const CString folder = WithoutSeparator(MakeOwnPath(typed.empty() ? "." : typed));
    if (named != names.end() && !theContext.GetHost().DirectoryExists(folder)) {
        throw CCallError(kReviewNoFile, "snapshot \"" + *named + "\" was not loaded: " +
                                            theContext.GetHost().GetDisplayPath(folder) + " is no folder");
    }
    theContext.m_strResultsDir = folder;
}

std::unique_ptr<CSnapshot> LoadSnapshot(const CString& name, CString& displayPath, bool (CSnapshot::*load)()) {
    const CString stem = StemOf(name);
    const std::size_t separator = stem.rfind('\\');
    CLoaded loaded = LoadSnapshotFile(stem.substr(0, separator), stem.substr(separator + 1), load);
    if (loaded.m_pSnapshot == nullptr) {
        throw CCallError(kReviewNoFile, "snapshot \"" + name + "\" was not loaded: " + loaded.m_strReason);
    }
    displayPath = loaded.m_strPath;
    return std::move(loaded.m_pSnapshot);
}

void ListSnapshots(const CString& folder, std::ostream& stream) {
    UseResultsFolder(folder, {}, true);
    CHost& host = theContext.GetHost();
    const CString path = theContext.m_strResultsDir.empty() ? theContext.GetResultsDir() : theContext.m_strResultsDir;
    if (!host.DirectoryExists(path)) throw CCallError(kReviewNoFile, host.GetDisplayPath(path) + " is no folder");
    std::vector<CString> names = host.ListFiles(path);
    std::sort(names.begin(), names.end());
    std::vector<CRow> rows = {{"NAME", "TAKEN", "MACHINE", "USER", "SYSTEM", "SIZE"}};
    for (const CString& name : names) {
        if (!IsSuffixNoCase(kSnapshotEnding, name)) continue;
        try {
            CString file;
            const std::unique_ptr<CSnapshot> snapshot =
                LoadSnapshot(path + '\\' + name, file, &CSnapshot::LoadIdentity);
            rows.push_back({VisibleText(snapshot->m_name), IsoTime(snapshot->GetCreatedTicks()).substr(0, 19) + "Z",
                            VisibleText(snapshot->m_strComputerName), VisibleText(snapshot->m_strUserName),
                            VisibleText(snapshot->m_strOsName), std::to_string(snapshot->GetFileSize())});
        } catch (const CCallError& error) {
            theContext.Say(error.what());
        }
    }
    WriteTable(rows, stream);
}

void LoadGaps(const CString& name, std::vector<CReviewGap>& gaps) {
    CHost& host = theContext.GetHost();
    const CString path = GapsPathOf(StemOf(name) + CString(kSnapshotEnding));
    if (!host.FileExists(path)) return;
    CString problem;
    try {
        const CFileBytes file = host.ReadFile(path, kLargestGapList);
        if (!ReadGaps(file.GetBytes(), gaps, problem)) {
            theContext.Say(host.GetDisplayPath(path) + ": the list of gaps was not read to its end: " + problem);
        }
    } catch (const CFileError& error) {
        theContext.Say(error.what());
    }
}

CString MakeOutputFolder(const CString& typed) {
    if (typed.empty()) return WithoutSeparator(theContext.GetResultsDir());
    const CString folder = WithoutSeparator(MakeOwnPath(typed));
    MakeFolder(folder);
    return folder;
}

CString WriteWholeFile(const CString& path, const std::function<void(std::ostream&)>& write) {
    CHost& host = theContext.GetHost();
    try {
        CFileStream stream(host.CreateFile(path), CFileStream::EForm::kBinary);
        write(stream);
        stream.Commit();
    } catch (const CFileError& error) {
        throw CCallError(kReviewNoFile, error.what());
    }
    return host.GetDisplayPath(path);
}

}  // namespace delvane
