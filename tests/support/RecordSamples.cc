#include "tests/support/RecordSamples.h"

#include <cstring>

using appmgr::wire::Arena;
using appmgr::wire::FieldDesc;
using appmgr::wire::FieldKind;
using appmgr::wire::RecordSchema;

namespace {

template <class T>
void Put(char* rec, uint32_t off, T v) {
  std::memcpy(rec + off, &v, sizeof v);
}
template <class T>
T Get(const char* rec, uint32_t off) {
  T v;
  std::memcpy(&v, rec + off, sizeof v);
  return v;
}

const char* SampleText(std::mt19937_64& rng, Arena& storage) {
  static const char kAlphabet[] = "abcdefghijklmnopqrstuvwxyz0123456789 /\\:._-\"'<>&\xc3\xa9";
  size_t n = rng() % 40;
  char* s = static_cast<char*>(storage.Allocate(n + 1, 1));
  for (size_t i = 0; i < n; ++i) s[i] = kAlphabet[rng() % (sizeof kAlphabet - 1)];
  s[n] = '\0';
  return s;
}

// Arrays read beside each other (a driver and the arrays it drives) get one count, so that a
// sample always decodes.
bool InParallelGroup(const RecordSchema& schema, const FieldDesc& f) {
  if (f.kind != FieldKind::kArray) return false;
  if (f.drivingCountOffset != FieldDesc::kNoDriver) return true;
  for (uint32_t i = 0; i < schema.fieldCount; ++i) {
    if (schema.fields[i].kind == FieldKind::kArray &&
        schema.fields[i].drivingCountOffset == f.countOffset) {
      return true;
    }
  }
  return false;
}

void Fill(const RecordSchema& schema, char* rec, std::mt19937_64& rng, Arena& storage,
          const SampleOptions& o) {
  const uint32_t groupCount = static_cast<uint32_t>(rng() % (o.maxArray + 1));
  for (uint32_t i = 0; i < schema.fieldCount; ++i) {
    const FieldDesc& f = schema.fields[i];
    switch (f.kind) {
      case FieldKind::kU32:
      case FieldKind::kI32:
        Put<uint32_t>(rec, f.offset, static_cast<uint32_t>(rng()));
        break;
      case FieldKind::kU64:
      case FieldKind::kI64:
        Put<uint64_t>(rec, f.offset, rng());
        break;
      case FieldKind::kText:
        Put<const char*>(rec, f.offset,
                         (o.nullTexts && rng() % 4 == 0) ? nullptr : SampleText(rng, storage));
        break;
      case FieldKind::kChars: {
        // Any bytes at all: fixed arrays travel whole, including what follows a NUL.
        for (uint32_t k = 0; k < f.size; ++k) rec[f.offset + k] = static_cast<char>(rng());
        break;
      }
      case FieldKind::kStruct:
        Fill(*f.element, rec + f.offset, rng, storage, o);
        break;
      case FieldKind::kArray: {
        uint32_t count = InParallelGroup(schema, f) ? groupCount
                                                    : static_cast<uint32_t>(rng() % (o.maxArray + 1));
        char* items = nullptr;
        if (count) {
          items = static_cast<char*>(storage.Allocate(size_t(count) * f.element->size, 8));
          std::memset(items, 0, size_t(count) * f.element->size);
          for (uint32_t k = 0; k < count; ++k) {
            Fill(*f.element, items + size_t(k) * f.element->size, rng, storage, o);
          }
        }
        Put<uint32_t>(rec, f.countOffset, count);
        Put<char*>(rec, f.offset, items);
        break;
      }
    }
  }
}

bool Same(const RecordSchema& schema, const char* a, const char* b, std::string& path) {
  for (uint32_t i = 0; i < schema.fieldCount; ++i) {
    const FieldDesc& f = schema.fields[i];
    std::string here = path + "." + f.name;
    bool ok = true;
    switch (f.kind) {
      case FieldKind::kU32:
      case FieldKind::kI32:
        ok = Get<uint32_t>(a, f.offset) == Get<uint32_t>(b, f.offset);
        break;
      case FieldKind::kU64:
      case FieldKind::kI64:
        ok = Get<uint64_t>(a, f.offset) == Get<uint64_t>(b, f.offset);
        break;
      case FieldKind::kText: {
        const char* x = Get<const char*>(a, f.offset);
        const char* y = Get<const char*>(b, f.offset);
        ok = (x == nullptr) == (y == nullptr) && (x == nullptr || std::strcmp(x, y) == 0);
        break;
      }
      case FieldKind::kChars:
        ok = std::memcmp(a + f.offset, b + f.offset, f.size) == 0;
        break;
      case FieldKind::kStruct:
        if (!Same(*f.element, a + f.offset, b + f.offset, here)) {
          path = here;
          return false;
        }
        break;
      case FieldKind::kArray: {
        uint32_t n = Get<uint32_t>(a, f.countOffset);
        if (n != Get<uint32_t>(b, f.countOffset)) {
          ok = false;
          break;
        }
        const char* xa = Get<const char*>(a, f.offset);
        const char* xb = Get<const char*>(b, f.offset);
        for (uint32_t k = 0; k < n; ++k) {
          std::string item = here + "[" + std::to_string(k) + "]";
          if (!Same(*f.element, xa + size_t(k) * f.element->size,
                    xb + size_t(k) * f.element->size, item)) {
            path = item;
            return false;
          }
        }
        break;
      }
    }
    if (!ok) {
      path = here;
      return false;
    }
  }
  return true;
}

}  // namespace

void FillRecord(const RecordSchema& schema, void* record, std::mt19937_64& rng, Arena& storage,
                const SampleOptions& options) {
  Fill(schema, static_cast<char*>(record), rng, storage, options);
}

bool SameRecord(const RecordSchema& schema, const void* a, const void* b, std::string* where) {
  std::string path = schema.name;
  bool same = Same(schema, static_cast<const char*>(a), static_cast<const char*>(b), path);
  if (!same && where) *where = path;
  return same;
}
