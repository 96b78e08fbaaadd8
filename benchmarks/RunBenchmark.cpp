// What a run of knob costs, as a multiple of starting a program that does nothing, and what an
// import costs per line of its file.
#include <benchmark/benchmark.h>
#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <spawn.h>
#include <stdexcept>
#include <stdlib.h>
#include <string>
#include <sys/wait.h>
#include <vector>

extern char** environ;

namespace {

namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;

const fs::path& programs() {
  static const fs::path folder = fs::read_symlink("/proc/self/exe").parent_path();
  return folder;
}

// A folder that goes with the process.
const fs::path& workFolder() {
  struct Folder {
    Folder() {
      std::string name = (fs::temp_directory_path() / "knob-benchmark-XXXXXX").string();
      path = mkdtemp(name.data());
    }
    ~Folder() { fs::remove_all(path); }
    fs::path path;
  };
  static const Folder folder;
  return folder.path;
}

std::string store(const char* name) { return "file:" + (workFolder() / name).string(); }

// Seconds that the program takes, with its output thrown away.
double run(Arguments arguments) {
  arguments[0] = (programs() / arguments[0]).string();
  std::vector<char*> words;
  for (std::string& argument : arguments) words.push_back(argument.data());
  words.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  for (int stream : {1, 2}) {
    posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_WRONLY, 0);
  }
  const auto start = std::chrono::steady_clock::now();
  pid_t child = 0;
  int status = posix_spawn(&child, words[0], &actions, nullptr, words.data(), environ);
  if (status == 0) waitpid(child, &status, 0);
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  posix_spawn_file_actions_destroy(&actions);
  if (status != 0) throw std::runtime_error("the program failed: " + arguments[0]);
  return taken.count();
}

// Takes turns with the program that does nothing, so that both meet the same machine.
void comparedToHello(benchmark::State& state, const Arguments& arguments) {
  double hello = 0;
  double knob = 0;
  for ([[maybe_unused]] auto _ : state) {
    hello += run({"hello"});
    const double taken = run(arguments);
    knob += taken;
    state.SetIterationTime(taken);
  }
  state.counters["times_hello"] = knob / hello;
}

void showDefault(benchmark::State& state) {
  comparedToHello(state, {"knob", "25", "-S", store("none.db")});
}
void showChanged(benchmark::State& state) {
  run({"knob", "25", "5", "-S", store("changed.db")});
  comparedToHello(state, {"knob", "25", "-S", store("changed.db")});
}
void search(benchmark::State& state) {
  comparedToHello(state, {"knob", "-H", "cache", "-S", store("none.db")});
}
void exportAll(benchmark::State& state) {
  comparedToHello(
      state, {"knob", "-O", (workFolder() / "export").string(), "-F", "-S", store("changed.db")});
}
BENCHMARK(showDefault)->UseManualTime()->Iterations(1000);
BENCHMARK(showChanged)->UseManualTime()->Iterations(1000);
BENCHMARK(search)->UseManualTime()->Iterations(500);
BENCHMARK(exportAll)->UseManualTime()->Iterations(200);

void importLines(benchmark::State& state, const char* line) {
  const std::string file = (workFolder() / "import").string();
  {
    std::ofstream content(file);
    for (std::int64_t i = 0; i < state.range(0); ++i) content << line << '\n';
  }
  double total = 0;
  for ([[maybe_unused]] auto _ : state) {
    const double taken = run({"knob", "-I", file, "-S", store("import.db")});
    total += taken;
    state.SetIterationTime(taken);
  }
  state.counters["ns_per_line"] =
      total * 1e9 /
      static_cast<double>(state.range(0) * static_cast<std::int64_t>(state.iterations()));
}
void importOtherLines(benchmark::State& state) { importLines(state, "\tRange: 0 to 3600"); }
void importIdLines(benchmark::State& state) { importLines(state, "\tSetting ID: 25"); }
void importBadIds(benchmark::State& state) { importLines(state, "\tSetting ID: x"); }
BENCHMARK(importOtherLines)
    ->UseManualTime()
    ->Iterations(2)
    ->RangeMultiplier(10)
    ->Range(10000, 1000000);
BENCHMARK(importIdLines)
    ->UseManualTime()
    ->Iterations(2)
    ->RangeMultiplier(10)
    ->Range(10000, 1000000);
BENCHMARK(importBadIds)->UseManualTime()->Iterations(2)->RangeMultiplier(10)->Range(10000, 1000000);

}  // namespace
