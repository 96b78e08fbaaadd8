// What Patroni does not let the parameters in a cluster's configuration decide, or not fully. It
// takes any value for these settings without a word.
#ifndef KNOB_PATRONI_RULES_H
#define KNOB_PATRONI_RULES_H

#include <string_view>

#include "tuning/patroni/Configuration.h"
#include "tuning/postgresql/NewValue.h"
#include "tuning/postgresql/Setting.h"

namespace tn::patroni {

class Rules {
 public:
  // Throws why Patroni would ignore the value, or manages the setting in a way of its own.
  static void check(const postgresql::Setting& setting, const postgresql::NewValue& value,
                    const Configuration& configuration);

  // True: Patroni itself gives the setting on every member.
  static bool isPatronisOwn(std::string_view settingName);
  // True: Patroni gives the setting, since the cluster is in synchronous mode.
  static bool isOfSynchronousMode(std::string_view settingName, const Configuration& configuration);
  // True: the cluster's configuration alone decides, whatever a member's own says. Where it names
  // no value Patroni has one.
  static bool isOfClusterAlone(std::string_view settingName);
};

}  // namespace tn::patroni

#endif
