// The catalogue that `knob-catalogue --new` writes: each kind of setting once, each key explained.
#ifndef KNOB_CATALOGUEFILE_NEW_CATALOGUE_H
#define KNOB_CATALOGUEFILE_NEW_CATALOGUE_H

#include <string_view>

namespace tn::cataloguefile {

inline constexpr std::string_view kNewCatalogue =
    R"(# The settings of a service, as a catalogue for knob. Change it to what your service has, check it
# with `knob-catalogue FILE`, and open it with `knob -S registry:FILE`.

# For people.
title = "My service"

# Where the values lie that were changed: an SQLite file, made with the first change. A relative path
# starts at the folder of this file. For many machines: "etcds://etcd1,etcd2,etcd3/my-service".
store = "settings.db"

# At most 30 categories of at most 50 settings, shown in this order.
[[category]]
name = "Database Pool"

  [[category.setting]]
  # By the id a setting is shown, changed, exported and imported: never change it, never use it for
  # another setting. The ids from 1 to 301 are best left alone: for some, knob announces a restart.
  id = 1001
  name = "Pool Size"
  type = "integer"
  minimum = 1
  maximum = 500            # or "memory", "disk", "memory or disk"
  default = 20
  description = "Connections that each instance keeps open."

  [[category.setting]]
  id = 1002
  name = "Check Connections"
  type = "boolean"
  words = ["yes", "no"]    # the word for true first; "on" and "off" unless given
  default = true
  description = "Tests a connection before it is used. Costs a round trip for each request."

[[category]]
name = "Messages"

  [[category.setting]]
  id = 2001
  name = "Sender"
  type = "text"
  maximum = 200            # bytes, at most 1023
  default = "service@example.com"
  description = "The address that messages come from."

  [[category.setting]]
  id = 2002
  name = "Transport"
  type = "one-of"
  # Values are kept as positions: add new choices at the end, and leave old ones where they are.
  choices = ["smtp", "queue", "file"]
  default = "smtp"
  description = "How messages leave the service."

  [[category.setting]]
  id = 2003
  name = "Logged Events"
  type = "any-of"
  choices = ["sent", "refused", "retried"]
  default = ["refused"]    # at least one
  side = "client"          # "server" unless given
  description = "What is written to the log about messages."

  # A setting that takes effect only when the service is started again has one of the ids for which
  # knob announces that; `knob-catalogue --help` lists them.
  [[category.setting]]
  id = 26
  name = "Message Threads"
  type = "integer"
  minimum = 1
  maximum = 64
  default = 4
  restart = true
  description = "Messages that are sent at the same time."
)";

}  // namespace tn::cataloguefile

#endif
