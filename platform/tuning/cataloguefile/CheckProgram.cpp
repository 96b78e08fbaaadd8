// knob-catalogue: tells the author of a catalogue file everything that is wrong with it.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include "service/TuningInterface.h"
#include "tuning/EtcdName.h"
#include "tuning/cataloguefile/CatalogueFile.h"
#include "tuning/cataloguefile/LineText.h"
#include "tuning/cataloguefile/NewCatalogue.h"

namespace {

using tn::cataloguefile::CatalogueFile;
using tn::cataloguefile::Fault;
using tn::cataloguefile::printable;

constexpr int kGood = 0;
constexpr int kBad = 1;

constexpr std::string_view kUsage =
    "Usage: knob-catalogue FILE        checks the catalogue FILE\n"
    "       knob-catalogue --new FILE  writes a commented example to start from into a new FILE\n"
    "       knob-catalogue --new       writes it to standard output\n"
    "       knob-catalogue --help | --version\n";

int complain(const std::string& what) {
  std::fprintf(stderr, "knob-catalogue: %s\n", what.c_str());
  return kBad;
}

int refuseUsage() {
  std::fputs(kUsage.data(), stderr);
  return kBad;
}

std::string systemText(int error) { return std::strerror(error); }

// A status of 0 stands only once everything has been written.
int print(std::string_view text, int status) {
  const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
  if (written && std::fflush(stdout) == 0) return status;
  return complain("cannot write to standard output: " + systemText(errno));
}

std::string help() {
  std::string text(kUsage);
  text +=
      "\nA catalogue describes settings that knob shows and changes with -S registry:FILE. Each\n"
      "fault is printed as FILE:LINE: what is wrong; the exit status is 1 if there is one, else "
      "0.\n"
      "\nThe ids of settings that take effect only after a restart (restart = true):\n";
  std::string line = " ";
  for (const int32_t id : TN_RESTART_SETTINGS) {
    if (line.size() > 88) text += std::exchange(line, " ") + '\n';
    line += ' ' + std::to_string(id);
  }
  return text + line + '\n';
}

// An address may hold a user name and a password: all between its scheme and the last at sign.
std::string withoutLogin(const std::string& store) {
  const size_t at = store.rfind('@');
  if (!tn::EtcdName::begins(store) || at == store.npos) return store;
  return store.substr(0, store.find("://") + 3) + store.substr(at + 1);
}

std::string counted(size_t count, const char* one, const char* many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::string summary(const CatalogueFile& file) {
  const auto categories = file.catalogue->categories();
  size_t settings = 0;
  for (const auto& category : categories) settings += category.settings.size();
  return file.title + ", " + counted(settings, "setting", "settings") + " in " +
         counted(categories.size(), "category", "categories") + ", values in " +
         withoutLogin(file.store);
}

int check(const std::string& path) {
  const CatalogueFile file = tn::cataloguefile::readCatalogueFile(path);
  if (file.faults.empty()) return print(printable(path + ": " + summary(file)) + '\n', kGood);
  std::string lines;
  for (const Fault& fault : file.faults) {
    const std::string line = fault.line == 0 ? "" : ':' + std::to_string(fault.line);
    lines += printable(path + line + ": " + fault.text) + '\n';
  }
  return print(lines, kBad);
}

// What is there already is left alone, a file that cannot be written in full is removed.
int writeNew(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "wxe");
  if (file == nullptr) return complain("cannot create " + path + ": " + systemText(errno));
  const std::string_view text = tn::cataloguefile::kNewCatalogue;
  bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
  written = std::fclose(file) == 0 && written;
  if (written) return kGood;
  const int error = errno;
  std::remove(path.c_str());
  return complain("cannot write " + path + ": " + systemText(error));
}

int run(int count, char** words) {
  const std::string_view first = count > 1 ? words[1] : "";
  if (first == "--new" && count == 2) return print(tn::cataloguefile::kNewCatalogue, kGood);
  if (first == "--new" && count == 3) return writeNew(words[2]);
  if (count != 2 || first.empty()) return refuseUsage();
  if (first == "--help") return print(help(), kGood);
  if (first == "--version") return print("knob-catalogue " KNOB_VERSION "\n", kGood);
  return first.starts_with("--") ? refuseUsage() : check(words[1]);
}

}  // namespace

int main(int count, char** words) {
  try {
    return run(count, words);
  } catch (const std::exception& error) {
    return complain(error.what());
  }
}
