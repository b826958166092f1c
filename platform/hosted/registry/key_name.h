// Names of registry keys and values.
//
// They are equal without regard to case only where two characters are each other's other case: the Kelvin sign is no k,
// and of the two small sigmas only one is that of the capital. Characters outside the basic plane have no case. (So it
// is in Wine, where both of such names can stand beside each other.)
#pragma once

#include <string>
#include <string_view>

namespace delvane {

bool KeyNamesEqual(std::string_view a, std::string_view b);
// Below 0, 0 or above 0; 0 for names that are equal.
int CompareKeyNames(std::string_view a, std::string_view b);
// The same for names that are equal: a key for maps.
std::string FoldKeyName(std::string_view name);

// Takes the first component and the backslash behind it off a path.
std::string_view TakeKeyName(std::string_view& path);

}  // namespace delvane
