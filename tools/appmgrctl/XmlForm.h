// The XML form of App Manager messages, written and read by appmgrctl itself.
//
// appmgrctl is built from the public headers alone, and the message classes are not among them,
// so the commands that send XML (alerts listed and acknowledged, advisories, log monitoring)
// write their requests and read the answers in the documented form of docs/xml.md: a root named
// after the message with its tag id, numbered <int>, <str>, <bin> and <list> fields, and keyed
// <elem> attributes (which only the generic response uses). The library carries the text.
//
// Thread-safety: plain values.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace appmgrctl {

// A record of numbered fields, built for writing.
class XmlRecord {
 public:
  XmlRecord& Int(int field, int64_t value);
  XmlRecord& Str(int field, std::string_view value);
  XmlRecord& List(int field, const std::vector<XmlRecord>& entries);
  const std::string& content() const { return content_; }

 private:
  std::string content_;
};

// The document of a message: `tagName` as "KPGui::AlertListReq", its tag id, its fields.
std::string XmlDocument(std::string_view tagName, unsigned long tagId, const XmlRecord& fields);

// A value read back: an integer, a text, or a list of records. No command reads a binary
// field, so one reads as an empty text.
struct XmlNode;
struct XmlValue {
  enum class Kind { kInt, kText, kList };
  Kind kind = Kind::kInt;
  int64_t number = 0;
  std::string text;
  std::vector<XmlNode> list;
};
struct XmlNode {
  std::map<int, XmlValue> fields;

  // The field as an integer or text; 0 or "" when absent or of another kind.
  int64_t Int(int field) const;
  std::string Text(int field) const;
  const std::vector<XmlNode>& List(int field) const;
};

// An answer read back.
struct XmlAnswer {
  std::string root;  // the root element's name, "KPGui.AlertListResp"
  unsigned long tag = 0;
  XmlNode content;
  // The generic response (tag 0x010003f0): its status and error text.
  bool generic = false;
  int64_t status = 0;
  std::string errorText;
};

// Reads `text`; false with *error saying why when it is not a document of this form.
bool ReadXmlAnswer(std::string_view text, XmlAnswer* out, std::string* error);

// The tag id a document's root names ("0x..."); false when it names none.
bool XmlTagOf(std::string_view text, unsigned long* tag);

}  // namespace appmgrctl
