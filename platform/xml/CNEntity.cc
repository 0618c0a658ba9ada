#include "platform/xml/CNEntity.h"

#include "platform/xml/CNEntityRep.h"
#include "platform/xml/CNXmlText.h"

using appmgr::xml::Attribute;
using appmgr::xml::Element;
using appmgr::xml::Value;

namespace {

// Never destroyed, so references handed out stay valid through static destruction.
const std::string& EmptyString() {
  static const std::string* empty = new std::string();
  return *empty;
}

const std::vector<CNEntity>& EmptyList() {
  static const std::vector<CNEntity>* empty = new std::vector<CNEntity>();
  return *empty;
}

bool ValidNumber(int field) {
  return field >= 1 && field <= kCNMaxFieldNumber;
}

}  // namespace

bool appmgr::xml::Value::operator==(const Value& other) const {
  if (kind != other.kind) return false;
  switch (kind) {
    case kCNKindInt64:
      return number == other.number;
    case kCNKindString:
    case kCNKindBinary:
      return bytes == other.bytes;
    case kCNKindList:
      return list == other.list;
    default:
      return true;
  }
}

CNEntity::CNEntity() = default;
CNEntity::~CNEntity() = default;
CNEntity::CNEntity(CNEntity&& other) noexcept = default;
CNEntity& CNEntity::operator=(CNEntity&& other) noexcept = default;

CNEntity::CNEntity(const CNEntity& other)
    : rep_(other.rep_ ? std::make_unique<Rep>(*other.rep_) : nullptr) {}

CNEntity& CNEntity::operator=(const CNEntity& other) {
  if (this != &other) rep_ = other.rep_ ? std::make_unique<Rep>(*other.rep_) : nullptr;
  return *this;
}

bool CNEntity::operator==(const CNEntity& other) const {
  if (IsEmpty() || other.IsEmpty()) return IsEmpty() == other.IsEmpty();
  return rep_->fields == other.rep_->fields && rep_->elements == other.rep_->elements;
}

bool CNEntity::IsEmpty() const {
  return !rep_ || (rep_->fields.empty() && rep_->elements.empty());
}

void CNEntity::Clear() {
  rep_.reset();
}

CNEntity::Rep& CNEntity::MutableRep() {
  if (!rep_) rep_ = std::make_unique<Rep>();
  return *rep_;
}

// ---- Numbered fields ----

namespace {

const Value* FindField(const CNEntity::Rep* rep, int field, CNFieldKind kind) {
  if (!rep) return nullptr;
  auto it = rep->fields.find(field);
  if (it == rep->fields.end() || it->second.kind != kind) return nullptr;
  return &it->second;
}

}  // namespace

CNFieldKind CNEntity::FieldKind(int field) const {
  if (!rep_) return kCNKindNone;
  auto it = rep_->fields.find(field);
  return it == rep_->fields.end() ? kCNKindNone : it->second.kind;
}

std::vector<int> CNEntity::FieldNumbers() const {
  std::vector<int> numbers;
  if (!rep_) return numbers;
  numbers.reserve(rep_->fields.size());
  for (const auto& [number, value] : rep_->fields) numbers.push_back(number);
  return numbers;
}

void CNEntity::ClearField(int field) {
  if (rep_) rep_->fields.erase(field);
}

int CNEntity::SetInt64(int field, int64_t value) {
  if (!ValidNumber(field)) return kCNErrBadArgument;
  Value v;
  v.kind = kCNKindInt64;
  v.number = value;
  MutableRep().fields[field] = std::move(v);
  return kCNOk;
}

int CNEntity::SetString(int field, std::string_view text) {
  if (!ValidNumber(field) || !appmgr::xml::IsXmlText(text)) return kCNErrBadArgument;
  Value v;
  v.kind = kCNKindString;
  v.bytes.assign(text);
  MutableRep().fields[field] = std::move(v);
  return kCNOk;
}

int CNEntity::SetBinary(int field, std::string_view bytes) {
  if (!ValidNumber(field)) return kCNErrBadArgument;
  Value v;
  v.kind = kCNKindBinary;
  v.bytes.assign(bytes);
  MutableRep().fields[field] = std::move(v);
  return kCNOk;
}

int CNEntity::SetList(int field, std::vector<CNEntity> entries) {
  if (!ValidNumber(field)) return kCNErrBadArgument;
  if (entries.size() > kCNMaxListEntries) return kCNErrLimit;
  Value v;
  v.kind = kCNKindList;
  v.list = std::move(entries);
  MutableRep().fields[field] = std::move(v);
  return kCNOk;
}

CNEntity* CNEntity::AddEntity(int field) {
  if (!ValidNumber(field)) return nullptr;
  Value& v = MutableRep().fields[field];
  if (v.kind != kCNKindList) v = Value{kCNKindList, 0, {}, {}};
  if (v.list.size() >= kCNMaxListEntries) return nullptr;
  return &v.list.emplace_back();
}

int CNEntity::AddEntity(int field, CNEntity entry) {
  if (!ValidNumber(field)) return kCNErrBadArgument;
  CNEntity* slot = AddEntity(field);
  if (!slot) return kCNErrLimit;
  *slot = std::move(entry);
  return kCNOk;
}

CNEntity* CNEntity::MutableEntry(int field, size_t index) {
  if (!rep_) return nullptr;
  auto it = rep_->fields.find(field);
  if (it == rep_->fields.end() || it->second.kind != kCNKindList) return nullptr;
  return index < it->second.list.size() ? &it->second.list[index] : nullptr;
}

int64_t CNEntity::GetInt64(int field, int64_t fallback) const {
  const Value* v = FindField(rep_.get(), field, kCNKindInt64);
  return v ? v->number : fallback;
}

const std::string& CNEntity::GetString(int field) const {
  const Value* v = FindField(rep_.get(), field, kCNKindString);
  return v ? v->bytes : EmptyString();
}

const std::string& CNEntity::GetBinary(int field) const {
  const Value* v = FindField(rep_.get(), field, kCNKindBinary);
  return v ? v->bytes : EmptyString();
}

const std::vector<CNEntity>& CNEntity::GetList(int field) const {
  const Value* v = FindField(rep_.get(), field, kCNKindList);
  return v ? v->list : EmptyList();
}

// ---- Keyed elements ----

namespace {

const Attribute* FindAttribute(const CNEntity::Rep* rep, int field, unsigned long elementId,
                               unsigned long key) {
  if (!rep) return nullptr;
  auto element = rep->elements.find(elementId);
  if (element == rep->elements.end()) return nullptr;
  auto slot = element->second.find(field);
  if (slot == element->second.end() || slot->second.key != key) return nullptr;
  return &slot->second;
}

}  // namespace

int64_t CNEntity::getint64(int field, unsigned long elementId, unsigned long key) const {
  const Attribute* a = FindAttribute(rep_.get(), field, elementId, key);
  return a && a->value.kind == kCNKindInt64 ? a->value.number : 0;
}

const std::string& CNEntity::getstringByRef(int field, int kind, unsigned long elementId,
                                            unsigned long key) const {
  const Attribute* a = FindAttribute(rep_.get(), field, elementId, key);
  if (!a || a->value.kind != kind) return EmptyString();
  return a->value.bytes;  // kind is a text kind here: attributes never hold lists
}

CNFieldKind CNEntity::getkind(int field, unsigned long elementId, unsigned long key) const {
  const Attribute* a = FindAttribute(rep_.get(), field, elementId, key);
  return a ? a->value.kind : kCNKindNone;
}

int CNEntity::setint64(int field, unsigned long elementId, unsigned long key, int64_t value) {
  if (!ValidNumber(field)) return kCNErrBadArgument;
  Attribute a;
  a.key = key;
  a.value.kind = kCNKindInt64;
  a.value.number = value;
  MutableRep().elements[elementId][field] = std::move(a);
  return kCNOk;
}

int CNEntity::setstring(int field, int kind, unsigned long elementId, unsigned long key,
                        std::string_view value) {
  if (!ValidNumber(field)) return kCNErrBadArgument;
  if (kind != kCNKindString && kind != kCNKindBinary) return kCNErrBadArgument;
  if (kind == kCNKindString && !appmgr::xml::IsXmlText(value)) return kCNErrBadArgument;
  Attribute a;
  a.key = key;
  a.value.kind = static_cast<CNFieldKind>(kind);
  a.value.bytes.assign(value);
  MutableRep().elements[elementId][field] = std::move(a);
  return kCNOk;
}

std::vector<unsigned long> CNEntity::ElementIds() const {
  std::vector<unsigned long> ids;
  if (!rep_) return ids;
  ids.reserve(rep_->elements.size());
  for (const auto& [id, element] : rep_->elements) ids.push_back(id);
  return ids;
}

void CNEntity::RemoveElement(unsigned long elementId) {
  if (rep_) rep_->elements.erase(elementId);
}
