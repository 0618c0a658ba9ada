// The storage behind CNEntity, shared by CNEntity.cc and the document reader and writer.
// Internal to platform/xml: nothing outside it includes this header.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "platform/xml/CNEntity.h"

namespace appmgr::xml {

// One value of a field or attribute. Only the member named by `kind` is meaningful.
struct Value {
  CNFieldKind kind = kCNKindNone;
  int64_t number = 0;          // kCNKindInt64
  std::string bytes;           // kCNKindString, kCNKindBinary
  std::vector<CNEntity> list;  // kCNKindList

  bool operator==(const Value& other) const;
};

struct Attribute {
  unsigned long key = 0;
  Value value;  // never a list

  bool operator==(const Attribute& other) const = default;
};

// Slot number -> attribute. Ordered maps give the deterministic wire order.
using Element = std::map<int, Attribute>;

}  // namespace appmgr::xml

struct CNEntity::Rep {
  std::map<int, appmgr::xml::Value> fields;
  std::map<unsigned long, appmgr::xml::Element> elements;  // never holds an empty element
};

namespace appmgr::xml {

// The reader and writer walk records without going through the setters.
struct EntityAccess {
  // Null for a record that was never filled.
  static const CNEntity::Rep* Of(const CNEntity& entity) { return entity.rep_.get(); }
  static CNEntity::Rep& MutableOf(CNEntity& entity) { return entity.MutableRep(); }
};

}  // namespace appmgr::xml
