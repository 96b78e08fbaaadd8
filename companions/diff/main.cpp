// knob-diff: where the settings of two servers, of two settings files, or of a server and a
// settings file differ. It reads servers with knob and changes nothing.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <unistd.h>

#include "diff/Arguments.h"
#include "diff/Comparison.h"
#include "diff/Report.h"
#include "diff/SideReader.h"

namespace {

using namespace diff;  // NOLINT(google-build-using-namespace): the program's own

// As diff has it.
enum Status { same = 0, different = 1, trouble = 2 };

int fail(const std::string& reason) {
  std::fprintf(stderr, "knob-diff: %s\n", reason.c_str());
  return trouble;
}

// A password in an address can be read by everybody in the list of processes.
void wipe(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    if (std::strchr(argv[i], ':') != nullptr) std::memset(argv[i], '*', std::strlen(argv[i]));
  }
}

std::vector<Side> sidesOf(const Arguments& arguments) {
  std::vector<Side> sides(arguments.sides.begin(), arguments.sides.end());
  sides.front().user = arguments.userA;
  sides.back().user = arguments.changed ? arguments.userA : arguments.userB;
  return sides;
}

// A file is compared with a server on what it holds: people write short ones.
Extent extentOf(const std::vector<Side>& sides, bool all) {
  if (all || sides.front().isServer() == sides.back().isServer()) return Extent::all;
  return sides.front().isServer() ? Extent::ofB : Extent::ofA;
}

bool colored() {
  const char* const noColor = std::getenv("NO_COLOR");
  return isatty(STDOUT_FILENO) != 0 && (noColor == nullptr || *noColor == '\0');
}

std::string inForm(const Arguments& arguments, const std::vector<Side>& sides,
                   const Differences& differences, const Tags& tags) {
  const Side& a = sides.front();
  const Side& b = sides.back();
  const std::string* const second = arguments.changed ? nullptr : &b.shown;
  if (arguments.form == Form::json) return Report::json(differences, a.shown, second);
  if (arguments.form == Form::settingsFile) {
    const Report::Carried carried = Report::settingsFile(differences, tags);
    std::fputs(carried.remaining.c_str(), stderr);
    return carried.file;
  }
  return Report::table(differences, a.shown, second, colored());
}

int run(int argc, char** argv) {
  const Arguments arguments = Arguments::parse(argc, argv);
  if (arguments.help || arguments.version) {
    std::fputs(arguments.help ? Arguments::usage() : "knob-diff " KNOB_VERSION "\n", stdout);
    return same;
  }
  const std::vector<Side> sides = sidesOf(arguments);
  wipe(argc, argv);
  const Tags tags = Tags::ofBundles();
  IgnoreList ignored;
  for (const std::string& path : arguments.ignoreFiles) ignored.add(SideReader::readFile(path));
  const std::vector<Settings> settings = SideReader::readAll(sides, tags);
  const Differences differences =
      arguments.changed ? Comparison::changed(settings.front(), ignored)
                        : Comparison::compare(settings.front(), settings.back(),
                                              extentOf(sides, arguments.all), ignored);
  std::fputs(inForm(arguments, sides, differences, tags).c_str(), stdout);
  return differences.empty() ? same : different;
}

}  // namespace

int main(int argc, char** argv) {
  int status = trouble;
  try {
    status = run(argc, argv);
  } catch (const Trouble& failure) {
    return fail(failure.what());
  } catch (const std::exception& failure) {
    return fail(failure.what());
  }
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    return fail(std::string("the result cannot be written: ") + std::strerror(errno));
  }
  return status;
}
