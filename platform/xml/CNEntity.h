// CNEntity: the content of an XML message, and of each entry of a list inside one.
//
// A record holds two kinds of data, both addressed by numbers so that the wire form does not
// depend on member names:
//
//  - Numbered fields. Field numbers run from 1 to kCNMaxFieldNumber; each set field holds one
//    value of a kind: a 64-bit integer, a UTF-8 text, a binary string (any bytes), or a list of
//    nested records. Message classes name their fields (field 1 of App::GetDataInPreInstallModeResp
//    is the web console address) and offer typed accessors over these.
//
//  - Keyed elements. An element is identified by a numeric element id and holds attributes in
//    numbered slots (1 to kCNMaxFieldNumber). Each attribute carries a numeric key, which names it,
//    and a value (integer, text or binary). A read names all of element id, slot and key, and
//    finds the value only when all three agree: getint64(1, 0x1000406, 10268693) reads the
//    integer in slot 1 of element 0x1000406 provided its key is 10268693. The key is a check
//    against reading a slot that a different layout filled with something else.
//
// Getters never fail: a field or attribute that is absent or of another kind reads as 0, an
// empty text or an empty list. Setters replace whatever the field or slot held before, of any
// kind, and return kCNOk or an error (CNXmlCodes.h) without changing anything.
//
// Texts must be valid UTF-8 made of characters XML can carry (no NUL or other control character
// except tab, line feed and carriage return); setters refuse other texts with kCNErrBadArgument.
// Use a binary field for arbitrary bytes.
//
// Equal records (same fields, same elements, same values) serialise to equal text: fields are
// written in ascending number, elements in ascending id, attributes in ascending slot.
//
// Ownership: a record owns its values and nested records; it is a value type (copy is deep,
// move is cheap). References and pointers returned by getters and AddEntity stay valid until
// that field or slot is next changed, or the record is destroyed; AddEntity and MutableEntry
// pointers also end when the list grows.
//
// Thread-safety: none inside. Distinct records may be used from distinct threads; const methods
// of one record may run concurrently as long as nothing changes it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/xml/CNXmlCodes.h"

namespace appmgr::xml {
struct EntityAccess;
}

class CNEntity {
 public:
  CNEntity();
  ~CNEntity();
  CNEntity(const CNEntity& other);
  CNEntity& operator=(const CNEntity& other);
  CNEntity(CNEntity&& other) noexcept;
  CNEntity& operator=(CNEntity&& other) noexcept;

  // Same fields and same elements with the same values.
  bool operator==(const CNEntity& other) const;

  // True when no field and no element is set.
  bool IsEmpty() const;
  // Removes every field and element.
  void Clear();

  // ---- Numbered fields ----

  // The kind of the value in `field`; kCNKindNone when unset (or out of range).
  CNFieldKind FieldKind(int field) const;
  bool HasField(int field) const { return FieldKind(field) != kCNKindNone; }
  // The numbers of the set fields, ascending.
  std::vector<int> FieldNumbers() const;
  void ClearField(int field);

  int SetInt64(int field, int64_t value);
  int SetString(int field, std::string_view text);
  int SetBinary(int field, std::string_view bytes);
  // Makes `field` a list holding `entries` (possibly none: an empty list is a set field).
  // kCNErrLimit when there are more than kCNMaxListEntries.
  int SetList(int field, std::vector<CNEntity> entries);
  // Appends an empty record to the list in `field` (making the field an empty list first when
  // it holds no list) and returns it for filling; null when `field` is out of range or the list
  // already has kCNMaxListEntries entries.
  CNEntity* AddEntity(int field);
  // Appends `entry` to the list in `field`, as above.
  int AddEntity(int field, CNEntity entry);
  // The entry at `index` of the list in `field`, for changing; null when there is none.
  CNEntity* MutableEntry(int field, size_t index);

  // `fallback` when the field is unset or not an integer.
  int64_t GetInt64(int field, int64_t fallback = 0) const;
  // Empty when the field is unset or of another kind.
  const std::string& GetString(int field) const;
  const std::string& GetBinary(int field) const;
  const std::vector<CNEntity>& GetList(int field) const;

  // Typed lists. T is a plain struct of a message class (App::ServerMessageCacheEntity, ...)
  // offering `int ToEntity(CNEntity*) const` and `static T FromEntity(const CNEntity&)`.
  template <typename T>
  int AddItem(int field, const T& item);
  template <typename T>
  std::vector<T> GetItems(int field) const;

  // ---- Keyed elements ----
  // (Lower-case names: getint64 and getstringByRef are the names callers use; the setters and
  // the kind query are named to match them.)

  // The integer in slot `field` of element `elementId`, provided its key is `key`; else 0.
  int64_t getint64(int field, unsigned long elementId, unsigned long key) const;
  // The text (kind kCNKindString, 2) or bytes (kCNKindBinary, 3) in slot `field` of element
  // `elementId`, provided its key is `key` and its kind is `kind`; else an empty string.
  const std::string& getstringByRef(int field, int kind, unsigned long elementId,
                                    unsigned long key) const;
  // The kind of that attribute; kCNKindNone when absent or when its key differs.
  CNFieldKind getkind(int field, unsigned long elementId, unsigned long key) const;

  // Sets slot `field` of element `elementId` (created when missing) to `key` and the value.
  int setint64(int field, unsigned long elementId, unsigned long key, int64_t value);
  // `kind` is kCNKindString (the value must be valid text) or kCNKindBinary.
  int setstring(int field, int kind, unsigned long elementId, unsigned long key,
                std::string_view value);
  // The ids of the elements present, ascending.
  std::vector<unsigned long> ElementIds() const;
  void RemoveElement(unsigned long elementId);

  // The storage; opaque outside platform/xml.
  struct Rep;

 private:
  friend struct appmgr::xml::EntityAccess;
  Rep& MutableRep();

  std::unique_ptr<Rep> rep_;  // null while the record is empty and has never been filled
};

template <typename T>
int CNEntity::AddItem(int field, const T& item) {
  CNEntity entry;
  if (int rc = item.ToEntity(&entry); rc != kCNOk) return rc;
  return AddEntity(field, std::move(entry));
}

template <typename T>
std::vector<T> CNEntity::GetItems(int field) const {
  const std::vector<CNEntity>& list = GetList(field);
  std::vector<T> items;
  items.reserve(list.size());
  for (const CNEntity& entry : list) items.push_back(T::FromEntity(entry));
  return items;
}
