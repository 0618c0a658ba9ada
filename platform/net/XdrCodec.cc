#include "platform/net/XdrCodec.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>
#include <utility>

#include "platform/net/BigEndian.h"

namespace appmgr::wire {
namespace {

constexpr int kMaxPath = 32;

using appmgr::net::GetU32;
using appmgr::net::GetU64;
using appmgr::net::PutU32;
using appmgr::net::PutU64;

template <class T>
inline T Load(const char* rec, uint32_t offset) {
  T v;
  std::memcpy(&v, rec + offset, sizeof v);
  return v;
}
template <class T>
inline void Store(char* rec, uint32_t offset, T v) {
  std::memcpy(rec + offset, &v, sizeof v);
}

// The field path of the value being worked on, for error texts: "Rec.props[3].name".
class Path {
 public:
  void Push(const FieldDesc* f) {
    if (depth_ < kMaxPath) items_[depth_] = {f, -1};
    ++depth_;
  }
  void SetIndex(int64_t i) {
    if (depth_ > 0 && depth_ <= kMaxPath) items_[depth_ - 1].index = i;
  }
  void Pop() { --depth_; }
  std::string Render(const char* what, const RecordSchema& root) const {
    std::string s;
    if (what && *what) {
      s += what;
      s += ' ';
    }
    s += root.name;
    for (int i = 0; i < depth_ && i < kMaxPath; ++i) {
      s += '.';
      s += items_[i].field->name;
      if (items_[i].index >= 0) {
        // Appended piece by piece: GCC 12 at -O3 warns (-Wrestrict) about "[" + string.
        s += '[';
        s += std::to_string(items_[i].index);
        s += ']';
      }
    }
    return s;
  }

 private:
  struct Item {
    const FieldDesc* field;
    int64_t index;
  };
  Item items_[kMaxPath];
  int depth_ = 0;
};

class Writer {
 public:
  Writer(uint8_t* out, size_t cap, const RecordSchema& root, const char* what)
      : out_(out), cap_(cap), root_(root), what_(what) {}

  bool Record(const RecordSchema& s, const char* rec) {
    for (uint32_t i = 0; i < s.fieldCount; ++i) {
      const FieldDesc& f = s.fields[i];
      path_.Push(&f);
      if (!Field(f, rec)) return false;
      path_.Pop();
    }
    return true;
  }

  size_t length() const { return pos_; }
  CLmError& error() { return error_; }

 private:
  bool Field(const FieldDesc& f, const char* rec) {
    switch (f.kind) {
      case FieldKind::kU32:
      case FieldKind::kI32:
        U32(Load<uint32_t>(rec, f.offset));
        return true;
      case FieldKind::kU64:
      case FieldKind::kI64:
        U64(Load<uint64_t>(rec, f.offset));
        return true;
      case FieldKind::kText:
        return Text(Load<const char*>(rec, f.offset));
      case FieldKind::kChars:
        Bytes(rec + f.offset, f.size);
        return true;
      case FieldKind::kStruct:
        return Record(*f.element, rec + f.offset);
      case FieldKind::kArray: {
        uint32_t count = Load<uint32_t>(rec, f.countOffset);
        const char* items = Load<const char*>(rec, f.offset);
        if (count > 0 && items == nullptr) {
          error_ = CLmError::Format(kKpErrBadArgument, "%s: count %u with a null element pointer",
                                    path_.Render(what_, root_).c_str(), count);
          return false;
        }
        U32(count);
        for (uint32_t i = 0; i < count; ++i) {
          path_.SetIndex(i);
          if (!Record(*f.element, items + size_t(i) * f.element->size)) return false;
        }
        return true;
      }
    }
    error_ = CLmError(kKpErrInternal, "unknown field kind");
    return false;
  }

  void U32(uint32_t v) {
    if (pos_ + 4 <= cap_) PutU32(out_ + pos_, v);
    pos_ += 4;
  }
  void U64(uint64_t v) {
    if (pos_ + 8 <= cap_) PutU64(out_ + pos_, v);
    pos_ += 8;
  }
  void Bytes(const void* p, size_t n) {
    size_t padded = (n + 3) & ~size_t(3);
    if (pos_ + padded <= cap_) {
      std::memcpy(out_ + pos_, p, n);
      std::memset(out_ + pos_ + n, 0, padded - n);
    }
    pos_ += padded;
  }
  bool Text(const char* s) {
    if (s == nullptr) {
      U32(0);
      return true;
    }
    size_t n = std::strlen(s);
    if (n > 0xffffffffu) {
      error_ = CLmError::Format(kKpErrBadArgument, "%s: text of %zu bytes is too long",
                                path_.Render(what_, root_).c_str(), n);
      return false;
    }
    U32(1);
    U32(static_cast<uint32_t>(n));
    Bytes(s, n);
    return true;
  }

  uint8_t* out_;
  size_t cap_;
  size_t pos_ = 0;
  const RecordSchema& root_;
  const char* what_;
  Path path_;
  CLmError error_;
};

class Reader {
 public:
  Reader(const uint8_t* p, size_t n, Arena& arena, const RecordSchema& root, const char* what)
      : p_(p), end_(p + n), arena_(arena), root_(root), what_(what) {}

  bool Record(const RecordSchema& s, char* rec) {
    for (uint32_t i = 0; i < s.fieldCount; ++i) {
      const FieldDesc& f = s.fields[i];
      path_.Push(&f);
      if (!Field(f, rec)) return false;
      path_.Pop();
    }
    return Parallel(s, rec);
  }

  size_t left() const { return static_cast<size_t>(end_ - p_); }
  CLmError& error() { return error_; }

 private:
  bool Fail(const char* format, ...) __attribute__((format(printf, 2, 3))) {
    char detail[256];
    va_list ap;
    va_start(ap, format);
    vsnprintf(detail, sizeof detail, format, ap);
    va_end(ap);
    error_ = CLmError(kKpErrProtocol, path_.Render(what_, root_) + ": " + detail);
    return false;
  }

  bool Short(size_t need) {
    return Fail("needs %zu bytes, %zu left", need, left());
  }

  bool Field(const FieldDesc& f, char* rec) {
    switch (f.kind) {
      case FieldKind::kU32:
      case FieldKind::kI32:
        if (left() < 4) return Short(4);
        Store<uint32_t>(rec, f.offset, GetU32(p_));
        p_ += 4;
        return true;
      case FieldKind::kU64:
      case FieldKind::kI64:
        if (left() < 8) return Short(8);
        Store<uint64_t>(rec, f.offset, GetU64(p_));
        p_ += 8;
        return true;
      case FieldKind::kText:
        return Text(rec, f.offset);
      case FieldKind::kChars: {
        size_t padded = Pad4(f.size);
        if (left() < padded) return Short(padded);
        std::memcpy(rec + f.offset, p_, f.size);
        if (!ZeroPadding(p_ + f.size, padded - f.size)) return Fail("padding bytes are not zero");
        p_ += padded;
        return true;
      }
      case FieldKind::kStruct:
        return Record(*f.element, rec + f.offset);
      case FieldKind::kArray:
        return Array(f, rec);
    }
    error_ = CLmError(kKpErrInternal, "unknown field kind");
    return false;
  }

  // Once the whole record is in (a driver may follow the arrays it drives), every parallel
  // array must hold at least as many elements as its driver.
  bool Parallel(const RecordSchema& s, const char* rec) {
    for (uint32_t i = 0; i < s.fieldCount; ++i) {
      const FieldDesc& f = s.fields[i];
      if (f.kind != FieldKind::kArray || f.drivingCountOffset == FieldDesc::kNoDriver) continue;
      uint32_t count = Load<uint32_t>(rec, f.countOffset);
      uint32_t driving = Load<uint32_t>(rec, f.drivingCountOffset);
      if (count >= driving) continue;
      const char* driver = "?";
      for (uint32_t j = 0; j < s.fieldCount; ++j) {
        if (s.fields[j].kind == FieldKind::kArray &&
            s.fields[j].countOffset == f.drivingCountOffset) {
          driver = s.fields[j].name;
        }
      }
      path_.Push(&f);
      return Fail("holds %u elements, fewer than the %u of %s, which it is read beside", count,
                  driving, driver);
    }
    return true;
  }

  static bool ZeroPadding(const uint8_t* p, size_t n) {
    for (size_t i = 0; i < n; ++i) {
      if (p[i] != 0) return false;
    }
    return true;
  }

  bool Text(char* rec, uint32_t offset) {
    if (left() < 4) return Short(4);
    uint32_t present = GetU32(p_);
    p_ += 4;
    if (present == 0) {
      Store<const char*>(rec, offset, nullptr);
      return true;
    }
    if (present != 1) return Fail("present flag is %u, not 0 or 1", present);
    if (left() < 4) return Short(4);
    uint32_t n = GetU32(p_);
    p_ += 4;
    size_t padded = (size_t(n) + 3) & ~size_t(3);
    if (padded > left()) return Fail("text length %u exceeds the %zu bytes left", n, left());
    if (std::memchr(p_, 0, n) != nullptr) return Fail("text holds a NUL byte");
    if (!ZeroPadding(p_ + n, padded - n)) return Fail("padding bytes are not zero");
    char* s = static_cast<char*>(arena_.Allocate(size_t(n) + 1, 1));
    std::memcpy(s, p_, n);
    s[n] = '\0';
    p_ += padded;
    Store<const char*>(rec, offset, s);
    return true;
  }

  bool Array(const FieldDesc& f, char* rec) {
    if (left() < 4) return Short(4);
    uint32_t count = GetU32(p_);
    p_ += 4;
    const RecordSchema& e = *f.element;
    if (count == 0) {
      Store<uint32_t>(rec, f.countOffset, 0);
      Store<char*>(rec, f.offset, nullptr);
      return true;
    }
    // Refuse a count the remaining bytes cannot hold before allocating anything for it.
    if (size_t(count) > left() / e.minWireSize) {
      return Fail("count %u needs at least %zu bytes, %zu left", count,
                  size_t(count) * e.minWireSize, left());
    }
    size_t bytes = size_t(count) * e.size;
    char* items = static_cast<char*>(arena_.Allocate(bytes, e.align));
    std::memset(items, 0, bytes);
    Store<uint32_t>(rec, f.countOffset, count);
    Store<char*>(rec, f.offset, items);
    for (uint32_t i = 0; i < count; ++i) {
      path_.SetIndex(i);
      if (!Record(e, items + size_t(i) * e.size)) return false;
    }
    return true;
  }

  const uint8_t* p_;
  const uint8_t* end_;
  Arena& arena_;
  const RecordSchema& root_;
  const char* what_;
  Path path_;
  CLmError error_;
};

void Quote(std::string& out, const char* s, size_t n) {
  out += '"';
  for (size_t i = 0; i < n; ++i) {
    unsigned char c = static_cast<unsigned char>(s[i]);
    if (c == '"' || c == '\\') {
      out += '\\';
      out += static_cast<char>(c);
    } else if (c < 0x20 || c >= 0x7f) {
      char hex[8];
      snprintf(hex, sizeof hex, "\\x%02x", c);
      out += hex;
    } else {
      out += static_cast<char>(c);
    }
  }
  out += '"';
}

void Render(std::string& out, const RecordSchema& s, const char* rec) {
  constexpr uint32_t kMaxShown = 50;
  out += '{';
  for (uint32_t i = 0; i < s.fieldCount; ++i) {
    const FieldDesc& f = s.fields[i];
    if (i) out += ' ';
    out += f.name;
    out += '=';
    switch (f.kind) {
      case FieldKind::kU32:
        out += std::to_string(Load<uint32_t>(rec, f.offset));
        break;
      case FieldKind::kI32:
        out += std::to_string(Load<int32_t>(rec, f.offset));
        break;
      case FieldKind::kU64:
        out += std::to_string(Load<uint64_t>(rec, f.offset));
        break;
      case FieldKind::kI64:
        out += std::to_string(Load<int64_t>(rec, f.offset));
        break;
      case FieldKind::kText: {
        const char* t = Load<const char*>(rec, f.offset);
        if (t) {
          Quote(out, t, std::strlen(t));
        } else {
          out += "null";
        }
        break;
      }
      case FieldKind::kChars:
        Quote(out, rec + f.offset, strnlen(rec + f.offset, f.size));
        break;
      case FieldKind::kStruct:
        Render(out, *f.element, rec + f.offset);
        break;
      case FieldKind::kArray: {
        uint32_t count = Load<uint32_t>(rec, f.countOffset);
        const char* items = Load<const char*>(rec, f.offset);
        out += '[';
        for (uint32_t k = 0; items && k < count && k < kMaxShown; ++k) {
          if (k) out += ", ";
          const RecordSchema& e = *f.element;
          if (e.fieldCount == 1 && e.fields[0].kind != FieldKind::kStruct) {
            std::string one;
            Render(one, e, items + size_t(k) * e.size);  // "{text=...}" -> "..."
            size_t eq = one.find('=');
            out += one.substr(eq + 1, one.size() - eq - 2);
          } else {
            Render(out, e, items + size_t(k) * e.size);
          }
        }
        if (count > kMaxShown) out += ", ...(" + std::to_string(count - kMaxShown) + " more)";
        if (count > 0 && !items) out += "null";
        out += ']';
        break;
      }
    }
  }
  out += '}';
}

}  // namespace

CLmError Encode(const RecordSchema& schema, const void* record, uint8_t* out, size_t capacity,
                size_t* length, const char* what) {
  Writer w(out, out ? capacity : 0, schema, what);
  bool ok = w.Record(schema, static_cast<const char*>(record));
  *length = w.length();
  return ok ? CLmError() : std::move(w.error());
}

CLmError EncodeAppend(const RecordSchema& schema, const void* record, std::vector<uint8_t>& out,
                      const char* what) {
  size_t start = out.size();
  size_t room = out.capacity() - start;
  out.resize(out.capacity());
  size_t needed = 0;
  CLmError e = Encode(schema, record, out.data() + start, room, &needed, what);
  if (!e && needed > room) {
    out.resize(start + needed);
    e = Encode(schema, record, out.data() + start, needed, &needed, what);
  }
  out.resize(e ? start : start + needed);
  return e;
}

CLmError Decode(const RecordSchema& schema, const uint8_t* data, size_t length, void* record,
                Arena& arena, const char* what) {
  Reader r(data, length, arena, schema, what);
  try {
    if (!r.Record(schema, static_cast<char*>(record))) return std::move(r.error());
  } catch (const std::bad_alloc&) {
    return CLmError(kKpErrLimit, std::string(what ? what : "") + " " + schema.name +
                                     ": out of memory while decoding");
  }
  if (r.left() != 0) {
    return CLmError::Format(kKpErrProtocol, "%s%s%s: %zu bytes follow the record", what ? what : "",
                            what ? " " : "", schema.name, r.left());
  }
  return {};
}

std::string DebugString(const RecordSchema& schema, const void* record) {
  std::string out;
  Render(out, schema, static_cast<const char*>(record));
  return out;
}

}  // namespace appmgr::wire
