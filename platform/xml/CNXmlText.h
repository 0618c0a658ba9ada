// Text helpers of the XML message library: what a text may contain, escaping for the writer,
// and the strict readers of numbers and character data. Internal to platform/xml.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace appmgr::xml {

// True when `text` is valid UTF-8 (shortest forms only, no surrogates, nothing above U+10FFFF)
// and every character is one XML 1.0 allows: tab, line feed, carriage return, U+0020..U+D7FF,
// U+E000..U+FFFD and U+10000..U+10FFFF. Otherwise false, with the offset of the first bad byte
// in *badOffset when that is not null.
bool IsXmlText(std::string_view text, size_t* badOffset = nullptr);

// Appends `text` (which IsXmlText accepts) as character data: &, < and > become entity
// references, and carriage return becomes &#13; so that a reader's line-end normalisation
// cannot turn it into a line feed.
void AppendEscaped(std::string_view text, std::string* out);

// Decodes the character data of a value element: the five predefined entity references and
// decimal or hexadecimal character references to characters XML allows. Anything else after an
// '&' is refused. Returns false on a bad reference.
bool AppendUnescaped(std::string_view data, std::string* out);

// Strict numbers. Decimal: an optional '-' and digits without leading zeros ("0", "-12", not
// "+1", "007", "-0" or " 1"). Hexadecimal: "0x" or "0X" and 1 to 16 hex digits.
bool ParseInt64(std::string_view text, int64_t* value);
bool ParseDecimalUnsigned(std::string_view text, unsigned long* value);
bool ParseHexUnsigned(std::string_view text, unsigned long* value);

// The root element of a message is named after its tag name with each "::" written as "."
// ("App::GetDataInPreInstallModeResp" <-> "App.GetDataInPreInstallModeResp"): ':' may stand in
// an XML 1.0 name, but namespace-aware tools read it as a prefix. A root name is an ASCII letter
// or '_' followed by letters, digits, '_' and '.', at most kMaxRootNameLength characters; the
// conversions return false for anything else, so the mapping is one-to-one both ways.
constexpr size_t kMaxRootNameLength = 200;
bool RootNameFromTagName(std::string_view tagName, std::string* rootName);
bool TagNameFromRootName(std::string_view rootName, std::string* tagName);

void AppendInt64(int64_t value, std::string* out);
void AppendDecimalUnsigned(unsigned long value, std::string* out);
// At least 8 lower-case digits: "0x010003f0".
void AppendHex(unsigned long value, std::string* out);

}  // namespace appmgr::xml
