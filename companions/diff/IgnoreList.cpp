#include "diff/IgnoreList.h"

#include <algorithm>

#include "kz/String.h"

namespace diff {
namespace {

std::string inCapitals(std::string_view name) { return kz::String(name).toUpper().getBytes(); }

}  // namespace

void IgnoreList::add(std::string_view content) {
  constexpr std::string_view kBlanks = " \t\r";
  while (!content.empty()) {
    const size_t end = std::min(content.find('\n'), content.size());
    std::string_view line = content.substr(0, end);
    content.remove_prefix(std::min(end + 1, content.size()));
    line = line.substr(0, line.find('#'));
    const size_t first = line.find_first_not_of(kBlanks);
    if (first == line.npos) continue;
    entries_.insert(inCapitals(line.substr(first, line.find_last_not_of(kBlanks) - first + 1)));
  }
}

bool IgnoreList::has(int id, const std::string& name) const {
  return entries_.contains(std::to_string(id)) ||
         (!name.empty() && entries_.contains(inCapitals(name)));
}

}  // namespace diff
