// A hive of a hosted machine: keys below a root, whatever file they come from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/host.h"
#include "platform/notice.h"
#include "platform/open_keys.h"

namespace delvane {

// Read only. Keys go by 32-bit numbers of the hive's own, which stay good as long as it lives.
class CHive {
public:
    virtual ~CHive() = default;

    virtual std::uint32_t GetRoot() const = 0;
    // Adds what the key holds to `contents`, in the order of the file. False where the key itself is damaged or no
    // ordinary one; what was added then is of no use. A damaged value or subkey is left out; the contents have an error
    // number for it, and GetProblems tells the first.
    virtual bool ReadKey(std::uint32_t key, CKeyContents& contents) = 0;
    // The subkey of that name, an exact match before one without regard to case.
    virtual std::optional<std::uint32_t> FindSubkey(std::uint32_t key, std::string_view name) = 0;
    // Where a symbolic link key leads ("\Registry\Machine\Software\X"); nothing for any other key.
    virtual std::optional<std::string> GetLink(std::uint32_t key) = 0;
    // Of what the hive was read from, in bytes.
    virtual std::uint64_t GetSize() const = 0;
    // Whether the file breaks off before its end.
    virtual bool IsCut() const = 0;
    // What was found wrong so far. Problems are added, and stay as they are.
    virtual std::vector<CNotice> GetProblems() const = 0;
};

// The bytes of a registry file. False where it cannot be read; `problem` then says why.
bool ReadHiveFile(const std::string& hostPath, std::uint64_t limit, CFileBytes& bytes, CNotice& problem);

}  // namespace delvane
