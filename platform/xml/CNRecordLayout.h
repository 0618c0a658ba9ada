// CNRecordLayout: the declared layout of a message class or of a list entry, as data.
//
// Each message class describes its numbered fields once, in a table of CNFieldLayout rows (number,
// kind, name, and for a list the layout of its entries). Reading a document into a typed class
// checks every declared field that is present against its row, so typed accessors never meet a
// value of the wrong kind; fields a class does not declare are kept as they came, so a message
// passes through unchanged. docs/xml.md lists the tables. Tests fill every class from its table.
//
// The tables are constants with static storage; nothing here allocates or locks.
#pragma once

#include <cstddef>
#include <string>

#include "platform/xml/CNXmlCodes.h"

class CNEntity;
struct CNRecordLayout;

struct CNFieldLayout {
  int number;                   // 1..kCNMaxFieldNumber
  CNFieldKind kind;             // never kCNKindNone
  const char* name;             // for documentation and error texts
  const CNRecordLayout* entry;  // kCNKindList: the layout of each entry; otherwise null
};

struct CNRecordLayout {
  const char* name;             // "App::ServerMessageCacheEntity"
  const CNFieldLayout* fields;  // ascending field numbers
  size_t count;
};

// kCNOk when every declared field present in `record` (and, for lists, in each entry) has its
// declared kind; else kCNErrBadValue with the path of the first bad field in *detail
// ("App::EnableAppServerCacheResp field 1 entry 3 field 2: integer expected").
int CNCheckRecord(const CNEntity& record, const CNRecordLayout& layout, std::string* detail);

// kCNOk when the table itself is sound: numbers in range and strictly ascending, kinds valid,
// an entry layout exactly for lists, and lists nesting no deeper than kCNMaxDepth.
int CNCheckLayout(const CNRecordLayout& layout, std::string* detail);
