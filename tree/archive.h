// The snapshot file: a plain concatenation of values. docs/snapshot-format.md draws it.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string_view>

#include "platform/host.h"
#include "platform/machine.h"
#include "tree/arena.h"
#include "tree/node.h"

namespace delvane {

static_assert(std::endian::native == std::endian::little, "values are copied as the file holds them");

// The bytes of a snapshot file break a rule of its form. what() says which, and at which offset.
class CArchiveError : public std::runtime_error {
public:
    // `fault` is "damaged"; "cut off" where the file ended too early; both where either may be.
    CArchiveError(std::size_t offset, std::string_view reason, std::string_view fault = "damaged");
    std::size_t GetOffset() const { return m_nOffset; }

private:
    std::size_t m_nOffset;
};

// Values on their way into a snapshot file or out of one.
//
// Loading works on a buffer that holds the whole file. The bytes come from outside and may be damaged: every read is
// checked against what is left and throws CArchiveError. Texts and data are views into the buffer, which the snapshot
// keeps for as long as its tree lives. Storing goes through a buffer into a file writer and throws what that throws.
class CArchive {
public:
    explicit CArchive(std::string_view bytes)
        : m_pBegin(bytes.data()), m_pNext(bytes.data()), m_pEnd(bytes.data() + bytes.size()) {}
    explicit CArchive(CFileWriter& file);

    bool IsStoring() const { return m_pFile != nullptr; }

    // Each stores what stands in its argument, or loads it from the file.
    void Transfer(std::uint32_t& word) { IsStoring() ? WriteU32(word) : void(word = ReadU32()); }
    void Transfer(CTextRef& text) { IsStoring() ? WriteString(text) : void(text = ReadString()); }
    void Transfer(CString& text) { IsStoring() ? WriteString(text) : void(text = ReadString().Get()); }
    void Transfer(FILETIME& time) {  // the high word first, the reverse of their order in memory
        Transfer(time.dwHighDateTime);
        Transfer(time.dwLowDateTime);
    }
    // The count and the records of a list. A record has at least `smallestRecord` bytes; `make` gives the node that is
    // to be loaded next.
    template <class Make>
    void TransferList(CNodeList& list, std::size_t smallestRecord, Make make) {
        if (IsStoring()) {
            WriteCount(list.size());
            for (CDelvObj* node : list)
                node->Serialize(*this);
            return;
        }
        const std::uint32_t count = ReadCount(smallestRecord);
        list.ReserveClaim(count);
        for (std::uint32_t i = 0; i < count; ++i) {
            CDelvObj* const node = make();
            list.push_back(node);
            node->Serialize(*this);
        }
    }

    // Loading.
    std::size_t GetOffset() const { return static_cast<std::size_t>(m_pNext - m_pBegin); }
    std::uint32_t ReadU32() { return ReadWord<std::uint32_t>(); }
    CTextRef ReadString() {
        const CTextRef text(m_pNext);
        std::size_t length = ReadWord<std::uint8_t>();
        if (length == 0xFF) length = ReadLongLength();
        ReadBytes(length);
        return text;
    }
    std::string_view ReadBytes(std::size_t length) {
        Need(length);
        const std::string_view bytes(m_pNext, length);
        m_pNext += length;
        return bytes;
    }
    // The count of a list whose records have at least `smallestRecord` bytes. It is taken as signed, 0 and below mean
    // none, and a count that the rest of the file cannot hold is an error: a count is a claim, not a size to allocate.
    std::uint32_t ReadCount(std::size_t smallestRecord);
    // While it loads, refuses to go deeper than a walk goes: kMaxTreeDepth directories, the set above them and a leaf
    // below.
    void Enter();
    void Leave() { --m_nDepth; }

    // Storing.
    void WriteU32(std::uint32_t value) { WriteRaw(&value, sizeof value); }
    void WriteString(std::string_view text) {
        WriteLength(text.size());
        WriteRaw(text.data(), text.size());
    }
    void WriteBytes(std::string_view bytes) { WriteRaw(bytes.data(), bytes.size()); }
    // The parent's full name, a backslash and the name, as a string.
    void WritePath(const CDelvObj& parent, std::string_view name);
    void WriteCount(std::size_t count);
    // Hands what is left in the buffer to the file.
    void Flush();

private:
    template <class T>
    T ReadWord() {
        Need(sizeof(T));
        T value;
        std::memcpy(&value, m_pNext, sizeof value);
        m_pNext += sizeof value;
        return value;
    }
    void Need(std::size_t size) const {
        if (static_cast<std::size_t>(m_pEnd - m_pNext) < size) FailShort(size);
    }
    [[noreturn]] void FailShort(std::size_t size) const;
    std::size_t ReadLongLength();
    void WriteLength(std::size_t length) {
        char head[kLargestTextHead];
        WriteRaw(head, EncodeTextHead(length, head));
    }
    void WriteRaw(const void* bytes, std::size_t size) {
        if (kBufferSize - m_nBuffered < size) {
            WriteThrough(bytes, size);
            return;
        }
        std::memcpy(m_buffer.get() + m_nBuffered, bytes, size);
        m_nBuffered += size;
    }
    void WriteThrough(const void* bytes, std::size_t size);

    static constexpr std::size_t kBufferSize = std::size_t{1} << 18;
    static constexpr std::uint32_t kMaxDepth = kMaxTreeDepth + 2;

    const char* m_pBegin = nullptr;
    const char* m_pNext = nullptr;
    const char* m_pEnd = nullptr;
    std::uint32_t m_nDepth = 0;

    CFileWriter* m_pFile = nullptr;
    std::unique_ptr<char[]> m_buffer;
    std::size_t m_nBuffered = 0;
    const CDelvObj* m_pPathOwner = nullptr;  // whose full name m_strPath holds
    CString m_strPath;
};

}  // namespace delvane
