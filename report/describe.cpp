// How a finding names the object that it is about.
#include <typeindex>

#include "capture/drives.h"
#include "capture/executable.h"
#include "capture/extensions.h"
#include "capture/registry.h"
#include "report/base.h"
#include "tree/snapshot.h"

namespace delvane {

CString DescribeObject(const CDelvObj& object) {
    struct CWord {
        std::type_index m_class;
        const char* m_word;
        bool m_bNamed;
    };
    static const CWord kWords[] = {
        {typeid(CDelvDriveObj), "Drive", true},
        {typeid(CDelvDirObj), "Directory", true},
        {typeid(CDelvFileObj), "File", true},
        {typeid(CDelvExeObj), "Executable", true},
        {typeid(CDelvAllDrives), "Files/Directories", false},
        {typeid(CDelvRegValObj), "Registry Value", true},
        {typeid(CDelvRegKeyObj), "Registry Key", true},
        {typeid(CDelvRegHiveObj), "Registry Hive", true},
        {typeid(CDelvAllReg), "Registry", false},
        {typeid(CDelvExtObj), "Extension", true},
        {typeid(CDelvAllExts), "Extensions", false},
        {typeid(CSnapshot), "Snapshot", false},
    };
    CString word;
    for (const CWord& entry : kWords) {
        if (entry.m_class != std::type_index(typeid(object))) continue;
        if (!entry.m_bNamed) return entry.m_word;
        word = entry.m_word;
    }
    return word + "(" + object.GetFullName() + ")";
}

}  // namespace delvane
