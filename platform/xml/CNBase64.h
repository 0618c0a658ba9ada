// Base64 (RFC 4648, standard alphabet, '=' padding, no line breaks): how binary values travel
// inside the XML text. Internal to platform/xml.
#pragma once

#include <string>
#include <string_view>

namespace appmgr::xml {

void AppendBase64(std::string_view bytes, std::string* out);

// Decodes canonical base64 only: a length that is a multiple of 4, alphabet characters, at most
// two '=' and only at the end, and zero bits in the unused low bits of the last character, so
// that every byte string has exactly one accepted spelling. No whitespace. Returns false (and
// leaves *out in an unspecified state) on anything else.
bool DecodeBase64(std::string_view text, std::string* out);

}  // namespace appmgr::xml
