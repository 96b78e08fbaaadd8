// The parts of server names, as the modules know them whose server is reached over HTTP.
#ifndef KNOB_HTTP_ENDPOINTS_H
#define KNOB_HTTP_ENDPOINTS_H

#include "tuning/Endpoints.h"

namespace tn::http {

using tn::Endpoints;
using tn::percentDecoded;
using tn::percentEncoded;
using tn::takeUntil;
using tn::variable;

}  // namespace tn::http

#endif
