// Carries out the one command of a run against the settings service and writes its results, as text
// or as lines of a JSON object. The dispatcher makes one over the process's objects, calls one
// command operation and lets it go; on every path that closes the connection.
//
// Operations throw SvcException for what the service refuses, NumberFormatException for texts that
// should be numbers, IoException and ResultException for failed files and output.
#ifndef KNOB_COMMANDS_COMMAND_PROCESSOR_H
#define KNOB_COMMANDS_COMMAND_PROCESSOR_H

#include "kz/String.h"
#include "kz/collections/List.h"
#include "kz/io/BufferedReader.h"
#include "kz/io/PrintWriter.h"
#include "output/FormatHelper.h"
#include "output/Logger.h"
#include "output/MessageHelper.h"
#include "service/SvcConfigHelper.h"

class CommandProcessor {
 public:
  using StringList = kz::collections::List<kz::String>;

  // Layouts of the JSON lines of a setting.
  static constexpr int EXPORT_LAYOUT = 1;   // in the settings file, inside its category
  static constexpr int DISPLAY_LAYOUT = 4;  // on the screen, in the top-level object

  CommandProcessor(kz::Reference<SvcConfigHelper>& service,
                   kz::Reference<kz::io::PrintWriter>& output,
                   kz::Reference<kz::io::PrintWriter>& errors, kz::Reference<Logger>& log,
                   kz::String outputFile, kz::String inputFile);
  CommandProcessor(const CommandProcessor&) = delete;
  CommandProcessor& operator=(const CommandProcessor&) = delete;
  virtual ~CommandProcessor();

  // The import file could not be opened: throws the exception that says so.
  [[noreturn]] void throwError(int status);
  // Whether the output file may be overwritten; asks on standard output and reads standard input
  // unless the question is to be skipped. Anything but y or Y is a no.
  bool confirmOverwriteFile(bool skipPrompt);

  // Display.
  kz::String getValue(int id, int type, int which);
  kz::String getMaxRangeStr(long maximum);
  void printIDDetails(int id, bool json, int mode);
  void printSettingOptions(int id, int type);
  void printSettingOptions_json(int id, int type, int mode);

  // Update. The values are texts, at least one.
  void setValue(int id, StringList* values, bool json);
  bool getBooleanFromStr(int id, kz::String text);
  bool requiresRestart(int id);
  bool setttingSupportsEmptyValue(int id);

  // Export.
  void writeConfiguration(bool ignoreErrors, bool suppressPrompt, bool json);
  void printCategoryDetails(CategoryInfo* category, bool json);

  // Import.
  void readConfiguration(bool ignoreErrors);
  // The rest of the next line that begins with the tag: 0, or -1 at the end of the file, where the
  // value stays as it was.
  int getTagValue(kz::String tag, kz::String& value);
  // A new list of the text's parts between blanks.
  StringList* getIDValues(kz::String text);

  // Search.
  void printMatchingIDs(kz::String keyword, bool json);

 private:
  bool importing() const noexcept { return !inputFileName.isEmpty(); }

  const std::string& sideText(bool ofServer);
  // One line of a setting's JSON, given as it stands in the display layout.
  void putJsonLine(kz::String line, int mode);
  void putJsonOptions(StringList* texts, int mode);
  void printIDDetails_json(const SettingInfo& info, int mode);
  void confirmUpdate(int id, bool json);
  // The id of the setting that is being written is told as it goes, for the case of a failure.
  void writeCategory(CategoryInfo* category, bool json, bool last, int& lastSettingId);
  void openInputFile();
  // Applies the next setting of the file; false when the import has come to its end.
  bool importSetting(bool ignoreErrors);
  void applyImportedValue(int id, kz::String valueText);
  void printMatches(kz::String keyword, kz::collections::List<SettingInfo>& matches);
  void printMatches_json(kz::String keyword, kz::collections::List<SettingInfo>& matches);

  kz::Reference<MessageHelper> messages;
  kz::Reference<SvcConfigHelper> configHelper;
  kz::Reference<kz::io::PrintWriter> out;
  kz::Reference<kz::io::PrintWriter> err;
  kz::Reference<Logger> logger;  // the debug log
  kz::String inputFileName;
  kz::String outputFileName;
  kz::Reference<FormatHelper> formatter;  // with an output file: unset until it is opened
  kz::Reference<kz::io::BufferedReader> inputReader;
  // What the id and the value line of a settings file begin with.
  kz::String tagIdText;
  kz::String tagValueText;
  std::string sideTexts[2];  // of a client and of a server setting, once one was shown
};

#endif
