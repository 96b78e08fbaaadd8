#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <unistd.h>

#include "commands/CommandProcessor.h"
#include "kz/io/IoException.h"
#include "kz/io/OutputStreamWriter.h"
#include "kz/io/StdioOutputStream.h"
#include "support/TempFolder.h"
#include "support/TnDouble.h"
#include "util/NumberFormatException.h"

namespace {

using Calls = std::vector<std::string>;

template <typename... Arguments>
std::string say(const char* key, Arguments... arguments) {
  return MessageHelper("KNOB", "KNOB_").getResStr(key, arguments...).getBytes();
}

std::string number(int value) { return std::to_string(value); }

// Output as it is easier to read: > for a tab, | for a line end, ' for a double quote.
std::string drawn(std::string text) {
  for (char& character : text) {
    const std::size_t at = std::string_view(">|'").find(character);
    if (at != std::string_view::npos) character = "\t\n\""[at];
  }
  return text;
}

std::string header(const std::string& text) {
  const std::string rule = std::string(text.size(), '=') + "\n";
  return rule + kz::String(text).toUpper().getBytes() + "\n" + rule;
}

kz::Reference<kz::io::PrintWriter> writerOn(kz::Reference<kz::io::OutputStream> stream) {
  kz::Reference<kz::io::Writer> writer(new kz::io::OutputStreamWriter(stream.get(), nullptr, 2048));
  return kz::Reference<kz::io::PrintWriter>(new kz::io::PrintWriter(writer.get(), true));
}

struct Result {
  std::string out, err, failure;
};

class Commands : public testing::Test {
 protected:
  // One run of the program, from the connection on.
  Result run(const std::function<void(CommandProcessor&)>& operation,
             const std::string& output = "") {
    Result result;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    auto out = writerOn(kz::Reference<kz::io::OutputStream>(new kz::io::StdioOutputStream));
    auto err = writerOn(kz::io::StdioOutputStream::getStdErrorStream());
    kz::Reference<Logger> log(new Logger);
    kz::Reference<SvcConfigHelper> service(new SvcConfigHelper);
    service->connect("", "", "");
    engine.calls.clear();
    try {
      CommandProcessor processor(service, out, err, log, output, "");
      operation(processor);
    } catch (const SvcException& failure) {
      result.failure = number(failure.getErrorCode());
    } catch (const NumberFormatException&) {
      result.failure = "no number";
    } catch (const kz::io::IoException& failure) {
      result.failure = failure.getDescription().getBytes();
    }
    EXPECT_EQ(engine.calls.back(), "TnStop(0)");
    result.out = testing::internal::GetCapturedStdout();
    result.err = testing::internal::GetCapturedStderr();
    return result;
  }
  Result show(int id, bool json, int mode) {
    return run([=](CommandProcessor& processor) { processor.printIDDetails(id, json, mode); });
  }
  Result exportAll(bool ignoreErrors, bool json) {
    return run([=](CommandProcessor& it) { it.writeConfiguration(ignoreErrors, true, json); },
               file);
  }

  TnDouble& engine = TnDouble::reset();
  const TempFolder folder;
  const std::string file = folder / "settings";
};

TEST_F(Commands, ShowEveryTypeExactly) {
  const std::string noMembers = ">'range': [ ],|>'options': [ ],|";
  const std::string items = ">" + say("TAG_OPTIONS") + "|>>0>red|>>1>green|>>2>blue|";
  const std::string itemMembers =
      ">'range': [ ],|>'options': [|>>{'index': 0,'value': 'red'},|"
      ">>{'index': 1,'value': 'green'},|>>{'index': 2,'value': 'blue'}|>],|";
  const struct {
    int id, type;
    std::string name, value, standard, options, members;
  } cases[] = {
      {25, 1, "Cache Size", "5", "4", ">" + say("TAG_RANGE", -3, "100") + "|",
       ">'range': [|>>{'min_range': -3, 'max_range': 100}|>],|>'options': [ ],|"},
      {26, 0, "Cache Max Size", "Yes", "Nope", ">" + say("TAG_BOOL_OPTIONS", "Yes\t", "Nope") + "|",
       ">'range': [ ],|>'options': [|>>{'index': 0,'value': 'Yes'},|>>{'index': 1,'value': 'Nope'}|"
       ">],|"},
      {74, 2, "Log Path", "C:\\a", "\\", "", noMembers},
      {81, 4, "Colors", "0 2", "", items, itemMembers},
      {82, 9, "Odd", "", "", "", noMembers}};
  for (const auto& [id, type, name, value, standard, options, members] : cases) {
    const std::string help = id == 25 ? "The \"size\" on C:\\." : "Help.";
    const std::string jsonHelp = id == 25 ? "The \\\"size\\\" on C:\\." : "Help.";
    const std::string side = say(id == 26 ? "HDR_CLIENT" : "HDR_SERVER");
    const std::string text = header(name) + "\t" + say("TAG_ID") + " " + number(id) + "\n\t" +
                             say("TAG_VALUE") + " " + value + "\n" + drawn(options) + "\t" +
                             say("TAG_DEF_VALUE", standard.c_str()) + "\n\t" +
                             say("TAG_DESC", side.c_str(), help.c_str()) + "\n";
    const std::string json =
        drawn(">'name': '" + name + "',|>'id': " + number(id) + ",|>'value': '" +
              (id == 74 ? "C:\\\\a" : value) + "',|>'type': " + number(type) + ",|" + members +
              ">'default_values': '" + (id == 74 ? "\\\\" : standard) + "',|>'description': '" +
              jsonHelp + "',|>'clientserver': '" + (id == 26 ? "Client'|" : "Server'|"));
    // The export has the same lines two tabs further to the right, and every maximum in quotes.
    std::string exported = "\t\t" + json;
    for (std::size_t end = 0; (end = exported.find('\n', end + 1)) + 1 < exported.size();) {
      exported.insert(end + 1, "\t\t");
    }
    if (type == 1) exported.replace(exported.find("100"), 3, "\"100\"");
    EXPECT_EQ(show(id, false, CommandProcessor::DISPLAY_LAYOUT).out, text);
    EXPECT_EQ(show(id, true, CommandProcessor::DISPLAY_LAYOUT).out, json);
    EXPECT_EQ(show(id, true, CommandProcessor::EXPORT_LAYOUT).out, exported);
  }
  engine.answers["TnCountSelectionItems(-1,81)"].numbers = {0};
  engine.answers["TnGetAllPossibleSelections(-1,81,0)"].numbers = {};
  EXPECT_NE(show(81, true, 4).out.find(drawn("|>'options': [|>],|")), std::string::npos);
  for (const int id : {27, 999}) {
    EXPECT_EQ(show(id, true, 4).failure + show(id, true, 4).out, "8002");
  }
}

TEST_F(Commands, ShowSymbolicMaximaInWords) {
  for (const auto& [maximum, key] : std::vector<std::pair<int, const char*>>{
           {-1, "INFO_MAX_MEM"}, {-2, "INFO_MAX_DISK"}, {-129, "INFO_MAX_MEM_DISK"}}) {
    engine.answers["TnGetValueLimit(-1,25)"].numbers[0] = maximum;
    const std::string member = ", \"max_range\": \"" + say(key) + "\"}\n";
    EXPECT_NE(show(25, true, 1).out.find(member), std::string::npos);
    EXPECT_NE(show(25, true, 4).out.find(member), std::string::npos);
    EXPECT_NE(show(25, false, 4).out.find(say("TAG_RANGE", -3, say(key).c_str())),
              std::string::npos);
  }
}

TEST_F(Commands, SetEveryTypeAndConfirm) {
  const struct {
    int id;
    std::vector<std::string> values;
    std::string outcome;  // the call, or the failure before one
  } cases[] = {{25, {" 7", "8"}, "TnSetLongValue(-1,25,7,2)"},
               {25, {"-4294967297"}, "TnSetLongValue(-1,25,-4294967297,2)"},
               {26, {"yes", "x"}, "TnSetBooleanValue(-1,26,1,2)"},
               {26, {"True"}, "TnSetBooleanValue(-1,26,1,2)"},
               {26, {"NOPE"}, "TnSetBooleanValue(-1,26,0,2)"},
               {26, {"0"}, "TnSetBooleanValue(-1,26,0,2)"},
               {26, {"no"}, "8004"},
               {74, {"a", "b"}, "TnSetStringValue(-1,74,a,2)"},
               {74, {""}, "TnSetStringValue(-1,74,,2)"},
               {81, {"0", "2"}, "TnSetSelectionValue(-1,81,0 2 ,2)"},
               {81, {"0", "x"}, "no number"},
               {82, {"5"}, "TnSetSelectionValue(-1,82,5 ,2)"},
               {27, {"1"}, "8002"}};
  for (const auto& row : cases) {
    const kz::Reference<CommandProcessor::StringList> list(new CommandProcessor::StringList);
    for (const std::string& value : row.values) list->add(new kz::String(value));
    const bool restart = row.id == 26 || row.id == 74;
    const std::string text =
        say("INFO_STG_UPDATED", row.id) + (restart ? " " + say("INFO_RESTART") : "");
    for (const bool json : {false, true}) {
      const auto set = [&](CommandProcessor& processor) {
        processor.setValue(row.id, list.get(), json);
      };
      const Result result = run(set);
      const Calls calls = engine.callsOf("TnSet");
      EXPECT_EQ((calls.empty() ? "" : calls.at(0)) + result.failure, row.outcome);
      const std::string confirmation = json ? "\t\"status\": \"" + text + "\"\n" : text + "\n";
      EXPECT_EQ(result.out, calls.empty() ? "" : confirmation);
      if (calls.empty()) continue;
      engine.answers[calls[0]].status = TN_INTERNAL_ERROR;
      EXPECT_EQ(run(set).failure, "7012");
      engine.answers.erase(calls[0]);
    }
  }
}

TEST_F(Commands, ExportEndsWithAnyCallThatFails) {
  exportAll(false, true);
  const Calls calls = engine.callsOf("TnGet");
  ASSERT_GT(calls.size(), 20U);
  for (const std::string& call : calls) {
    TnDouble::reset().answers[call].status = TN_INTERNAL_ERROR;
    EXPECT_EQ(exportAll(false, true).failure, "7012") << call;
  }
}

TEST_F(Commands, ExportGoesOnAfterAFailureOnlyWhenTold) {
  const std::string reason =
      "7012: " + MessageHelper("TNMSG", "KZ_MSG_P_E_").getResStr("7012").getBytes();
  const struct {
    const char* failing;
    int lastSetting;  // 0: nothing can go on
  } cases[] = {{"TnGetSettingHelp(26,1024)", 26},
               {"TnGetSettingList(-1,1,50)", -1},
               {"TnGetCategoryList(-1,30)", 0}};
  for (const auto& [failing, lastSetting] : cases) {
    TnDouble::reset().answers[failing].status = TN_INTERNAL_ERROR;
    for (const bool json : {false, true}) {
      const char* const nextCategory = json ? "\"Files\"" : "FILES";
      EXPECT_EQ(exportAll(false, json).failure, "7012");
      EXPECT_EQ(readFile(file).find(nextCategory), std::string::npos);
      const Result result = exportAll(true, json);
      EXPECT_EQ(result.failure, lastSetting == 0 ? "7012" : "");
      if (lastSetting == 0) continue;
      EXPECT_EQ(result.err, say("WRITE_SETTING_ERROR", lastSetting, reason.c_str()) + "\n");
      EXPECT_LT(readFile(file).find("\nERROR! - " + reason + "\n"),
                readFile(file).find(nextCategory));
    }
  }
}

TEST_F(Commands, ExportLeavesAFileThatTheEngineHasOpen) {
  std::filesystem::create_hard_link((writeFile(file, "store"), file), folder / "link");
  const std::string refusal = say("ERR_CREATE_FILE", file.c_str(), say("FILE_IN_USE_ERROR").c_str(),
                                  static_cast<int>(0x80070020));
  // A descriptor that could have come from the program's caller is not the engine's.
  for (const auto& [flags, failure] :
       {std::pair{O_CLOEXEC, refusal}, std::pair{0, std::string()}}) {
    const int descriptor = open((folder / "link").c_str(), O_RDONLY | flags);
    EXPECT_EQ(exportAll(false, false).failure, failure);
    EXPECT_EQ(readFile(file) == "store", !failure.empty());
    close(descriptor);
  }
}

}  // namespace
