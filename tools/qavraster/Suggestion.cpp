#include "Suggestion.h"

#include <algorithm>
#include <numeric>

namespace qavraster {
namespace {

/// Insertions, deletions and replacements that make one word of the other.
std::size_t editDistance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, replaced});
    }
  }
  return row[b.size()];
}

}  // namespace

std::string suggestion(const std::string& word, const std::vector<std::string>& known) {
  const auto closest = std::min_element(known.begin(), known.end(), [&](const auto& a, const auto& b) {
    return editDistance(word, a) < editDistance(word, b);
  });
  if (closest != known.end() && editDistance(word, *closest) <= std::max<std::size_t>(word.size() / 3, 1))
    return "; did you mean " + *closest + "?";
  return "; qavraster --list shows every operation";
}

}  // namespace qavraster
