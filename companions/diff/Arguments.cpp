#include "diff/Arguments.h"

#include <algorithm>
#include <string_view>

#include "diff/Settings.h"

namespace diff {
namespace {

struct Option {
  std::string_view name;
  void (*take)(Arguments& arguments, const std::string& value);
  bool hasValue = false;
};

constexpr Option kOptions[] = {
    {"-JSON", [](Arguments& a, const std::string&) { a.form = Form::json; }},
    {"-json", [](Arguments& a, const std::string&) { a.form = Form::json; }},
    {"--settings", [](Arguments& a, const std::string&) { a.form = Form::settingsFile; }},
    {"--changed", [](Arguments& a, const std::string&) { a.changed = true; }},
    {"--all", [](Arguments& a, const std::string&) { a.all = true; }},
    {"--ignore", [](Arguments& a, const std::string& v) { a.ignoreFiles.push_back(v); }, true},
    {"--user-a", [](Arguments& a, const std::string& v) { a.userA = v; }, true},
    {"--user-b", [](Arguments& a, const std::string& v) { a.userB = v; }, true},
    {"--help", [](Arguments& a, const std::string&) { a.help = true; }},
    {"--version", [](Arguments& a, const std::string&) { a.version = true; }},
};

void checkSides(const Arguments& arguments) {
  if (arguments.help || arguments.version) return;
  const size_t wanted = arguments.changed ? 1 : 2;
  if (arguments.sides.size() == wanted) return;
  throw Trouble(arguments.changed ? "--changed takes one server or settings file"
                                  : "two servers or settings files are needed");
}

}  // namespace

Arguments Arguments::parse(int argc, char** argv) {
  Arguments arguments;
  bool optionsEnded = false;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (optionsEnded || !word.starts_with('-')) {
      arguments.sides.push_back(word);
    } else if (word == "--") {
      optionsEnded = true;
    } else {
      const auto* const option = std::ranges::find(kOptions, word, &Option::name);
      if (option == std::end(kOptions)) throw Trouble("unknown option: " + word);
      if (option->hasValue && i + 1 == argc) throw Trouble("the option " + word + " needs a value");
      option->take(arguments, option->hasValue ? argv[++i] : "");
    }
  }
  checkSides(arguments);
  return arguments;
}

const char* Arguments::usage() {
  return "Usage:\n"
         "  knob-diff [OPTION]... A B        shows the settings in which A and B differ\n"
         "  knob-diff [OPTION]... --changed A\n"
         "                                   shows the settings of A that differ from their "
         "defaults\n"
         "\n"
         "A and B are servers as knob -S takes them, or settings files. A name without a scheme, "
         "but\n"
         "for localhost and this machine's host name, is a file.\n"
         "\n"
         "  -JSON            one JSON object\n"
         "  --settings       a settings file that, imported into B, makes it like A\n"
         "  --ignore FILE    leave out the settings in FILE: one id or name a line, # for "
         "comments\n"
         "  --all            against a server, also what the settings file does not hold\n"
         "  --user-a NAME, --user-b NAME\n"
         "                   who connects to A and to B\n"
         "  --help, --version\n"
         "\n"
         "Exit status: 0 no difference, 1 differences, 2 trouble.\n";
}

}  // namespace diff
