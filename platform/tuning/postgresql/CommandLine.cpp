#include "tuning/postgresql/CommandLine.h"

#include <algorithm>

#include "tuning/postgresql/SettingName.h"

namespace tn::postgresql {
namespace {

// Of the letters for settings that a session can have otherwise than the server, the one with a
// plain value. The others (-s, -e, -t, -f, -d, -O, -P) are for the server's own developers. What no
// session can change is known without the command line.
constexpr std::string_view kWorkMemoryLetter = "-S";

std::vector<std::string_view> argumentsIn(std::string_view text) {
  constexpr std::string_view kBetween = "\" \"";
  std::vector<std::string_view> arguments;
  text = text.substr(0, text.find_last_not_of("\r\n") + 1);
  const std::size_t begin = text.find(" \"");
  if (begin == std::string_view::npos) return arguments;
  text.remove_prefix(begin + 2);
  if (!text.ends_with('"')) return arguments;
  text.remove_suffix(1);
  for (;;) {
    const std::size_t end = text.find(kBetween);
    arguments.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return arguments;
    text.remove_prefix(end + kBetween.size());
  }
}

}  // namespace

CommandLine::CommandLine(std::string_view postmasterOptions) {
  const auto arguments = argumentsIn(postmasterOptions);
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string_view argument = arguments[i];
    const bool another = i + 1 < arguments.size();
    if (argument == "-c" && another) {
      take(arguments[++i]);
    } else if (argument == kWorkMemoryLetter && another) {
      assignments_.push_back({"work_mem", std::string(arguments[++i])});
    } else if (argument.starts_with("--") || argument.starts_with("-c")) {
      take(argument.substr(2));
    }
  }
}

// "name=value"; on a command line a hyphen in the name stands for an underscore.
void CommandLine::take(std::string_view assignment) {
  const std::size_t sign = assignment.find('=');
  if (sign == std::string_view::npos) return;
  std::string name(assignment.substr(0, sign));
  std::replace(name.begin(), name.end(), '-', '_');
  assignments_.push_back({std::move(name), std::string(assignment.substr(sign + 1))});
}

std::optional<std::string_view> CommandLine::value(std::string_view settingName) const {
  const auto found = std::find_if(assignments_.rbegin(), assignments_.rend(),
                                  [settingName](const Assignment& assignment) {
                                    return isSameSetting(assignment.name, settingName);
                                  });
  if (found == assignments_.rend()) return std::nullopt;
  return found->value;
}

}  // namespace tn::postgresql
