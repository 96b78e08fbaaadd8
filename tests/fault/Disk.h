// What a disk may hold after the power went: built from the record that the fault library keeps of
// what a run did to files (FAULT_TRACE). What was synced is there; of the rest, anything may be.
#ifndef KNOB_TESTS_FAULT_DISK_H
#define KNOB_TESTS_FAULT_DISK_H

#include <functional>
#include <map>
#include <string>
#include <vector>

class Disk {
 public:
  using Files = std::map<std::string, std::string>;  // path and content

  // Only files of the folder count. `before` are those at the beginning of the run.
  Disk(const std::string& traceFile, std::string folder, Files before);

  // How many steps the run took. After the last one it had ended.
  std::size_t steps() const { return operations_.size(); }
  // Everything that a cut after so many steps may have left, bounded: of what was not synced
  // nothing, all, any one or two things, all but any one or two, and any one torn in the middle.
  std::vector<Files> afterCut(std::size_t steps) const;

 private:
  struct Operation {
    std::string kind;  // create, write, truncate, unlink, sync
    std::string path;
    std::size_t offset;
    std::string bytes;
  };
  static void apply(const Operation& operation, Files& files, std::size_t size);
  bool settles(const Operation& sync, const Operation& earlier) const;

  std::string folder_;
  Files before_;
  std::vector<Operation> operations_{};
};

#endif
