// One side of a comparison, as it was named on the command line: a server or a settings file.
#ifndef KNOB_DIFF_SIDE_H
#define KNOB_DIFF_SIDE_H

#include <map>
#include <string>

namespace diff {

struct Side {
  // A name with a scheme (postgresql://, file:, ...), "localhost" and this machine's own host name
  // are servers; everything else is the path of a file.
  explicit Side(const std::string& name);

  std::string shown{};  // the name without any password, for people
  // The name for knob; empty for a file. Of passwords it holds those that no variable hands on,
  // such as "sslpassword".
  std::string server{};
  std::string path{};
  std::string user{};
  // What hands the password on, and nothing but it: arguments of a process can be seen by others.
  std::map<std::string, std::string> environment{};

  bool isServer() const { return !server.empty(); }
};

}  // namespace diff

#endif
