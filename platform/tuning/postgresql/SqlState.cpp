#include "tuning/postgresql/SqlState.h"

#include <algorithm>
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

constexpr Meaning kOfStatement[] = {
    {"08", TN_CONNECTION_LOST},       //
    {"57P01", TN_CONNECTION_LOST},    // ended by an administrator
    {"57P02", TN_CONNECTION_LOST},    // a crash elsewhere in the server
    {"42501", TN_NOT_PERMITTED},      //
    {"55P02", TN_SETTING_READ_ONLY},  // cannot be changed this way
    {"22", TN_VALUE_REFUSED},         // invalid, out of range, not in the server's encoding
    {"0A", TN_VALUE_REFUSED},         // something that this build or machine cannot do
    {"42601", TN_VALUE_REFUSED},      // not in the syntax that the setting wants
    {"42602", TN_VALUE_REFUSED},      // not a name where one is wanted
    {"42622", TN_VALUE_REFUSED},      // too long a name
    {"42704", TN_VALUE_REFUSED},      // names something that the server does not have
    {"58P01", TN_SERVER_CANNOT_WRITE}, {"53100", TN_SERVER_CANNOT_WRITE},
    {"58030", TN_SERVER_CANNOT_WRITE},
};

TnStatus lookUp(std::span<const Meaning> meanings, std::string_view code) {
  const auto found = std::find_if(meanings.begin(), meanings.end(),
                                  [code](const Meaning& m) { return code.starts_with(m.pattern); });
  return found == meanings.end() ? TnStatus{TN_SERVER_ERROR} : found->status;
}

bool isCode(std::string_view text) {
  return text.size() == kCodeLength && std::all_of(text.begin(), text.end(), [](char c) {
           return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z');
         });
}

}  // namespace

TnStatus SqlState::whenConnecting(std::string_view code) { return lookUp(kWhenConnecting, code); }

TnStatus SqlState::ofStatement(std::string_view code) {
  return code.empty() ? TnStatus{TN_CONNECTION_LOST} : lookUp(kOfStatement, code);
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
