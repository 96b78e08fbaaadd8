#include "driver/KnobCmdParser.h"

#include <array>
#include <memory>

#include "driver/OptionException.h"
#include "kz/Platform.h"

namespace {

constexpr std::size_t kHostNameSize = 1025;
constexpr char kLoopbackHost[] = "localhost";

}  // namespace

// The forms of an option, and the field that takes its value or the flag that it sets.
struct KnobCmdParser::Option {
  std::array<const char*, 3> forms;  // null where there is none
  kz::String KnobCmdParser::*value;
  bool KnobCmdParser::*flag;
};

const KnobCmdParser::Option* KnobCmdParser::findOption(std::string_view argument) noexcept {
  using P = KnobCmdParser;
  static constexpr Option kOptions[] = {
      {{"-U", "-u", "--USERNAME"}, &P::userName, nullptr},
      {{"-P", "-p", "--PASSWORD"}, &P::password, nullptr},
      {{"-S", "-s", "--SERVER"}, &P::serverName, nullptr},
      {{"-O", "-o", "--OUTPUTFILE"}, &P::outputFileName, nullptr},
      {{"-I", "-i", "--INPUTFILE"}, &P::inputFileName, nullptr},
      {{"-H", "-h", "--KEYWORD"}, &P::keyword, nullptr},
      {{"-D", "-d", "--DEBUG"}, &P::debugValue, nullptr},
      {{"-E", "-e", "--IGNORE_ERR"}, nullptr, &P::ignoreErrors},
      {{"-F", "-f", "--SUPPRESS_PROMPT"}, nullptr, &P::suppressOverwritePrompt},
      {{"-JSON", "-json", nullptr}, nullptr, &P::outputType}};
  for (const Option& option : kOptions) {
    for (const char* const form : option.forms) {
      if (form != nullptr && argument == form) return &option;
    }
  }
  return nullptr;
}

KnobCmdParser::KnobCmdParser()
    : messages(new MessageHelper("KNOB", "KNOB_")), positionalArguments(new StringList) {}

void KnobCmdParser::parseCmdLine(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    const Option* const option = findOption(argv[i]);
    if (option == nullptr) {
      if (argv[i][0] == '-') {
        throw OptionException(messages->getResStr("UNKNOWN_OPTION", argv[i]));
      }
      positionalArguments->add(new kz::String(argv[i]));
    } else if (option->flag != nullptr) {
      this->*option->flag = true;
    } else {
      this->*option->value = getOptionValue(++i, argc, argv);
    }
  }
  if (positionalArguments->size() > 0) settingId = *positionalArguments->get(0);
  setDefaults();
}

bool KnobCmdParser::announcesPassword(const char* argument) noexcept {
  const Option* const option = findOption(argument);
  return option != nullptr && option->value == &KnobCmdParser::password;
}

kz::String KnobCmdParser::getOptionValue(int index, int argc, char** argv) {
  if (index < argc) {
    kz::String value(argv[index]);
    if (value.charAt(0) != L'-') return value;
  }
  throw OptionException(messages->getResStr("MISSING_OPTION_VALUE", argv[index - 1]));
}

void KnobCmdParser::setDefaults() {
  if (!serverName.isEmpty()) return;
  std::array<char, kHostNameSize> host{};
  const bool known = KZGetHostNameA(host.data(), static_cast<int>(host.size())) == 0;
  serverName = known ? host.data() : kLoopbackHost;
}

KnobCmdParser::StringList* KnobCmdParser::getIDValues() const {
  auto values = std::make_unique<StringList>();
  for (int i = 1; i < positionalArguments->size(); ++i) {
    values->add(new kz::String(*positionalArguments->get(i)));
  }
  return values.release();
}

bool KnobCmdParser::givesOnly(kz::String KnobCmdParser::*operand, int fewest, int most) const {
  using P = KnobCmdParser;
  for (const auto other : {&P::outputFileName, &P::inputFileName, &P::keyword}) {
    if ((this->*other).isEmpty() == (other == operand)) return false;
  }
  const int count = positionalArguments->size();
  return count >= fewest && count <= most;
}
