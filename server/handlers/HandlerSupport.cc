#include "server/handlers/HandlerSupport.h"

#include <algorithm>
#include <cstring>

#include "platform/base/EvDebug.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {

namespace {
constexpr const char* kLabel = "Handlers";
}

void ErrorIntoHeader(const CLmError& error, AppMgrRespHdr& hdr, Exchange& x) {
  hdr.errorCode = error.GetErrorCode();
  hdr.errorText = x.Text(error.Text());
  switch (error.GetErrorCode()) {
    case kStoreErrNotFound:
    case kStoreErrConflict:
    case kStoreErrInvalidArgument:
      EvEventWrapper::DebugLvl(kLabel, 2, "%s from connection %llu [%s]: %d (%s) %s",
                               x.request.name, static_cast<unsigned long long>(x.connection.id),
                               x.connection.client.c_str(), error.GetErrorCode(),
                               StoreErrName(error.GetErrorCode()), error.Text().c_str());
      break;
    default:
      EvEventWrapper::Error(kLabel, "%s from connection %llu [%s] failed: %d %s", x.request.name,
                            static_cast<unsigned long long>(x.connection.id),
                            x.connection.client.c_str(), error.GetErrorCode(),
                            error.Text().c_str());
  }
}

CLmError RequireText(const char* text, const char* what) {
  if (text != nullptr) return CLmError();
  return CLmError::Format(kStoreErrInvalidArgument, "the request carries no %s", what);
}

void TextsInto(const std::vector<std::string>& list, uint32_t* count, const char*** texts,
               Exchange& x) {
  const char** out = x.Array<const char*>(list.size());
  for (size_t i = 0; i < list.size(); ++i) out[i] = x.Text(list[i]);
  *count = static_cast<uint32_t>(list.size());
  *texts = out;
}

void CopyCut(const std::string& text, char* out, size_t size) {
  if (size == 0) return;
  size_t n = std::min(text.size(), size - 1);
  std::memcpy(out, text.data(), n);
  std::memset(out + n, 0, size - n);
}

}  // namespace appmgr::server
