// A search whose failure needs no number.
#pragma once

#include <memory>
#include <string_view>

#include "platform/machine.h"

namespace delvane {

inline std::unique_ptr<CFileSearch> SearchOf(CMachine& machine, std::string_view path) {
    std::uint32_t error = ERROR_SUCCESS;
    return machine.GetSearches().Open(path, error);
}

}  // namespace delvane
