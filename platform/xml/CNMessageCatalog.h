// The catalogue of XML message classes: every class this build knows, by tag id. The factory
// (CNMessageBase::Create, FromXml) and Initialize's self-check read it; tests walk it so that
// every registered class is round-tripped. Adding a message class means adding its row in
// CNMessageCatalog.cc. Tag ids are part of the wire and never change or get reused.
//
// The table is a constant; reading it needs no lock.
#pragma once

#include <memory>
#include <span>

class CNMessageBase;

struct CNMessageType {
  unsigned long tagId;
  const char* tagName;
  std::unique_ptr<CNMessageBase> (*create)();
};

// Every message class, in ascending tag id.
std::span<const CNMessageType> CNMessageTypes();

// The row of `tagId`; null when no class claims it.
const CNMessageType* CNFindMessageType(unsigned long tagId);
