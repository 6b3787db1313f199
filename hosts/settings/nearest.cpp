#include "hosts/settings/nearest.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace vx::settings {
namespace {

std::size_t editsBetween(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, diagonal + 1, row[j] + 1});
    }
  }
  return row.back();
}

}  // namespace

std::string nearest(std::string_view word, std::span<const std::string> names) {
  std::string best;
  std::size_t least = (word.size() + 2) / 3 + 1;
  for (const std::string& name : names) {
    const std::size_t edits = editsBetween(word, name);
    if (edits < least) least = edits, best = name;
  }
  return best;
}

}  // namespace vx::settings
