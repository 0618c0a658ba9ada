// Reads a message in the wire form of docs/xml.md. Internal to platform/xml; callers use
// CNMessageBase::unserialize and CNMessageBase::FromXml. pugixml stays behind this file.
#pragma once

#include <cstddef>
#include <string>

#include "platform/xml/CNEntity.h"

namespace appmgr::xml {

struct ParsedMessage {
  unsigned long tagId = 0;
  std::string tagName;  // "App::GetDataInPreInstallModeResp", from the root element's name
  CNEntity record;
};

// Reads the `length` bytes at `data` as one document. On success fills *out and returns kCNOk;
// otherwise returns a CNXmlErr code, puts what failed and where (byte offset) in *detail when
// that is not null, and leaves *out unspecified. Never reads outside [data, data + length).
int ReadMessage(const char* data, size_t length, ParsedMessage* out, std::string* detail);

}  // namespace appmgr::xml
