#include "tuning/postgresql/SqlState.h"

#include <algorithm>
#include <initializer_list>
#include <span>

namespace tn::postgresql {
namespace {

constexpr std::size_t kCodeLength = 5;
constexpr std::string_view kCodeMark = ":  ";

// A pattern is a whole code or the two characters of a class of codes; the first that fits counts.
struct Meaning {
  std::string_view pattern;
  TnStatus status;
};

constexpr Meaning kWhenConnecting[] = {
    {"28", TN_LOGIN_REFUSED},              // wrong password, unknown role, no access rule
    {"08P01", TN_LOGIN_REFUSED},           // a pooler's: user, database or "options" not taken
    {"55000", TN_LOGIN_REFUSED},           // a database that takes no connections
    {"57014", TN_LOGIN_REFUSED},           // the login took too long
    {"3D000", TN_NO_SUCH_DATABASE},        //
    {"57P03", TN_SERVER_NOT_READY},        // starting up, shutting down, in recovery
    {"57P01", TN_SERVER_NOT_READY},        // stopped while it let us in
    {"57P02", TN_SERVER_NOT_READY},        // crashed while it let us in
    {"53300", TN_TOO_MANY_CONNECTIONS},    //
    {"42501", TN_NOT_PERMITTED},           // no right to connect to this database
    {"22023", TN_SERVER_ADDRESS_INVALID},  // a bad value in the address' "options"
    {"42704", TN_SERVER_ADDRESS_INVALID},  // an unknown name there
    {"55P02", TN_SERVER_ADDRESS_INVALID},  // one that a session cannot set
};

constexpr Meaning kOfQuestion[] = {
    {"08", TN_CONNECTION_LOST},     //
    {"57P01", TN_CONNECTION_LOST},  // ended by an administrator
    {"57P02", TN_CONNECTION_LOST},  // a crash elsewhere in the server
    {"42501", TN_NOT_PERMITTED},    //
};

constexpr Meaning kOfValue[] = {
    {"55P02", TN_SETTING_READ_ONLY},  // cannot be changed this way
    {"22", TN_VALUE_REFUSED},         // invalid, out of range, not in the server's encoding
    {"0A", TN_VALUE_REFUSED},         // something that this build or machine cannot do
    {"42601", TN_VALUE_REFUSED},      // not in the syntax that the setting wants
    {"42602", TN_VALUE_REFUSED},      // not a name where one is wanted
    {"42622", TN_VALUE_REFUSED},      // too long a name
    {"42704", TN_VALUE_REFUSED},      // names something that the server does not have
};

constexpr Meaning kOfAlterSystem[] = {
    {"58P01", TN_SERVER_CANNOT_WRITE},        //
    {"53100", TN_SERVER_CANNOT_WRITE},        //
    {"58030", TN_SERVER_CANNOT_WRITE},        //
    {"F0000", TN_CONFIGURATION_FILE_ERRORS},  // the file that it would change cannot be read
    {"XX000", TN_CONFIGURATION_LOCKED},       // cannot be replaced, as one mounted by itself
    {"42809", TN_CONFIGURATION_LOCKED},       // not a file
};

// The tables are looked through one after the other.
TnStatus lookUp(std::initializer_list<std::span<const Meaning>> tables, std::string_view code) {
  for (const auto& meanings : tables) {
    const auto found = std::ranges::find_if(
        meanings, [code](const Meaning& m) { return code.starts_with(m.pattern); });
    if (found != meanings.end()) return found->status;
  }
  return TN_SERVER_ERROR;
}

TnStatus ofStatement(std::initializer_list<std::span<const Meaning>> tables,
                     std::string_view code) {
  return code.empty() ? TnStatus{TN_CONNECTION_LOST} : lookUp(tables, code);
}

bool isCode(std::string_view text) {
  return text.size() == kCodeLength && std::all_of(text.begin(), text.end(), [](char c) {
           return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z');
         });
}

}  // namespace

TnStatus SqlState::whenConnecting(std::string_view code) { return lookUp({kWhenConnecting}, code); }

TnStatus SqlState::ofQuestion(std::string_view code) { return ofStatement({kOfQuestion}, code); }

TnStatus SqlState::ofValue(std::string_view code) {
  return ofStatement({kOfQuestion, kOfValue}, code);
}

TnStatus SqlState::ofAlterSystem(std::string_view code) {
  return ofStatement({kOfQuestion, kOfValue, kOfAlterSystem}, code);
}

std::string_view SqlState::lastIn(std::string_view errorText) {
  std::string_view last;
  while (!errorText.empty()) {
    const std::string_view line = errorText.substr(0, errorText.find('\n'));
    errorText.remove_prefix(std::min(errorText.size(), line.size() + 1));
    if (line.size() < kCodeMark.size() + kCodeLength) continue;
    const std::string_view code = line.substr(line.size() - kCodeLength);
    if (isCode(code) && line.substr(0, line.size() - kCodeLength).ends_with(kCodeMark)) last = code;
  }
  return last;
}

}  // namespace tn::postgresql
