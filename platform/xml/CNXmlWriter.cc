#include "platform/xml/CNXmlWriter.h"

#include "platform/xml/CNBase64.h"
#include "platform/xml/CNEntityRep.h"
#include "platform/xml/CNXmlText.h"

namespace appmgr::xml {

namespace {

class Writer {
 public:
  Writer(bool pretty, std::string* out) : pretty_(pretty), out_(out) {}

  // `rep` may be null (an empty record): the element is then written self-closed.
  int Record(const char* open, const char* close, const CNEntity::Rep* rep, int level, int depth) {
    StartLine(level);
    out_->append(open);
    if (!rep || (rep->fields.empty() && rep->elements.empty())) {
      out_->append("/>");
      EndLine();
      return kCNOk;
    }
    out_->append(">");
    EndLine();
    int rc = Content(*rep, level + 1, depth);
    if (rc != kCNOk) return rc;
    StartLine(level);
    out_->append(close);
    EndLine();
    return kCNOk;
  }

 private:
  // Writes the fields and elements of `rep` as children at indent `level`; `depth` counts the
  // lists above the record.
  int Content(const CNEntity::Rep& rep, int level, int depth) {
    for (const auto& [number, value] : rep.fields) {
      if (value.kind == kCNKindList) {
        int rc = List(number, value.list, level, depth);
        if (rc != kCNOk) return rc;
      } else {
        Scalar(number, nullptr, value, level);
      }
    }
    for (const auto& [id, element] : rep.elements) {
      StartLine(level);
      out_->append("<elem id=\"");
      AppendHex(id, out_);
      out_->append("\">");
      EndLine();
      for (const auto& [slot, attribute] : element) {
        Scalar(slot, &attribute.key, attribute.value, level + 1);
      }
      StartLine(level);
      out_->append("</elem>");
      EndLine();
    }
    return kCNOk;
  }

  int List(int number, const std::vector<CNEntity>& list, int level, int depth) {
    StartLine(level);
    out_->append("<list n=\"");
    AppendInt64(number, out_);
    if (list.empty()) {
      out_->append("\"/>");
      EndLine();
      return kCNOk;
    }
    out_->append("\">");
    EndLine();
    if (depth + 1 > kCNMaxDepth) return kCNErrLimit;
    for (const CNEntity& entry : list) {
      int rc = Record("<entity", "</entity>", EntityAccess::Of(entry), level + 1, depth + 1);
      if (rc != kCNOk) return rc;
    }
    StartLine(level);
    out_->append("</list>");
    EndLine();
    return kCNOk;
  }

  // An integer, text or binary value: a field when `key` is null, else an element attribute.
  void Scalar(int number, const unsigned long* key, const Value& value, int level) {
    const char* name = value.kind == kCNKindInt64    ? "int"
                       : value.kind == kCNKindString ? "str"
                                                     : "bin";
    StartLine(level);
    out_->push_back('<');
    out_->append(name);
    out_->append(" n=\"");
    AppendInt64(number, out_);
    if (key) {
      out_->append("\" key=\"");
      AppendDecimalUnsigned(*key, out_);
    }
    out_->push_back('"');
    if (value.kind != kCNKindInt64 && value.bytes.empty()) {
      out_->append("/>");
      EndLine();
      return;
    }
    out_->push_back('>');
    if (value.kind == kCNKindInt64) {
      AppendInt64(value.number, out_);
    } else if (value.kind == kCNKindString) {
      AppendEscaped(value.bytes, out_);
    } else {
      AppendBase64(value.bytes, out_);
    }
    out_->append("</");
    out_->append(name);
    out_->push_back('>');
    EndLine();
  }

  void StartLine(int level) {
    if (pretty_) out_->append(2 * static_cast<size_t>(level), ' ');
  }
  void EndLine() {
    if (pretty_) out_->push_back('\n');
  }

  bool pretty_;
  std::string* out_;
};

}  // namespace

int WriteMessage(unsigned long tagId, std::string_view tagName, const CNEntity& record, bool pretty,
                 std::string* out) {
  std::string root;
  if (!RootNameFromTagName(tagName, &root)) return kCNErrBadArgument;
  out->clear();
  std::string open = "<" + root + " tag=\"";
  AppendHex(tagId, &open);
  open.push_back('"');
  Writer writer(pretty, out);
  int rc = writer.Record(open.c_str(), ("</" + root + ">").c_str(), EntityAccess::Of(record), 0, 0);
  if (rc != kCNOk) return rc;
  return out->size() > kCNMaxDocumentBytes ? kCNErrLimit : kCNOk;
}

}  // namespace appmgr::xml
