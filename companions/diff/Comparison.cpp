#include "diff/Comparison.h"

#include <algorithm>
#include <map>

#include "kz/String.h"

namespace diff {
namespace {

bool sameName(const std::string& left, const std::string& right) {
  return left.empty() || right.empty() || kz::String(left).equalsIgnoreCase(kz::String(right));
}

// The settings of a side by id. Of a setting that stands there twice the later one counts, as it
// does for an import.
class Index {
 public:
  explicit Index(const Settings& settings) {
    for (const Setting& setting : settings) byId_[setting.id] = &setting;
  }
  // Null when the side has not got the setting.
  const Setting* find(const Setting& wanted) const {
    const auto found = byId_.find(wanted.id);
    const bool same = found != byId_.end() && sameName(found->second->name, wanted.name);
    return same ? found->second : nullptr;
  }

 private:
  std::map<int, const Setting*> byId_;
};

Difference differenceOf(const Setting& one, const Setting* other) {
  const bool named = !one.name.empty() || other == nullptr;
  const Setting& described = named ? one : *other;
  return {one.id, described.name, described.category, std::nullopt, std::nullopt};
}

}  // namespace

Differences Comparison::compare(const Settings& a, const Settings& b, Extent extent,
                                const IgnoreList& ignored) {
  const Index inA(a), inB(b);
  Differences differences;
  const auto add = [&](Difference difference) {
    if (!ignored.has(difference.id, difference.name)) differences.push_back(std::move(difference));
  };
  for (const Setting& setting : a) {
    const Setting* const other = inB.find(setting);
    if (inA.find(setting) != &setting || (other != nullptr && other->value == setting.value) ||
        (other == nullptr && extent == Extent::ofB)) {
      continue;
    }
    Difference difference = differenceOf(setting, other);
    difference.a = setting.value;
    if (other != nullptr) difference.b = other->value;
    add(std::move(difference));
  }
  for (const Setting& setting : b) {
    if (inB.find(setting) != &setting || inA.find(setting) != nullptr || extent == Extent::ofA) {
      continue;
    }
    Difference difference = differenceOf(setting, nullptr);
    difference.b = setting.value;
    add(std::move(difference));
  }
  return differences;
}

Differences Comparison::changed(const Settings& settings, const IgnoreList& ignored) {
  Differences differences;
  for (const Setting& setting : settings) {
    if (ignored.has(setting.id, setting.name)) continue;
    if (!setting.defaultValue) {
      throw Trouble("no default value for setting " + std::to_string(setting.id) +
                    ": --changed needs a full export");
    }
    if (setting.value == *setting.defaultValue) continue;
    Difference difference = differenceOf(setting, nullptr);
    difference.a = setting.value;
    difference.b = setting.defaultValue;
    differences.push_back(std::move(difference));
  }
  return differences;
}

}  // namespace diff
