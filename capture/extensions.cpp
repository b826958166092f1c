#include "capture/extensions.h"

#include "resources/strings.h"
#include "tree/archive.h"
#include "tree/snapshot.h"

namespace delvane {
namespace {

constexpr std::size_t kSmallestRecord = 5 + 4;  // five empty strings and a word

}  // namespace

void CDelvExtObj::Serialize(CArchive& archive) {
    CDelvObj::Serialize(archive);
    for (CTextRef* text : {&m_strFileType, &m_strIcon, &m_strOpenCommand}) {
        if (archive.IsStoring()) {
            archive.WriteString(*text);
        } else {
            *text = archive.ReadString();
        }
    }
    if (archive.IsStoring()) {
        archive.WriteU32(m_bNoOpen);
    } else {
        m_bNoOpen = archive.ReadU32();
        m_bCaptured = true;
    }
}

CDelvAllExts::CDelvAllExts(CSnapshot& snapshot) : CDelvObj(&snapshot), m_extensions(snapshot.GetArena()) {
    m_name = snapshot.GetArena().Copy(LoadResString(IDS_MY_COMPUTER_EXTENSIONS));
    m_fullName = m_name;
    m_bCaptured = true;
}

void CDelvAllExts::Serialize(CArchive& archive) {
    CDelvObj::Serialize(archive);
    if (archive.IsStoring()) {
        archive.WriteCount(m_extensions.size());
        for (CDelvObj* extension : m_extensions)
            extension->Serialize(archive);
        return;
    }
    const std::uint32_t count = archive.ReadCount(kSmallestRecord);
    m_extensions.ReserveClaim(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        CDelvExtObj* const extension = archive.GetArena().New<CDelvExtObj>(this);
        m_extensions.push_back(extension);
        extension->Serialize(archive);
    }
}

}  // namespace delvane
