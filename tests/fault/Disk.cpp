#include "fault/Disk.h"

#include <algorithm>
#include <sstream>

#include "support/TempFolder.h"

Disk::Disk(const std::string& traceFile, std::string folder, Files before)
    : folder_(std::move(folder)), before_(std::move(before)) {
  std::istringstream trace(readFile(traceFile));
  Operation read{};
  for (std::size_t size = 0; trace >> read.kind >> read.path >> read.offset >> size;) {
    trace.get();
    read.bytes.resize(size);
    trace.read(read.bytes.data(), static_cast<std::streamsize>(size));
    if (read.path.starts_with(folder_)) operations_.push_back(read);
  }
}

void Disk::apply(const Operation& operation, Files& files, std::size_t size) {
  if (operation.kind == "create") files[operation.path];
  if (operation.kind == "unlink") files.erase(operation.path);
  const auto file = files.find(operation.path);
  if (file == files.end()) return;  // its name never reached the disk
  std::string& content = file->second;
  if (operation.kind == "truncate") content.resize(operation.offset);
  if (operation.kind != "write") return;
  content.resize(std::max(content.size(), operation.offset + size));
  content.replace(operation.offset, size, operation.bytes, 0, size);
}

// A folder's sync settles which names are in it, a file's what it holds.
bool Disk::settles(const Operation& sync, const Operation& earlier) const {
  const bool name = earlier.kind == "create" || earlier.kind == "unlink";
  return name ? sync.path == folder_ : sync.path == earlier.path;
}

std::vector<Disk::Files> Disk::afterCut(std::size_t steps) const {
  std::vector<const Operation*> open;
  std::vector<bool> settled(steps, false);
  for (std::size_t i = 0; i < steps; ++i) {
    if (operations_[i].kind != "sync") continue;
    for (std::size_t j = 0; j < i; ++j) {
      settled[j] = settled[j] || settles(operations_[i], operations_[j]);
    }
  }
  std::vector<std::size_t> loose;
  for (std::size_t i = 0; i < steps; ++i) {
    if (!settled[i] && operations_[i].kind != "sync") loose.push_back(i);
  }
  // How much of a loose operation is kept, in halves: of one that is named other than of the rest.
  const auto built = [&](const std::map<std::size_t, std::size_t>& named, std::size_t rest) {
    Files files = before_;
    for (std::size_t i = 0; i < steps; ++i) {
      const std::size_t halves = settled[i] ? 2 : named.contains(i) ? named.at(i) : rest;
      if (halves > 0) apply(operations_[i], files, operations_[i].bytes.size() * halves / 2);
    }
    return files;
  };
  std::vector<Files> possible = {built({}, 0), built({}, 2)};
  for (const std::size_t i : loose) {
    possible.insert(possible.end(), {built({{i, 2}}, 0), built({{i, 0}}, 2), built({{i, 1}}, 2)});
    for (const std::size_t j : loose) {
      if (j <= i) continue;
      possible.insert(possible.end(), {built({{i, 2}, {j, 2}}, 0), built({{i, 0}, {j, 0}}, 2)});
    }
  }
  std::sort(possible.begin(), possible.end());
  possible.erase(std::unique(possible.begin(), possible.end()), possible.end());
  return possible;
}
