// An output stream into a file of the program's own.
#pragma once

#include <memory>
#include <ostream>
#include <streambuf>
#include <vector>

#include "platform/host.h"

namespace delvane {

// Bytes go through a large buffer into the file writer; of a text stream with the line ends of the system. What the
// writer throws comes out of the operation that filled the buffer. Nothing stands in the file's place before Commit.
class CFileStream : private std::streambuf, public std::ostream {
public:
    enum class EForm { kText, kBinary };
    CFileStream(std::unique_ptr<CFileWriter> file, EForm form);

    void Commit();

private:
    std::streambuf::int_type overflow(std::streambuf::int_type c) override;
    void Empty();

    std::unique_ptr<CFileWriter> m_pFile;
    EForm m_form;
    std::vector<char> m_bytes = std::vector<char>(std::size_t{1} << 18);
};

}  // namespace delvane
