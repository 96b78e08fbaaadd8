// Settings that a comparison leaves out. The format of such a file: one id or name a line, names in
// any letter case; blanks around it do not matter; "#" begins a comment.
#ifndef KNOB_DIFF_IGNORE_LIST_H
#define KNOB_DIFF_IGNORE_LIST_H

#include <set>
#include <string>
#include <string_view>

namespace diff {

class IgnoreList {
 public:
  void add(std::string_view content);
  bool has(int id, const std::string& name) const;

 private:
  std::set<std::string> entries_;  // names in capitals
};

}  // namespace diff

#endif
