#include "capture/registry.h"

#include "resources/strings.h"
#include "tree/archive.h"
#include "tree/snapshot.h"

namespace delvane {
namespace {

// Two empty strings, then a type and a length (a value) or two counts (a key).
constexpr std::size_t kSmallestRecord = 2 + 2 * 4;
constexpr std::size_t kSmallestHiveRecord = 4 + kSmallestRecord;

}  // namespace

void CDelvRegValObj::Serialize(CArchive& archive) {
    CDelvObj::Serialize(archive);
    if (archive.IsStoring()) {
        archive.WriteU32(m_dwType);
        archive.WriteCount(m_data.size());
        archive.WriteBytes(m_data);
    } else {
        m_dwType = archive.ReadU32();
        m_data = archive.ReadBytes(archive.ReadU32());
        m_bCaptured = true;
    }
}

void CDelvRegKeyObj::Serialize(CArchive& archive) {
    CDelvObj::Serialize(archive);
    if (archive.IsStoring()) {
        archive.WriteCount(m_values.size());
        for (CDelvObj* value : m_values)
            value->Serialize(archive);
        archive.WriteCount(m_subkeys.size());
        for (CDelvObj* key : m_subkeys)
            key->Serialize(archive);
        return;
    }
    archive.Enter();
    CArena& arena = archive.GetArena();
    const std::uint32_t valueCount = archive.ReadCount(kSmallestRecord);
    m_values.ReserveClaim(valueCount);
    for (std::uint32_t i = 0; i < valueCount; ++i) {
        CDelvRegValObj* const value = arena.New<CDelvRegValObj>(this);
        m_values.push_back(value);
        value->CDelvRegValObj::Serialize(archive);
    }
    const std::uint32_t keyCount = archive.ReadCount(kSmallestRecord);
    m_subkeys.ReserveClaim(keyCount);
    for (std::uint32_t i = 0; i < keyCount; ++i) {
        CDelvRegKeyObj* const key = arena.New<CDelvRegKeyObj>(this, arena);
        m_subkeys.push_back(key);
        key->CDelvRegKeyObj::Serialize(archive);
    }
    archive.Leave();
}

void CDelvRegHiveObj::Serialize(CArchive& archive) {
    if (archive.IsStoring()) {
        archive.WriteU32(m_hKey);
    } else {
        m_hKey = archive.ReadU32();
    }
    CDelvRegKeyObj::Serialize(archive);
}

CDelvAllReg::CDelvAllReg(CSnapshot& snapshot) : CDelvRegHiveObj(&snapshot, snapshot.GetArena()) {
    m_name = snapshot.GetArena().Copy(LoadResString(IDS_MY_COMPUTER));
}

void CDelvAllReg::Serialize(CArchive& archive) {
    CDelvObj::Serialize(archive);
    if (archive.IsStoring()) {
        archive.WriteCount(m_subkeys.size());
        for (CDelvObj* hive : m_subkeys)
            hive->Serialize(archive);
        return;
    }
    CArena& arena = archive.GetArena();
    const std::uint32_t count = archive.ReadCount(kSmallestHiveRecord);
    m_subkeys.ReserveClaim(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        CDelvRegHiveObj* const hive = arena.New<CDelvRegHiveObj>(this, arena);
        m_subkeys.push_back(hive);
        hive->Serialize(archive);
    }
}

}  // namespace delvane
