// What every request handler of appmgrd shares: registering a handler that returns a CLmError,
// turning that error into the response header, and copying results into the exchange's memory.
//
// A handler is a plain function `CLmError Fill(Store&, const Req&, Resp&, Exchange&)`. It fills
// `resp` only when it succeeds. When it fails, the response is cleared back to a bare header and
// the header carries the error's code and text: a store failure keeps the store's code
// (StoreErrors.h), so a client sees it as the status of its call; a failure the handler builds
// itself (a missing text in the request) uses the same codes.
//
// Thread-safety: registered handlers run on many connection threads at once; they keep no state
// of their own and reach the store only through its typed operations, which serialise.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/base/CLmError.h"
#include "protocol/Message.h"
#include "server/core/Server.h"
#include "server/store/Store.h"

namespace appmgr::server {

// Puts `error` into the header: its code, and its text copied into the exchange's memory. Logs
// it: a database or internal failure as an error line, a failure the request caused (not found,
// conflict, invalid argument) as a debug line at level 2.
void ErrorIntoHeader(const CLmError& error, AppMgrRespHdr& hdr, Exchange& x);

// Answers an exchange with the outcome of a handler: nothing more on success; on failure the
// response record is zeroed except for its version, and ErrorIntoHeader fills the rest.
template <class Resp>
void Answer(const CLmError& error, Resp& resp, Exchange& x) {
  if (!error) return;
  resp = Resp{};
  resp.hdr.version = 2;
  ErrorIntoHeader(error, resp.hdr, x);
}

// Registers `fill` as the handler of `op` on `server`, with `store` as its store.
// REQUIRES: `store` outlives every request the server answers (stop the server first).
template <class Req, class Resp>
void Register(Server& server, Store& store, const wire::Op<Req, Resp>& op,
              CLmError (*fill)(Store&, const Req&, Resp&, Exchange&)) {
  server.Handle(op, [&store, fill](const Req& req, Resp& resp, Exchange& x) {
    Answer(fill(store, req, resp, x), resp, x);
  });
}

// Succeeds for a text the request carries; a null text is kStoreErrInvalidArgument with
// "the request carries no <what>". Empty texts pass: what they mean is the store's to decide.
CLmError RequireText(const char* text, const char* what);

// `list` as a counted text array in the exchange's memory: *count and *texts (null when empty).
void TextsInto(const std::vector<std::string>& list, uint32_t* count, const char*** texts,
               Exchange& x);

// Copies `text` into the character array at `out` of `size` bytes, cut to size - 1 bytes and
// always NUL-terminated; the rest of the array is zeroed.
void CopyCut(const std::string& text, char* out, size_t size);
template <size_t N>
void CopyCut(const std::string& text, char (&out)[N]) {
  CopyCut(text, out, N);
}

}  // namespace appmgr::server
