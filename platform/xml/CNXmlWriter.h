// Writes a message in the wire form of docs/xml.md. Internal to platform/xml; callers use
// CNMessageBase::serialize.
#pragma once

#include <string>
#include <string_view>

class CNEntity;

namespace appmgr::xml {

// Replaces *out with the document of the message (tag id, tag name, content). `pretty` puts each
// element on a line of its own, indented by two spaces per level, and ends with a line feed;
// otherwise nothing but the elements is written. Returns kCNErrBadArgument for a tag name that
// cannot be a root name, kCNErrLimit for lists nested deeper than kCNMaxDepth or a document
// above kCNMaxDocumentBytes; *out is unspecified then.
int WriteMessage(unsigned long tagId, std::string_view tagName, const CNEntity& record, bool pretty,
                 std::string* out);

}  // namespace appmgr::xml
