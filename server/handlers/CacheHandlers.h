// The request handler of the cache fill: a client process of a job asks, once, for every
// request/response pair the server prepared for that job, and answers those requests from its
// own cache afterwards.
//
// The answer's xmlText is an App::EnableAppServerCacheResp message (compact form) listing the
// job's prepared entries (PreparedCacheStore) in their stored order. A job with no entries (any
// job id is valid) gets a message with no entities, not an error. A store failure, or entries
// too many or too large for one message, is the response header's error code and text.
#pragma once

#include "server/core/Server.h"
#include "server/store/Store.h"

namespace appmgr::server {

// REQUIRES: `store` outlives every request the server answers (stop the server first).
void RegisterCacheHandlers(Server& server, Store& store);

}  // namespace appmgr::server
