// Which cluster is meant, and as whom:
//
//   patroni://[USER[:PASSWORD]@]HOST[:PORT][,HOST2[:PORT2]...][/DATABASE][?OPTIONS]
//   patronis://...   the same, where the members' REST API speaks TLS
//
// Hosts are members of the cluster, any will do; the ports are those of the REST API, 8008 unless
// given. User, database and options are for the PostgreSQL servers and are left to libpq, except
// for what names a server, which the cluster tells. What the REST API wants to know comes from
// where Patroni's users have it: PATRONI_RESTAPI_USERNAME and PATRONI_RESTAPI_PASSWORD, and
// PATRONI_CTL_CACERT, PATRONI_CTL_CERTFILE, PATRONI_CTL_KEYFILE and PATRONI_CTL_INSECURE.
#ifndef KNOB_PATRONI_ADDRESS_H
#define KNOB_PATRONI_ADDRESS_H

#include <string>
#include <string_view>
#include <vector>

#include "tuning/http/Client.h"

namespace tn::patroni {

struct Address {
  // Throws TuningError with TN_PATRONI_ADDRESS_INVALID.
  static Address parse(std::string_view server);

  // The name under which libpq finds the server of a member. `extra` are further options of libpq.
  std::string serverUri(const std::string& host, int port, std::string_view extra = {}) const;

  std::vector<std::string> endpoints{};  // "http://HOST:PORT"
  std::string apiUser{};                 // empty for none
  std::string apiPassword{};
  http::Tls tls{};
  // As they stand in the server name.
  std::string login{};     // with the at sign at its end
  std::string database{};  // with the slash at its beginning
  std::string options{};
  bool hasConnectTimeout = false;  // the options or the environment set one
};

}  // namespace tn::patroni

#endif
