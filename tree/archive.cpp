#include "tree/archive.h"

namespace delvane {
CArchiveError::CArchiveError(std::size_t offset, std::string_view reason, std::string_view fault)
    : std::runtime_error(CString(fault) + " at byte " + std::to_string(offset) + ": " + CString(reason)),
      m_nOffset(offset) {}

CArchive::CArchive(CFileWriter& file) : m_pFile(&file), m_buffer(new char[kBufferSize]) {}

void CArchive::FailShort(std::size_t size) const {
    throw CArchiveError(GetOffset(),
                        "the file ends after " + std::to_string(static_cast<std::size_t>(m_pEnd - m_pNext)) + " of " +
                            std::to_string(size) + " bytes",
                        "cut off");
}

std::size_t CArchive::ReadLongLength() {
    const std::uint16_t length = ReadWord<std::uint16_t>();
    return length == 0xFFFF ? ReadU32() : length;
}

std::uint32_t CArchive::ReadCount(std::size_t smallestRecord) {
    const std::size_t offset = GetOffset();
    const std::uint32_t count = ReadU32();
    if (static_cast<std::int32_t>(count) <= 0) return 0;
    if (count > static_cast<std::size_t>(m_pEnd - m_pNext) / smallestRecord) {
        throw CArchiveError(offset,
                            "a list of " + std::to_string(count) + " records does not fit into the rest of the file",
                            "cut off or damaged");
    }
    return count;
}

void CArchive::Enter() {
    if (++m_nDepth > kMaxDepth && !IsStoring()) {
        throw CArchiveError(GetOffset(), "nested more than " + std::to_string(kMaxDepth) + " levels deep");
    }
}

void CArchive::WritePath(const CDelvObj& parent, std::string_view name) {
    if (m_pPathOwner != &parent) {
        m_strPath = parent.GetFullName();
        m_strPath += '\\';
        m_pPathOwner = &parent;
    }
    WriteLength(m_strPath.size() + name.size());
    WriteRaw(m_strPath.data(), m_strPath.size());
    WriteRaw(name.data(), name.size());
}

void CArchive::WriteCount(std::size_t count) { WriteU32(static_cast<std::uint32_t>(count)); }

void CArchive::Flush() {
    m_pFile->Write({m_buffer.get(), m_nBuffered});
    m_nBuffered = 0;
}

void CArchive::WriteThrough(const void* bytes, std::size_t size) {
    Flush();
    if (size >= kBufferSize) {
        m_pFile->Write({static_cast<const char*>(bytes), size});
        return;
    }
    std::memcpy(m_buffer.get(), bytes, size);
    m_nBuffered = size;
}

}  // namespace delvane
