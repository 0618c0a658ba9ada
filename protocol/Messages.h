// The message constants: one Op per catalogued request/response pair, named after its row in
// protocol/messages/*.def. Operations, handlers and tests name messages only through these.
#pragma once

#include "protocol/Message.h"
#include "protocol/Schemas.h"

namespace appmgr::msg {

#define APPMGR_MESSAGE(constant, NAME, reqId, Req, respId, Resp) \
  inline constexpr ::appmgr::wire::Op<Req, Resp> constant{reqId, respId, NAME "_REQ", NAME "_RESP"};
#include "protocol/messages/All.def"
#undef APPMGR_MESSAGE

}  // namespace appmgr::msg
