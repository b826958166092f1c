#include "platform/file_stream.h"

#include <locale>
#include <streambuf>
#include <vector>

namespace delvane {

class CFileStream::CBuffer : public std::streambuf {
public:
    CBuffer(std::unique_ptr<CFileWriter> file, EForm form) : m_pFile(std::move(file)), m_form(form), m_bytes(kSize) {
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
        const std::string_view bytes(pbase(), static_cast<std::size_t>(pptr() - pbase()));
        m_form == EForm::kText ? m_pFile->WriteText(bytes) : m_pFile->Write(bytes);
        setp(m_bytes.data(), m_bytes.data() + m_bytes.size());
    }

    std::unique_ptr<CFileWriter> m_pFile;
    EForm m_form;
    std::vector<char> m_bytes;
};

CFileStream::CFileStream(std::unique_ptr<CFileWriter> file, EForm form)
    : std::ostream(nullptr), m_pBuffer(std::make_unique<CBuffer>(std::move(file), form)) {
    rdbuf(m_pBuffer.get());
    imbue(std::locale::classic());
    exceptions(std::ios_base::badbit);  // hands the writer's own exception on
}

CFileStream::~CFileStream() = default;

void CFileStream::Commit() { m_pBuffer->Commit(); }

}  // namespace delvane
