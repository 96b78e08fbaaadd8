// What a PostgreSQL server sends: lists of names, values with units, its command line. What was
// understood can be written and is understood again in the same way.
#include "fuzz/Fuzz.h"
#include "tuning/postgresql/CommandLine.h"
#include "tuning/postgresql/NameList.h"
#include "tuning/postgresql/ValueText.h"

using namespace tn::postgresql;

void tryInput(const std::string& text) {
  const CommandLine options(text);
  for (const char* const name : {"work_mem", "port", "a", ""}) options.value(name);
  for (const auto kind : {NameList::Kind::names, NameList::Kind::identifiers}) {
    const auto names = NameList::ofServer(text, kind);
    if (!names || names->empty()) continue;
    require(NameList::ofServer(NameList::stored(*names), kind) == names);
  }
  const auto typed = NameList::ofPerson(text, NameList::Kind::identifiers);
  if (typed && !typed->empty()) {
    require(NameList::ofPerson(NameList::shown(*typed), NameList::Kind::identifiers) == typed);
    require(NameList::ofServer(NameList::stored(*typed), NameList::Kind::identifiers) == typed);
  }
  ValueText::boolean(text);
  for (const char* const unit : {"", "kB", "8kB", "MB", "B", "ms", "s", "min"}) {
    ValueText::integer(text, unit, ValueText::Fractions::refused);
    ValueText::integer(text, unit);
    if (const auto real = ValueText::real(text, unit)) ValueText::ofReal(*real);
  }
}
