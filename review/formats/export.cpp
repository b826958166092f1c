// JSON Lines of a snapshot: one for itself, one for each of its nodes, and one with their counts.
#include "capture/drives.h"
#include "capture/extensions.h"
#include "capture/registry.h"
#include "review/formats/json.h"
#include "review/formats/writers.h"

namespace delvane {
namespace {

constexpr CWords<7> kDriveWords = {"unknown", "no-root", "removable", "fixed", "network", "cd-rom", "ram-disk"};

class CExporter {
public:
    explicit CExporter(std::ostream& stream) : m_json(stream) {}

    void Write(const CSnapshot& snapshot, const CString& file) {
        m_json.BeginRecord("snapshot");
        m_json.Put("version", 1);
        m_json.Put("program", DELVANE_VERSION);
        WriteSnapshotFields(m_json, snapshot, file);
        m_json.EndRecord();
        for (const CDelvObj* drive : snapshot.m_pDrives->m_subdirs)
            WriteDrive(static_cast<const CDelvDriveObj&>(*drive));
        for (const CDelvObj* hive : snapshot.m_pRegistry->m_subkeys)
            WriteKey(static_cast<const CDelvRegKeyObj&>(*hive), CString(hive->m_name));
        for (const CDelvObj* extension : snapshot.m_pExtensions->m_extensions)
            WriteNode(*extension, EKind::kExtension, extension->m_name);
        m_json.BeginRecord("end");
        m_json.Put("drive", snapshot.m_pDrives->m_subdirs.size());
        for (const EKind kind : {EKind::kDirectory, EKind::kFile, EKind::kKey, EKind::kValue, EKind::kExtension})
            m_json.Put(WordOf(kind), m_counts[IndexOf(kind)]);
        m_json.EndRecord();
    }

private:
    void WriteNode(const CDelvObj& node, EKind kind, std::string_view path) {
        ++m_counts[IndexOf(kind)];
        m_json.BeginRecord(WordOf(kind));
        m_json.Put("path", path);
        if (kind == EKind::kValue) m_json.Put("name", node.m_name);
        WriteNodeFields(m_json, node, kind);
        m_json.EndRecord();
    }

    void WriteDrive(const CDelvDriveObj& drive) {
        const std::uint32_t type = drive.GetType();
        m_json.BeginRecord("drive");
        m_json.Put("path", CString(drive.m_name) + '\\');
        m_json.Put("type", kDriveWords[type < kDriveWords.size() ? type : 0]);
        m_json.Put("volume", drive.m_strVolume);
        m_json.EndRecord();
        WriteContents(drive);
    }
    void WriteContents(const CDelvDirObj& directory) {
        for (const CDelvObj* file : directory.m_files)
            WriteNode(*file, EKind::kFile, file->GetFullName());
        for (const CDelvObj* subdir : directory.m_subdirs) {
            WriteNode(*subdir, EKind::kDirectory, subdir->GetFullName());
            WriteContents(static_cast<const CDelvDirObj&>(*subdir));
        }
    }
    void WriteKey(const CDelvRegKeyObj& key, const CString& path) {
        WriteNode(key, EKind::kKey, path);
        for (const CDelvObj* value : key.m_values)
            WriteNode(*value, EKind::kValue, path);
        for (const CDelvObj* subkey : key.m_subkeys)
            WriteKey(static_cast<const CDelvRegKeyObj&>(*subkey), path + '\\' + CString(subkey->m_name));
    }

    CJson m_json;
    CCounts<EKind> m_counts{};
};

}  // namespace

void ExportSnapshot(const CSnapshot& snapshot, const CString& file, std::ostream& stream) {
    CExporter(stream).Write(snapshot, file);
}

}  // namespace delvane
