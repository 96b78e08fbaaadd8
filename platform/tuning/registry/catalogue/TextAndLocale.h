// Settings of text, dates and numbers: how they are stored, compared, searched and shown.
#ifndef KNOB_CATALOGUE_TEXT_AND_LOCALE_H
#define KNOB_CATALOGUE_TEXT_AND_LOCALE_H

#include <string_view>

#include "tuning/registry/catalogue/Entry.h"

namespace tn::registry::catalogue {

inline constexpr std::string_view kCharacterSets[] = {"UTF-8", "Latin-1", "ASCII"};
inline constexpr std::string_view kDateOrders[] = {"year month day", "day month year",
                                                   "month day year"};
inline constexpr std::string_view kDecimalMarks[] = {"point", "comma"};

inline constexpr CatalogueSetting kTextAndLocale[] = {
    oneOf(174, "Default Character Set", "0", kCharacterSets,
          "Character set of new databases. Use Latin-1 or ASCII only if other characters never "
          "occur. Takes effect after a restart."),
    text(175, "Default Collation", "root", 63,
         "Rules by which text columns are compared and sorted unless a definition names others, as "
         "a language tag; root is independent of any language. Takes effect after a restart."),
    text(177, "Message Language", "en", 35,
         "Language tag of the engine's own messages. English is used where no translation is "
         "installed. Takes effect after a restart."),
    text(205, "Time Zone Table", "zones.tab", 255,
         "File with the rules of the world's time zones, relative to the data folder. Update it "
         "when time zone rules change. Takes effect after a restart."),
    oneOf(156, "Date Order", "0", kDateOrders,
          "How a date written only in digits, such as 03-04-2020, is read. Dates with the year in "
          "front are always understood."),
    integer(157, "Century Pivot", "70", 0, 99,
            "Two-digit years below this number belong to the 2000s, the others to the 1900s. Use a "
            "lower number for birth dates."),
    oneOf(158, "Decimal Mark", "0", kDecimalMarks,
          "Character between the whole and the fractional part of a number when numbers are "
          "converted to text and back."),
    boolean(159, "Accents Matter in Searches", false, kYesNo,
            "Whether a text search distinguishes letters with and without accents. Most users "
            "expect no."),
    integer(160, "Shortest Indexed Word", "3", 1, 20,
            "Words with fewer characters are left out of text indexes. After a change, existing "
            "indexes have to be rebuilt to be complete."),
    text(161, "Stop Word File", "stopwords.txt", 255,
         "List of frequent words, one on a line, that text indexes ignore. It is read whenever "
         "such an index is built."),
    integer(210, "Text Index Memory", "64", 4, 65536,
            "MB of memory for new entries of text indexes before they are merged. Use several "
            "hundred to load many documents. Takes effect after a restart."),
};

}  // namespace tn::registry::catalogue

#endif
