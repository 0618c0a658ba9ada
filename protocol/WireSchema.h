// Field lists: how each record is described, once, to the generic codec.
//
// Every record struct (include/appmgr/records) has one Wire<T> specialisation made with
// APPMGR_WIRE_RECORD, listing its fields in order. The kind of each field is deduced from the
// member's C++ type, so a list cannot disagree with the struct about types:
//   uint32_t -> kU32, int32_t -> kI32, uint64_t -> kU64, int64_t -> kI64,
//   const char* -> kText (optional text), char[N] -> kChars (N fixed bytes),
//   a record type -> kStruct (nested in place), count + pointer -> kArray (counted array).
// A counted array that is read at the indexes of another array of the same record (a list
// response of ids and names walked by the ids' count) names that array's count as its driver
// (WIRE_PARALLEL_ARRAY); the decoder refuses a record whose parallel array is shorter than its
// driver, so a copy-out walking the driver's count never reads past an array.
// The catalogue test checks that the listed fields tile each struct, so a field left out of a
// list fails it. Everything here is constexpr data; nothing runs at start-up.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <type_traits>

namespace appmgr::wire {

enum class FieldKind : uint8_t { kU32, kI32, kU64, kI64, kText, kChars, kStruct, kArray };

struct RecordSchema;

struct FieldDesc {
  const char* name;
  FieldKind kind;
  uint32_t offset;               // of the value; for kArray, of the element pointer
  uint32_t size;                 // bytes in memory (kChars: the array length)
  uint32_t countOffset;          // kArray: offset of the unsigned 32-bit count
  const RecordSchema* element;   // kStruct: the nested record; kArray: the element record
  // kArray read in parallel with another array: the offset of that array's count, which this
  // array's count may not fall below. kNoDriver otherwise.
  uint32_t drivingCountOffset = kNoDriver;

  static constexpr uint32_t kNoDriver = 0xffffffffu;
};

struct RecordSchema {
  const char* name;
  uint32_t size;        // sizeof the struct
  uint32_t align;       // alignof the struct
  const FieldDesc* fields;
  uint32_t fieldCount;
  uint32_t minWireSize;  // the fewest bytes any encoding of this record takes
  uint32_t maxDepth;     // 1 + the deepest nesting of arrays and structs below it
};

template <class T>
struct Wire;  // specialised once per record by APPMGR_WIRE_RECORD

constexpr uint32_t Pad4(uint32_t n) { return (n + 3u) & ~3u; }

constexpr uint32_t FieldMinWire(const FieldDesc& f) {
  switch (f.kind) {
    case FieldKind::kU32:
    case FieldKind::kI32:
    case FieldKind::kText:   // the present flag alone
    case FieldKind::kArray:  // the count alone
      return 4;
    case FieldKind::kU64:
    case FieldKind::kI64:
      return 8;
    case FieldKind::kChars:
      return Pad4(f.size);
    case FieldKind::kStruct:
      return f.element->minWireSize;
  }
  return 0;
}

constexpr uint32_t MinWire(const FieldDesc* fields, size_t n) {
  uint32_t total = 0;
  for (size_t i = 0; i < n; ++i) total += FieldMinWire(fields[i]);
  return total;
}

constexpr uint32_t Depth(const FieldDesc* fields, size_t n) {
  uint32_t deepest = 0;
  for (size_t i = 0; i < n; ++i) {
    // Test the kind, not the pointer: some compilers cannot fold "&schema != nullptr".
    bool nested = fields[i].kind == FieldKind::kStruct || fields[i].kind == FieldKind::kArray;
    if (nested && fields[i].element->maxDepth > deepest) {
      deepest = fields[i].element->maxDepth;
    }
  }
  return deepest + 1;
}

// Element records of arrays of bare texts (const char**) and bare ids (uint64_t*).
inline constexpr FieldDesc kTextElementFields[] = {{"text", FieldKind::kText, 0, 8, 0, nullptr}};
inline constexpr RecordSchema kTextElement{"text", 8, 8, kTextElementFields, 1, 4, 1};
inline constexpr FieldDesc kU64ElementFields[] = {{"id", FieldKind::kU64, 0, 8, 0, nullptr}};
inline constexpr RecordSchema kU64Element{"id", 8, 8, kU64ElementFields, 1, 8, 1};

template <class>
inline constexpr bool kUnsupportedFieldType = false;

template <class M>
constexpr FieldDesc MakeField(const char* name, size_t offset) {
  const auto off = static_cast<uint32_t>(offset);
  if constexpr (std::is_same_v<M, uint32_t>) {
    return {name, FieldKind::kU32, off, 4, 0, nullptr};
  } else if constexpr (std::is_same_v<M, int32_t>) {
    return {name, FieldKind::kI32, off, 4, 0, nullptr};
  } else if constexpr (std::is_same_v<M, uint64_t>) {
    return {name, FieldKind::kU64, off, 8, 0, nullptr};
  } else if constexpr (std::is_same_v<M, int64_t>) {
    return {name, FieldKind::kI64, off, 8, 0, nullptr};
  } else if constexpr (std::is_same_v<M, const char*>) {
    return {name, FieldKind::kText, off, 8, 0, nullptr};
  } else if constexpr (std::is_array_v<M> && std::is_same_v<std::remove_extent_t<M>, char>) {
    return {name, FieldKind::kChars, off, static_cast<uint32_t>(std::extent_v<M>), 0, nullptr};
  } else if constexpr (std::is_class_v<M>) {
    return {name, FieldKind::kStruct, off, static_cast<uint32_t>(sizeof(M)), 0, &Wire<M>::schema};
  } else {
    static_assert(kUnsupportedFieldType<M>, "field type has no wire form");
  }
}

template <class P, class C>
constexpr FieldDesc MakeArray(const char* name, size_t pointerOffset, size_t countOffset,
                              size_t drivingCountOffset = FieldDesc::kNoDriver) {
  static_assert(std::is_same_v<C, uint32_t>, "array counts are unsigned 32-bit");
  static_assert(std::is_pointer_v<P>, "array elements are reached through a pointer");
  using E = std::remove_pointer_t<P>;
  const RecordSchema* element = nullptr;
  if constexpr (std::is_same_v<E, const char*>) {
    element = &kTextElement;
  } else if constexpr (std::is_same_v<E, uint64_t>) {
    element = &kU64Element;
  } else {
    static_assert(std::is_class_v<E>, "array element must be a record, a text or an id");
    element = &Wire<E>::schema;
  }
  return {name,    FieldKind::kArray, static_cast<uint32_t>(pointerOffset), 8,
          static_cast<uint32_t>(countOffset), element, static_cast<uint32_t>(drivingCountOffset)};
}

template <class C>
constexpr size_t DriverOffset(size_t offset) {
  static_assert(std::is_same_v<C, uint32_t>, "a driving count is an unsigned 32-bit count");
  return offset;
}

}  // namespace appmgr::wire

// A plain member: its kind, offset and size come from the struct.
#define WIRE_F(T, member) \
  ::appmgr::wire::MakeField<decltype(T::member)>(#member, offsetof(T, member))

// A counted array: the unsigned 32-bit count member and the element pointer member.
#define WIRE_ARRAY(T, count, items)                                           \
  ::appmgr::wire::MakeArray<decltype(T::items), decltype(T::count)>(#items,   \
                                                                    offsetof(T, items), \
                                                                    offsetof(T, count))

// A counted array read at the indexes of the array whose count member is `driver`: it must
// hold at least as many elements as that one (checked when decoding).
#define WIRE_PARALLEL_ARRAY(T, count, items, driver)                                        \
  ::appmgr::wire::MakeArray<decltype(T::items), decltype(T::count)>(                        \
      #items, offsetof(T, items), offsetof(T, count),                                       \
      ::appmgr::wire::DriverOffset<decltype(T::driver)>(offsetof(T, driver)))

// Defines the field list of record T. The fields follow in declaration order; a counted array
// is listed once, by WIRE_ARRAY, at its pointer (its count is part of it).
#define APPMGR_WIRE_RECORD(T, ...)                                                         \
  template <>                                                                              \
  struct appmgr::wire::Wire<T> {                                                           \
    static constexpr ::appmgr::wire::FieldDesc fields[] = {__VA_ARGS__};                   \
    static constexpr ::appmgr::wire::RecordSchema schema{                                  \
        #T,                                                                                \
        static_cast<uint32_t>(sizeof(T)),                                                  \
        static_cast<uint32_t>(alignof(T)),                                                 \
        fields,                                                                            \
        static_cast<uint32_t>(std::size(fields)),                                          \
        ::appmgr::wire::MinWire(fields, std::size(fields)),                                \
        ::appmgr::wire::Depth(fields, std::size(fields))};                                 \
  }
