// The fields of a record as appmgrctl names them, for the commands that build a whole record
// (client create and modify, application ids): from --set FIELD=VALUE words and from a
// --from-file JSON record.
//
// A field's name is the one the command prints: a JSON record is the shape --json prints, whose
// nested objects name their members with a dot ("platform1": {"value": 2} is platform1.value),
// so what a command prints can be edited and given back. Values are checked against the field's
// kind when the command line is parsed, so a wrong field is a usage error before anything is
// sent. Fields are gathered into a flat JSON object (name -> typed value), later ones replacing
// earlier ones.
//
// Thread-safety: plain functions.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/appmgrctl/Output.h"

namespace appmgrctl {

enum class FieldKind {
  kUnsigned,    // unsigned 64-bit
  kSigned,      // signed 64-bit
  kUnsigned32,  // unsigned 32-bit
  kText,
  kOutputOnly,  // printed, accepted in a file and ignored there, refused by --set
};

struct RecordField {
  std::string_view name;
  FieldKind kind;
};

// Adds FIELD=VALUE words to `fields`. Numbers are decimal or 0x hexadecimal. Throws
// CLI::ValidationError naming the word for an unknown field or a value that does not fit.
void AddSetWords(std::span<const RecordField> known, const std::vector<std::string>& words,
                 Json& fields);

// Adds the members of the JSON object in the file at `path`. Throws CLI::ValidationError for a
// file that cannot be read, is not a JSON object, or has an unknown field or a value that does
// not fit.
void AddRecordFile(std::span<const RecordField> known, const std::string& path, Json& fields);

}  // namespace appmgrctl
