#include "platform/hosted/registry/hive.h"

#include "platform/own_file.h"

namespace delvane {

bool ReadHiveFile(const std::string& hostPath, std::uint64_t limit, CFileBytes& bytes, CNotice& problem) {
    try {
        bytes = ReadOwnFile(hostPath, hostPath, limit, false);
        return true;
    } catch (const CFileError& error) {
        const bool isPlain = error.GetCode() == ERROR_FILE_NOT_FOUND || error.GetCode() == ERROR_ACCESS_DENIED;
        problem = {error.what(), hostPath, isPlain ? error.GetCode() : ERROR_REGISTRY_IO_FAILED};
        return false;
    }
}

}  // namespace delvane
