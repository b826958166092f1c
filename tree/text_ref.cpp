#include "tree/text_ref.h"

namespace delvane {

std::size_t EncodeTextHead(std::size_t length, char* into) {
    if (length < kShortestMiddleText) {
        *into = static_cast<char>(length);
        return 1;
    }
    *into++ = '\xFF';
    const auto middle = static_cast<std::uint16_t>(length < kShortestLongText ? length : 0xFFFF);
    std::memcpy(into, &middle, sizeof middle);
    if (length < kShortestLongText) return 1 + sizeof middle;
    const auto whole = static_cast<std::uint32_t>(length);
    std::memcpy(into + sizeof middle, &whole, sizeof whole);
    return kLargestTextHead;
}

CString EncodeText(std::string_view text) {
    CString encoded(kLargestTextHead, '\0');
    encoded.resize(EncodeTextHead(text.size(), encoded.data()));
    return encoded += text;
}

std::string_view CTextRef::GetLong() const {
    std::uint16_t middle = 0;
    std::memcpy(&middle, m_pEncoded + 1, sizeof middle);
    if (middle != 0xFFFF) return {m_pEncoded + 3, middle};
    std::uint32_t whole = 0;
    std::memcpy(&whole, m_pEncoded + 3, sizeof whole);
    return {m_pEncoded + kLargestTextHead, whole};
}

}  // namespace delvane
