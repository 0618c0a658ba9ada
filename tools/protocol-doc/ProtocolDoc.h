// The generated part of docs/protocol.md: every message of the catalogue with its ids and
// record lengths, and the field layout of every record (the session's control records and every
// record the catalogue carries), rendered from the same tables the codec walks, so the document
// cannot drift from the wire.
//
// The part lives between kBeginMarker and kEndMarker; the hand-written text around it is left
// alone. `make protocol-doc` rewrites it (the appmgr-protocol-doc program), and a test fails
// when it differs from what the catalogue gives.
//
// Thread-safety: plain functions over immutable tables.
#pragma once

#include <string>

namespace appmgr::doc {

inline constexpr const char* kBeginMarker =
    "<!-- BEGIN GENERATED: `make protocol-doc` writes this part from the catalogue; do not edit "
    "it by hand -->";
inline constexpr const char* kEndMarker = "<!-- END GENERATED -->";

// The generated part, without the markers; ends with a newline.
std::string RenderGenerated();

// `document` with the text between its markers replaced by `generated`. False with *error when
// the markers are missing, repeated or out of order.
bool ReplaceGenerated(const std::string& document, const std::string& generated, std::string* out,
                      std::string* error);

// The text between the markers of `document` (empty when they are missing).
std::string ExtractGenerated(const std::string& document);

}  // namespace appmgr::doc
