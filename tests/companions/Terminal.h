// An interactive shell on a pseudo-terminal, driven by keys as a person drives it.
#ifndef KNOB_TESTS_COMPANIONS_TERMINAL_H
#define KNOB_TESTS_COMPANIONS_TERMINAL_H

#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

class Terminal {
 public:
  Terminal(std::vector<std::string> command, std::map<std::string, std::string> environment);
  ~Terminal();
  Terminal(Terminal const&) = delete;
  Terminal& operator=(Terminal const&) = delete;

  void type(std::string const& keys) const;
  // What came out since the last wait, up to and with the text; everything when the text does not
  // come within ten seconds.
  std::string waitFor(std::string const& text);

 private:
  int terminal_ = -1;
  pid_t shell_ = -1;
  std::string seen_{};
};

#endif
