// A folder of the test's own below the system's temporary folder, removed with all that is in it.
#ifndef KNOB_TESTS_SUPPORT_TEMP_FOLDER_H
#define KNOB_TESTS_SUPPORT_TEMP_FOLDER_H

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdlib.h>
#include <string>

class TempFolder {
 public:
  TempFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "knob-test-XXXXXX").string();
    path_ = mkdtemp(name.data());
    // Tests that drop to another user have to get in.
    std::filesystem::permissions(path_, std::filesystem::perms{0755});
  }
  TempFolder(TempFolder&&) = delete;
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  const std::string& path() const { return path_; }
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

inline void writeFile(const std::string& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
}

inline std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

#endif
