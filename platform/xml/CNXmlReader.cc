#include "platform/xml/CNXmlReader.h"

#include <strings.h>

#include <cstring>
#include <initializer_list>
#include <pugixml.hpp>
#include <string_view>

#include "platform/xml/CNBase64.h"
#include "platform/xml/CNEntityRep.h"
#include "platform/xml/CNXmlText.h"

namespace appmgr::xml {

namespace {

// pugixml keeps character data raw (no parse_escapes: we decode references ourselves, so a
// reference to NUL or another forbidden character is refused rather than cut the text short),
// normalises line ends as XML requires, keeps a whitespace-only text when it is an element's
// only child (a text field of spaces), and reports the declaration and any document type
// declaration so that we can check or refuse them. Comments and processing instructions are
// skipped. Fragment mode keeps text outside the root as nodes, which a full-document parse
// would silently drop, so that we can refuse it. pugixml never expands entities other than the
// predefined ones, so no document can reach outside itself or grow on expansion, and its parser
// does not recurse on nesting.
constexpr unsigned kParseFlags = pugi::parse_cdata | pugi::parse_eol | pugi::parse_declaration |
                                 pugi::parse_doctype | pugi::parse_ws_pcdata_single |
                                 pugi::parse_fragment;

bool IsWhitespace(const char* s) {
  for (; *s; ++s) {
    if (*s != ' ' && *s != '\t' && *s != '\n' && *s != '\r') return false;
  }
  return true;
}

class Reader {
 public:
  // `base` is the offset in the caller's bytes of what pugixml parsed (past a byte order mark).
  Reader(size_t base, std::string* detail) : base_(base), detail_(detail) {}

  // `startsWithDeclaration`: the parsed text begins with "<?xml"; a declaration anywhere else
  // is refused (pugixml does not check its place).
  int Document(const pugi::xml_document& doc, bool startsWithDeclaration, ParsedMessage* out) {
    pugi::xml_node root;
    for (pugi::xml_node node : doc.children()) {
      switch (node.type()) {
        case pugi::node_declaration: {
          if (!startsWithDeclaration || node != doc.first_child())
            return Fail(kCNErrMalformed, node, "declaration not at the start");
          const char* encoding = node.attribute("encoding").value();
          if (*encoding && strcasecmp(encoding, "UTF-8") != 0 && strcasecmp(encoding, "UTF8") != 0)
            return Fail(kCNErrMalformed, node, "only UTF-8 documents are read");
          break;
        }
        case pugi::node_element:
          if (root) return Fail(kCNErrMalformed, node, "more than one root element");
          root = node;
          break;
        case pugi::node_pcdata:
          if (!IsWhitespace(node.value())) return Fail(kCNErrMalformed, node, "text outside root");
          break;
        case pugi::node_doctype:
          return Fail(kCNErrMalformed, node, "document type declarations are refused");
        default:
          return Fail(kCNErrMalformed, node, "unexpected node outside the root");
      }
    }
    if (!root) return Fail(kCNErrMalformed, doc, "no root element");
    if (!TagNameFromRootName(root.name(), &out->tagName))
      return Fail(kCNErrMalformed, root, "root element name is not a message name");
    pugi::xml_attribute tag;
    if (int rc = Attributes(root, {"tag"}, {&tag}); rc != kCNOk) return rc;
    if (!tag) return Fail(kCNErrMalformed, root, "root has no tag attribute");
    if (!ParseHexUnsigned(tag.value(), &out->tagId))
      return Fail(kCNErrBadValue, root, "tag is not a hexadecimal id");
    return Content(root, 0, &EntityAccess::MutableOf(out->record));
  }

  // Fails with `code`, naming the byte offset of `node` in the document.
  int Fail(int code, pugi::xml_node node, std::string_view what) {
    if (detail_) {
      *detail_ = "byte ";
      *detail_ += std::to_string(base_ + (node.offset_debug() < 0 ? 0 : node.offset_debug()));
      *detail_ += ": ";
      detail_->append(what);
    }
    return code;
  }

 private:
  // The fields and elements of one record: children of the root or of an <entity>. `depth`
  // counts the lists above the record.
  int Content(pugi::xml_node node, int depth, CNEntity::Rep* rep) {
    for (pugi::xml_node child : node.children()) {
      if (child.type() == pugi::node_pcdata && IsWhitespace(child.value())) continue;
      if (child.type() != pugi::node_element)
        return Fail(kCNErrMalformed, child, "text where only elements may stand");
      std::string_view name = child.name();
      if (name == "elem") {
        if (int rc = ReadElement(child, rep); rc != kCNOk) return rc;
        continue;
      }
      CNFieldKind kind = KindOf(name);
      if (kind == kCNKindNone) return Fail(kCNErrMalformed, child, "unknown element");
      pugi::xml_attribute n;
      if (int rc = Attributes(child, {"n"}, {&n}); rc != kCNOk) return rc;
      int number = 0;
      if (int rc = FieldNumber(child, n, &number); rc != kCNOk) return rc;
      Value& value = rep->fields[number];
      if (value.kind != kCNKindNone) return Fail(kCNErrMalformed, child, "field given twice");
      value.kind = kind;
      int rc = kind == kCNKindList ? List(child, depth, &value.list) : Scalar(child, &value);
      if (rc != kCNOk) return rc;
    }
    return kCNOk;
  }

  int List(pugi::xml_node node, int depth, std::vector<CNEntity>* list) {
    for (pugi::xml_node child : node.children()) {
      if (child.type() == pugi::node_pcdata && IsWhitespace(child.value())) continue;
      if (child.type() != pugi::node_element || std::string_view(child.name()) != "entity")
        return Fail(kCNErrMalformed, child, "a list holds only <entity> elements");
      if (child.first_attribute())
        return Fail(kCNErrMalformed, child, "an entity has no attributes");
      if (depth + 1 > kCNMaxDepth) return Fail(kCNErrLimit, child, "lists nest too deep");
      if (list->size() >= kCNMaxListEntries) return Fail(kCNErrLimit, child, "list too long");
      int rc = Content(child, depth + 1, &EntityAccess::MutableOf(list->emplace_back()));
      if (rc != kCNOk) return rc;
    }
    return kCNOk;
  }

  int ReadElement(pugi::xml_node node, CNEntity::Rep* rep) {
    pugi::xml_attribute id;
    if (int rc = Attributes(node, {"id"}, {&id}); rc != kCNOk) return rc;
    unsigned long elementId = 0;
    if (!id) return Fail(kCNErrMalformed, node, "elem has no id attribute");
    if (!ParseHexUnsigned(id.value(), &elementId))
      return Fail(kCNErrBadValue, node, "elem id is not a hexadecimal id");
    auto [it, inserted] = rep->elements.try_emplace(elementId);
    if (!inserted) return Fail(kCNErrMalformed, node, "elem id given twice");
    Element& element = it->second;
    for (pugi::xml_node child : node.children()) {
      if (child.type() == pugi::node_pcdata && IsWhitespace(child.value())) continue;
      CNFieldKind kind = child.type() == pugi::node_element ? KindOf(child.name()) : kCNKindNone;
      if (kind == kCNKindNone || kind == kCNKindList)
        return Fail(kCNErrMalformed, child, "an elem holds only <int>, <str> and <bin>");
      pugi::xml_attribute n, key;
      if (int rc = Attributes(child, {"n", "key"}, {&n, &key}); rc != kCNOk) return rc;
      int slot = 0;
      if (int rc = FieldNumber(child, n, &slot); rc != kCNOk) return rc;
      if (!key) return Fail(kCNErrMalformed, child, "attribute has no key");
      Attribute& attribute = element[slot];
      if (attribute.value.kind != kCNKindNone)
        return Fail(kCNErrMalformed, child, "slot given twice");
      if (!ParseDecimalUnsigned(key.value(), &attribute.key))
        return Fail(kCNErrBadValue, child, "key is not a decimal number");
      attribute.value.kind = kind;
      if (int rc = Scalar(child, &attribute.value); rc != kCNOk) return rc;
    }
    // The model never holds an empty element (setters cannot make one), so neither may a
    // document: one spelling per message.
    if (element.empty()) return Fail(kCNErrMalformed, node, "empty elem");
    return kCNOk;
  }

  // The value of an <int>, <str> or <bin> whose kind is already in *value.
  int Scalar(pugi::xml_node node, Value* value) {
    std::string text;
    for (pugi::xml_node child : node.children()) {
      if (child.type() == pugi::node_pcdata) {
        if (!AppendUnescaped(child.value(), &text))
          return Fail(kCNErrBadValue, child, "bad entity or character reference");
      } else if (child.type() == pugi::node_cdata) {
        text.append(child.value());
      } else {
        return Fail(kCNErrMalformed, child, "element inside a value");
      }
    }
    switch (value->kind) {
      case kCNKindInt64:
        if (!ParseInt64(text, &value->number))
          return Fail(kCNErrBadValue, node, "not a 64-bit decimal integer");
        return kCNOk;
      case kCNKindString:
        // The document passed IsXmlText and references decode only to XML characters, so the
        // text is valid as it stands.
        value->bytes = std::move(text);
        return kCNOk;
      default:
        if (!DecodeBase64(text, &value->bytes))
          return Fail(kCNErrBadValue, node, "not canonical base64");
        return kCNOk;
    }
  }

  int FieldNumber(pugi::xml_node node, pugi::xml_attribute n, int* number) {
    if (!n) return Fail(kCNErrMalformed, node, "missing attribute n");
    unsigned long value = 0;
    if (!ParseDecimalUnsigned(n.value(), &value) || value < 1 || value > kCNMaxFieldNumber)
      return Fail(kCNErrBadValue, node, "field number out of range");
    *number = static_cast<int>(value);
    return kCNOk;
  }

  // Binds the attributes of `node` to `out` by name (each null when absent); an attribute of
  // another name, or one given twice, is malformed.
  int Attributes(pugi::xml_node node, std::initializer_list<const char*> names,
                 std::initializer_list<pugi::xml_attribute*> out) {
    for (pugi::xml_attribute a : node.attributes()) {
      bool known = false;
      auto slot = out.begin();
      for (const char* name : names) {
        if (std::strcmp(a.name(), name) == 0) {
          if (**slot) return Fail(kCNErrMalformed, node, "attribute given twice");
          **slot = a;
          known = true;
          break;
        }
        ++slot;
      }
      if (!known) return Fail(kCNErrMalformed, node, "unknown attribute");
    }
    return kCNOk;
  }

  static CNFieldKind KindOf(std::string_view name) {
    if (name == "int") return kCNKindInt64;
    if (name == "str") return kCNKindString;
    if (name == "bin") return kCNKindBinary;
    if (name == "list") return kCNKindList;
    return kCNKindNone;
  }

  size_t base_;
  std::string* detail_;
};

}  // namespace

int ReadMessage(const char* data, size_t length, ParsedMessage* out, std::string* detail) {
  if (!data) {
    if (detail) *detail = "no document";
    return kCNErrBadArgument;
  }
  if (length > kCNMaxDocumentBytes) {
    if (detail) *detail = "document larger than " + std::to_string(kCNMaxDocumentBytes) + " bytes";
    return kCNErrLimit;
  }
  std::string_view text(data, length);
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);  // a byte order mark
  // pugixml neither checks UTF-8 nor stops at NUL consistently; checking every byte first means
  // everything later sees only well-formed characters.
  size_t bad = 0;
  if (!IsXmlText(text, &bad)) {
    if (detail) {
      *detail = "byte " + std::to_string(bad + (text.data() - data)) +
                ": not UTF-8, or a character XML does not allow (such as NUL)";
    }
    return kCNErrMalformed;
  }
  pugi::xml_document doc;
  pugi::xml_parse_result parsed =
      doc.load_buffer(text.data(), text.size(), kParseFlags, pugi::encoding_utf8);
  if (!parsed) {
    if (detail) {
      *detail = "byte " + std::to_string(parsed.offset + (text.data() - data)) + ": " +
                parsed.description();
    }
    return parsed.status == pugi::status_out_of_memory ? kCNErrLimit : kCNErrMalformed;
  }
  return Reader(text.data() - data, detail).Document(doc, text.starts_with("<?xml"), out);
}

}  // namespace appmgr::xml
