#include <gtest/gtest.h>
#include <sstream>

#include "driver/KnobCmdParser.h"
#include "driver/OptionException.h"
#include "kz/Platform.h"

namespace {

// Parses a line in which '' is an empty argument and gives every field, the values, the flags and
// the command tests, or what is wrong.
std::string parsed(const std::string& line) {
  std::istringstream words("knob " + line);
  std::vector<std::string> texts;
  for (std::string word; words >> word;) texts.push_back(word == "''" ? "" : word);
  const std::vector<std::string> given = texts;
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  KnobCmdParser parser;
  try {
    parser.parseCmdLine(static_cast<int>(pointers.size()), pointers.data());
  } catch (const OptionException& failure) {
    return failure.getDescription().getBytes();
  }

  char host[1025] = {};
  KZGetHostNameA(host, sizeof host);
  const bool defaultServer = parser.getServerName().equals(host);
  kz::String all = defaultServer ? kz::String() : parser.getServerName();
  for (const auto& text : {parser.getUserName(), parser.getPassword(), parser.getOutputFileName(),
                           parser.getInputFileName(), parser.getKeywordValue(),
                           parser.getDebugValue(), parser.getSettingID()}) {
    all += "," + text;
  }
  const kz::Reference<KnobCmdParser::StringList> values(parser.getIDValues());
  for (int i = 0; i < values->size(); ++i) all += "," + *values->get(i);
  all += " ";
  for (const bool set :
       {parser.isIgnoreError(), parser.isSuppressOverwritePrompt(), parser.getOutputType(),
        parser.isCmdWriteSettings(), parser.isCmdReadSettings(), parser.isCmdSearchKeyword(),
        parser.isCmdGetIdDetail(), parser.isCmdSetIdValues()}) {
    all += set ? "+" : "-";
  }
  return all.getBytes() + (texts == given ? "" : " and the arguments were changed");
}

std::string refused(const char* key, const char* argument) {
  return MessageHelper("KNOB", "KNOB_").getResStr(key, argument).getBytes();
}

TEST(Parser, TellsWhatWasGivenAndWhichCommandItIs) {
  const std::pair<const char*, std::string> cases[] = {
      {"", ",,,,,,, --------"},
      {"''", ",,,,,,, ------+-"},
      {"25 -U u a -e b '' -e", ",u,,,,,,25,a,b, +------+"},
      {"-O f -E -F -JSON -S s -P secret", "s,,secret,f,,,, ++++----"},
      {"-o f -f -json -s s -p secret -u u", "s,u,secret,f,,,, -+++----"},
      {"--OUTPUTFILE f --IGNORE_ERR --SUPPRESS_PROMPT", ",,,f,,,, ++-+----"},
      {"-I f -D ALL", ",,,,f,,ALL, ----+---"},
      {"--INPUTFILE f --DEBUG x -i g -d y", ",,,,g,,y, ----+---"},
      {"--KEYWORD k --SERVER s --USERNAME u --PASSWORD secret", "s,u,secret,,,k,, -----+--"},
      {"-S one -S ''", ",,,,,,, --------"},
      {"-O f -I g", ",,,f,g,,, --------"},
      {"-H k 25 5", ",,,,,k,,25,5 --------"},
      {"25 --SERVER", refused("MISSING_OPTION_VALUE", "--SERVER")},
      {"-P -secret", refused("MISSING_OPTION_VALUE", "-P")},
      {"25 -5", refused("UNKNOWN_OPTION", "-5")},
      {"-", refused("UNKNOWN_OPTION", "-")},
      {"-Of%s\xff", refused("UNKNOWN_OPTION", "-Of%s\xff")}};
  for (const auto& [line, expected] : cases) EXPECT_EQ(parsed(line), expected) << line;
}

}  // namespace
