// An output stream into a file of the program's own.
#pragma once

#include <memory>
#include <ostream>

#include "platform/host.h"

namespace delvane {

// Bytes go through a large buffer into the file writer; of a text stream with the line ends of the system. What the
// writer throws comes out of the operation that filled the buffer. Nothing stands in the file's place before Commit.
class CFileStream : public std::ostream {
public:
    enum class EForm { kText, kBinary };
    CFileStream(std::unique_ptr<CFileWriter> file, EForm form);
    ~CFileStream() override;

    void Commit();

private:
    class CBuffer;
    std::unique_ptr<CBuffer> m_pBuffer;
};

}  // namespace delvane
