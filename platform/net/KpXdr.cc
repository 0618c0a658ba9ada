#include "platform/net/KpXdr.h"

#include "platform/net/XdrCodec.h"
#include "protocol/Catalogue.h"

using appmgr::wire::Catalogue;
using appmgr::wire::Direction;
using appmgr::wire::MessageRow;

namespace {

const MessageRow* FindRow(unsigned long msgId, unsigned long recordLength, const int* direction) {
  if (msgId > 0xffffffffu || recordLength > 0xffffffffu) return nullptr;
  auto id = static_cast<uint32_t>(msgId);
  auto len = static_cast<uint32_t>(recordLength);
  if (direction == nullptr) return Catalogue::FindAnyDirection(id, len);
  return Catalogue::Find(id, *direction == KPNETWORK_XDR_RESPONSE ? Direction::kResponse
                                                                  : Direction::kRequest,
                         len);
}

CLmError Unknown(unsigned long msgId, unsigned long recordLength) {
  return CLmError::Format(kKpErrNotSupported,
                          "message 0x%08lx (%s) has no record of %lu bytes in the catalogue",
                          msgId, KPS_PRIM_STRING(msgId), recordLength);
}

}  // namespace

const char* KPS_PRIM_STRING(unsigned long msgId) {
  return msgId > 0xffffffffu ? "UNKNOWN_MESSAGE" : Catalogue::Name(static_cast<uint32_t>(msgId));
}

CLmError KpConvertXdr(KpNetworkXdrOp_e op, unsigned long msgId, void* out, void* in, int* length,
                      int* direction, int& errorCode) {
  CLmError result;
  if (length == nullptr || *length < 0 || out == nullptr || in == nullptr) {
    result = CLmError(kKpErrBadArgument, "ConvertXdr: null buffer or negative length");
  } else if (op == KPNETWORK_XDR_ENCODE) {
    auto* record = static_cast<kpsDatabuf_v2*>(in);
    const MessageRow* row = FindRow(msgId, record->length(), direction);
    if (row == nullptr) {
      result = Unknown(msgId, record->length());
    } else {
      size_t needed = 0;
      result = appmgr::wire::Encode(*row->record, record->data(), static_cast<uint8_t*>(out),
                                    static_cast<size_t>(*length), &needed, row->name);
      if (!result && needed > static_cast<size_t>(*length)) {
        result = CLmError::Format(kKpErrLimit, "%s needs %zu bytes, the room holds %d", row->name,
                                  needed, *length);
      }
      if (needed > 0x7fffffffu) {
        result = CLmError::Format(kKpErrLimit, "%s encodes to %zu bytes", row->name, needed);
      } else if (!result || result.GetErrorCode() == kKpErrLimit) {
        *length = static_cast<int>(needed);
      }
    }
  } else if (op == KPNETWORK_XDR_DECODE) {
    auto* record = static_cast<kpsDatabuf_v2*>(out);
    const MessageRow* row = FindRow(msgId, record->length(), direction);
    if (row == nullptr) {
      result = Unknown(msgId, record->length());
    } else {
      result = appmgr::wire::Decode(*row->record, static_cast<const uint8_t*>(in),
                                    static_cast<size_t>(*length), record->data(), record->arena(),
                                    row->name);
    }
  } else {
    result = CLmError::Format(kKpErrBadArgument, "ConvertXdr: unknown operation %d", int(op));
  }
  errorCode = result.GetErrorCode();
  return result;
}
