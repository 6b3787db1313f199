// What a user meant who misspelt a name.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace vx::settings {

/// The name that takes the fewest edits to reach from `word` (letters inserted, removed, replaced;
/// V. I. Levenshtein, 1966), the first of equals. Empty where more than a third of the letters,
/// rounded up, would change.
std::string nearest(std::string_view word, std::span<const std::string> names);

}  // namespace vx::settings
