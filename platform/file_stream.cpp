#include "platform/file_stream.h"

#include <locale>
#include <streambuf>
#include <vector>

namespace delvane {

class CFileStream::CBuffer : public std::streambuf {
public:
    explicit CBuffer(std::unique_ptr<CFileWriter> file) : m_pFile(std::move(file)), m_bytes(kSize) {
        setp(m_bytes.data(), m_bytes.data() + m_bytes.size());
    }

    void Commit() {
        Empty();
        m_pFile->Commit();
    }

protected:
    int_type overflow(int_type c) override {
        Empty();
        if (!traits_type::eq_int_type(c, traits_type::eof())) {
            *pptr() = traits_type::to_char_type(c);
            pbump(1);
        }
        return traits_type::not_eof(c);
    }

private:
    static constexpr std::size_t kSize = std::size_t{1} << 18;

    void Empty() {
        m_pFile->WriteText({pbase(), static_cast<std::size_t>(pptr() - pbase())});
        setp(m_bytes.data(), m_bytes.data() + m_bytes.size());
    }

    std::unique_ptr<CFileWriter> m_pFile;
    std::vector<char> m_bytes;
};

CFileStream::CFileStream(std::unique_ptr<CFileWriter> file)
    : std::ostream(nullptr), m_pBuffer(std::make_unique<CBuffer>(std::move(file))) {
    rdbuf(m_pBuffer.get());
    imbue(std::locale::classic());
    exceptions(std::ios_base::badbit);  // hands the writer's own exception on
}

CFileStream::~CFileStream() = default;

void CFileStream::Commit() { m_pBuffer->Commit(); }

}  // namespace delvane
