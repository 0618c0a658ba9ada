// Conversion of a record to and from its wire bytes by message id, and printable message names.
#pragma once

#include "platform/base/CLmError.h"
#include "platform/net/kpsDatabuf.h"

enum KpNetworkXdrOp_e {
  KPNETWORK_XDR_ENCODE = 0,  // record -> bytes
  KPNETWORK_XDR_DECODE = 1,  // bytes -> record
};

// Direction selectors for KpConvertXdr's `direction` argument.
enum : int { KPNETWORK_XDR_REQUEST = 0, KPNETWORK_XDR_RESPONSE = 1 };

// Converts by message id. The record is found by (msgId, direction, record length), the length
// being the record buffer's valid length; `direction` may be null when the id and length name
// one record only.
//   KPNETWORK_XDR_ENCODE: `in` is the kpsDatabuf_v2 describing the record, `out` a byte buffer
//     of *length bytes. On success *length is the bytes written. When the room is too small
//     nothing is written, *length is the room needed and the result is a kKpErrLimit error.
//   KPNETWORK_XDR_DECODE: `in` holds *length bytes, `out` is the kpsDatabuf_v2 describing the
//     zeroed record; texts and arrays go to that buffer's arena. On success *length is the
//     bytes read (all of them).
// `errorCode` receives the result's code (0 on success).
CLmError KpConvertXdr(KpNetworkXdrOp_e op, unsigned long msgId, void* out, void* in, int* length,
                      int* direction, int& errorCode);

// The printable name of a message id, for logs: "BS_LOOKUP_REQ", or "UNKNOWN_MESSAGE".
const char* KPS_PRIM_STRING(unsigned long msgId);
