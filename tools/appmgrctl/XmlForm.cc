#include "tools/appmgrctl/XmlForm.h"

#include <charconv>
#include <cstdio>
#include <cstring>

#include <pugixml.hpp>

namespace appmgrctl {
namespace {

// The generic response and where its outcome is kept.
constexpr unsigned long kGenericTag = 0x010003f0;
constexpr unsigned long kOutcomeElement = 0x1000406;
constexpr uint64_t kStatusKey = 10268693;
constexpr uint64_t kErrorTextKey = 12053727;

void Escaped(std::string_view text, std::string* out) {
  for (char c : text) {
    switch (c) {
      case '&':
        *out += "&amp;";
        break;
      case '<':
        *out += "&lt;";
        break;
      case '>':
        *out += "&gt;";
        break;
      case '\r':
        *out += "&#13;";
        break;
      default:
        *out += c;
    }
  }
}

bool Number(const char* text, int base, uint64_t* value) {
  const char* end = text + std::strlen(text);
  if (base == 16) {
    if (std::strncmp(text, "0x", 2) != 0 && std::strncmp(text, "0X", 2) != 0) return false;
    text += 2;
  }
  auto [at, ec] = std::from_chars(text, end, *value, base);
  return ec == std::errc() && at == end && text != end;
}

bool Signed(const char* text, int64_t* value) {
  const char* end = text + std::strlen(text);
  auto [at, ec] = std::from_chars(text, end, *value, 10);
  return ec == std::errc() && at == end && text != end;
}

bool ReadRecord(const pugi::xml_node& node, XmlNode* out, std::string* error, int depth);

bool ReadField(const pugi::xml_node& child, XmlNode* out, std::string* error, int depth) {
  const std::string kind = child.name();
  int64_t field = 0;
  if (!Signed(child.attribute("n").value(), &field) || field < 1 || field > 65535) {
    *error = "a <" + kind + "> without a field number";
    return false;
  }
  XmlValue& v = out->fields[static_cast<int>(field)];
  if (kind == "int") {
    v.kind = XmlValue::Kind::kInt;
    if (!Signed(child.child_value(), &v.number)) {
      *error = "field " + std::to_string(field) + " is not an integer";
      return false;
    }
  } else if (kind == "str" || kind == "bin") {
    v.kind = XmlValue::Kind::kText;
    if (kind == "str") v.text = child.text().get();
  } else if (kind == "list") {
    v.kind = XmlValue::Kind::kList;
    for (const pugi::xml_node& entry : child.children("entity")) {
      XmlNode& n = v.list.emplace_back();
      if (!ReadRecord(entry, &n, error, depth + 1)) return false;
    }
  } else {
    *error = "an unknown element <" + kind + ">";
    return false;
  }
  return true;
}

bool ReadRecord(const pugi::xml_node& node, XmlNode* out, std::string* error, int depth) {
  if (depth > 32) {
    *error = "lists nested too deep";
    return false;
  }
  for (const pugi::xml_node& child : node.children()) {
    if (child.type() != pugi::node_element || std::strcmp(child.name(), "elem") == 0) continue;
    if (!ReadField(child, out, error, depth)) return false;
  }
  return true;
}

}  // namespace

XmlRecord& XmlRecord::Int(int field, int64_t value) {
  content_ += "<int n=\"" + std::to_string(field) + "\">" + std::to_string(value) + "</int>";
  return *this;
}

XmlRecord& XmlRecord::Str(int field, std::string_view value) {
  content_ += "<str n=\"" + std::to_string(field) + "\">";
  Escaped(value, &content_);
  content_ += "</str>";
  return *this;
}

XmlRecord& XmlRecord::List(int field, const std::vector<XmlRecord>& entries) {
  content_ += "<list n=\"" + std::to_string(field) + "\">";
  for (const XmlRecord& e : entries) content_ += "<entity>" + e.content() + "</entity>";
  content_ += "</list>";
  return *this;
}

std::string XmlDocument(std::string_view tagName, unsigned long tagId, const XmlRecord& fields) {
  // The root is the tag name with each "::" written as ".".
  std::string root;
  for (size_t i = 0; i < tagName.size(); ++i) {
    if (tagName.compare(i, 2, "::") == 0) {
      root += '.';
      ++i;
    } else {
      root += tagName[i];
    }
  }
  char tag[32];
  std::snprintf(tag, sizeof tag, "0x%08lx", tagId);
  return "<" + root + " tag=\"" + tag + "\">" + fields.content() + "</" + root + ">";
}

const std::vector<XmlNode>& XmlNode::List(int field) const {
  static const std::vector<XmlNode> kNone;
  auto it = fields.find(field);
  return it != fields.end() && it->second.kind == XmlValue::Kind::kList ? it->second.list : kNone;
}

int64_t XmlNode::Int(int field) const {
  auto it = fields.find(field);
  return it != fields.end() && it->second.kind == XmlValue::Kind::kInt ? it->second.number : 0;
}

std::string XmlNode::Text(int field) const {
  auto it = fields.find(field);
  return it != fields.end() && it->second.kind == XmlValue::Kind::kText ? it->second.text
                                                                        : std::string();
}

bool ReadXmlAnswer(std::string_view text, XmlAnswer* out, std::string* error) {
  pugi::xml_document doc;
  pugi::xml_parse_result parsed =
      doc.load_buffer(text.data(), text.size(), pugi::parse_default, pugi::encoding_utf8);
  if (!parsed) {
    *error = std::string("the answer is not XML: ") + parsed.description();
    return false;
  }
  pugi::xml_node root = doc.document_element();
  XmlAnswer a;
  a.root = root.name();
  uint64_t tag = 0;
  if (!Number(root.attribute("tag").value(), 16, &tag)) {
    *error = "the answer's root <" + a.root + "> names no tag";
    return false;
  }
  a.tag = static_cast<unsigned long>(tag);
  if (!ReadRecord(root, &a.content, error, 0)) return false;
  if (a.tag == kGenericTag) {
    a.generic = true;
    for (const pugi::xml_node& elem : root.children("elem")) {
      uint64_t id = 0;
      if (!Number(elem.attribute("id").value(), 16, &id) || id != kOutcomeElement) continue;
      for (const pugi::xml_node& attr : elem.children()) {
        uint64_t key = 0;
        if (!Number(attr.attribute("key").value(), 10, &key)) continue;
        if (key == kStatusKey) Signed(attr.child_value(), &a.status);
        if (key == kErrorTextKey) a.errorText = attr.text().get();
      }
    }
  }
  *out = std::move(a);
  return true;
}

bool XmlTagOf(std::string_view text, unsigned long* tag) {
  pugi::xml_document doc;
  if (!doc.load_buffer(text.data(), text.size(), pugi::parse_default, pugi::encoding_utf8)) {
    return false;
  }
  uint64_t value = 0;
  if (!Number(doc.document_element().attribute("tag").value(), 16, &value)) return false;
  *tag = static_cast<unsigned long>(value);
  return true;
}

}  // namespace appmgrctl
