#include "tools/appmgrctl/RecordFields.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <limits>
#include <sstream>

#include <CLI/CLI.hpp>

#include "tools/appmgrctl/CommandSupport.h"

namespace appmgrctl {
namespace {

const RecordField* Find(std::span<const RecordField> known, std::string_view name) {
  for (const RecordField& s : known) {
    if (s.name == name) return &s;
  }
  return nullptr;
}

std::string Names(std::span<const RecordField> known) {
  std::string list;
  for (const RecordField& s : known) {
    if (s.kind == FieldKind::kOutputOnly) continue;
    list += (list.empty() ? "" : ", ") + std::string(s.name);
  }
  return list;
}

[[noreturn]] void Refuse(const std::string& where, const std::string& what) {
  throw CLI::ValidationError(where + ": " + what);
}

const char* KindText(FieldKind kind) {
  switch (kind) {
    case FieldKind::kUnsigned:
      return "an unsigned 64-bit integer";
    case FieldKind::kSigned:
      return "a signed 64-bit integer";
    case FieldKind::kUnsigned32:
      return "an unsigned 32-bit integer";
    case FieldKind::kText:
      return "a string";
    case FieldKind::kOutputOnly:
      break;
  }
  return "a value";
}

// A JSON value of the file, checked against its field's kind.
bool Fits(FieldKind kind, const Json& v) {
  switch (kind) {
    case FieldKind::kUnsigned:
      return v.is_number_unsigned();
    case FieldKind::kSigned:
      return v.is_number_integer() &&
             (!v.is_number_unsigned() ||
              v.get<uint64_t>() <= static_cast<uint64_t>(std::numeric_limits<int64_t>::max()));
    case FieldKind::kUnsigned32:
      return v.is_number_unsigned() && v.get<uint64_t>() <= std::numeric_limits<uint32_t>::max();
    case FieldKind::kText:
      return v.is_string();
    case FieldKind::kOutputOnly:
      return true;
  }
  return false;
}

void AddMembers(std::span<const RecordField> known, const Json& object, const std::string& prefix,
                const std::string& path, Json& fields) {
  for (const auto& [key, value] : object.items()) {
    const std::string name = prefix + key;
    if (value.is_object()) {
      AddMembers(known, value, name + ".", path, fields);
      continue;
    }
    const RecordField* field = Find(known, name);
    if (field == nullptr) {
      Refuse(path, "unknown field '" + name + "'; the fields are " + Names(known));
    }
    if (!Fits(field->kind, value)) {
      Refuse(path, "'" + name + "' must be " + KindText(field->kind));
    }
    if (field->kind != FieldKind::kOutputOnly) fields[name] = value;
  }
}

}  // namespace

void AddSetWords(std::span<const RecordField> known, const std::vector<std::string>& words,
                 Json& fields) {
  for (const std::string& word : words) {
    size_t eq = word.find('=');
    if (eq == std::string::npos || eq == 0) Refuse("--set " + word, "not FIELD=VALUE");
    const std::string name = word.substr(0, eq);
    const std::string text = word.substr(eq + 1);
    const RecordField* field = Find(known, name);
    if (field == nullptr || field->kind == FieldKind::kOutputOnly) {
      Refuse("--set " + word, "unknown field '" + name + "'; the fields are " + Names(known));
    }
    bool ok = true;
    switch (field->kind) {
      case FieldKind::kUnsigned: {
        unsigned long v = 0;
        ok = ParseNumber(text, &v);
        if (ok) fields[name] = v;
        break;
      }
      case FieldKind::kSigned: {
        long v = 0;
        ok = ParseNumber(text, &v);
        if (ok) fields[name] = v;
        break;
      }
      case FieldKind::kUnsigned32: {
        uint32_t v = 0;
        ok = ParseNumber(text, &v);
        if (ok) fields[name] = v;
        break;
      }
      case FieldKind::kText:
      case FieldKind::kOutputOnly:
        fields[name] = text;
        break;
    }
    if (!ok) Refuse("--set " + word, "'" + name + "' must be " + KindText(field->kind));
  }
}

void AddRecordFile(std::span<const RecordField> known, const std::string& path, Json& fields) {
  std::ifstream in(path, std::ios::binary);
  if (!in) Refuse(path, std::string("cannot be read: ") + std::strerror(errno));
  std::stringstream text;
  text << in.rdbuf();
  Json record = Json::parse(text.str(), nullptr, /*allow_exceptions=*/false);
  if (record.is_discarded()) Refuse(path, "not valid JSON");
  if (!record.is_object()) Refuse(path, "not a JSON object (a record, as --json prints one)");
  AddMembers(known, record, "", path, fields);
}

}  // namespace appmgrctl
