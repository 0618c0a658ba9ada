#include "platform/xml/CNRecordLayout.h"

#include "platform/xml/CNEntity.h"

namespace {

const char* KindName(CNFieldKind kind) {
  switch (kind) {
    case kCNKindInt64:
      return "integer";
    case kCNKindString:
      return "text";
    case kCNKindBinary:
      return "binary";
    case kCNKindList:
      return "list";
    default:
      return "nothing";
  }
}

// Tables are finite and CNCheckLayout bounds their nesting, so this recursion ends. The path to a
// bad field is built only on failure, as the recursion unwinds.
int CheckRecord(const CNEntity& record, const CNRecordLayout& layout, std::string* where) {
  for (size_t i = 0; i < layout.count; ++i) {
    const CNFieldLayout& f = layout.fields[i];
    CNFieldKind kind = record.FieldKind(f.number);
    if (kind != kCNKindNone && kind != f.kind) {
      *where = " field " + std::to_string(f.number) + " (" + f.name + "): " + KindName(f.kind) +
               " expected";
      return kCNErrBadValue;
    }
    if (kind != kCNKindList || !f.entry) continue;
    const std::vector<CNEntity>& list = record.GetList(f.number);
    for (size_t k = 0; k < list.size(); ++k) {
      int rc = CheckRecord(list[k], *f.entry, where);
      if (rc != kCNOk) {
        *where = " field " + std::to_string(f.number) + " entry " + std::to_string(k) + *where;
        return rc;
      }
    }
  }
  return kCNOk;
}

int CheckLayout(const CNRecordLayout& layout, int depth, std::string* detail) {
  if (depth > kCNMaxDepth) {
    if (detail) *detail = std::string(layout.name) + ": lists nest too deep (or loop)";
    return kCNErrInternal;
  }
  int previous = 0;
  for (size_t i = 0; i < layout.count; ++i) {
    const CNFieldLayout& f = layout.fields[i];
    bool sound = f.number > previous && f.number <= kCNMaxFieldNumber && f.name &&
                 f.kind >= kCNKindInt64 && f.kind <= kCNKindList &&
                 (f.kind == kCNKindList) == (f.entry != nullptr);
    if (!sound) {
      if (detail)
        *detail = std::string(layout.name) + ": bad row for field " + std::to_string(f.number);
      return kCNErrInternal;
    }
    previous = f.number;
    if (f.entry) {
      int rc = CheckLayout(*f.entry, depth + 1, detail);
      if (rc != kCNOk) return rc;
    }
  }
  return kCNOk;
}

}  // namespace

int CNCheckRecord(const CNEntity& record, const CNRecordLayout& layout, std::string* detail) {
  std::string where;
  int rc = CheckRecord(record, layout, &where);
  if (rc != kCNOk && detail) *detail = layout.name + where;
  return rc;
}

int CNCheckLayout(const CNRecordLayout& layout, std::string* detail) {
  return CheckLayout(layout, 0, detail);
}
