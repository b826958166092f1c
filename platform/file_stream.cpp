#include "platform/file_stream.h"

#include <locale>

namespace delvane {

CFileStream::CFileStream(std::unique_ptr<CFileWriter> file, EForm form)
    : std::ostream(this), m_pFile(std::move(file)), m_form(form) {
    setp(m_bytes.data(), m_bytes.data() + m_bytes.size());
    std::ostream::imbue(std::locale::classic());
    exceptions(std::ios_base::badbit);  // hands the writer's own exception on
}

void CFileStream::Commit() {
    Empty();
    m_pFile->Commit();
}

// Called for a character that has no room; the end of the file never comes here.
std::streambuf::int_type CFileStream::overflow(std::streambuf::int_type c) {
    Empty();
    return sputc(std::streambuf::traits_type::to_char_type(c));
}

void CFileStream::Empty() {
    const std::string_view bytes(pbase(), static_cast<std::size_t>(pptr() - pbase()));
    m_form == EForm::kText ? m_pFile->WriteText(bytes) : m_pFile->Write(bytes);
    setp(m_bytes.data(), m_bytes.data() + m_bytes.size());
}

}  // namespace delvane
