// What a command of appmgrctl produces, and the two ways it is printed.
//
// A Result is plain data: a record (one object, shown as a FIELD/VALUE table) or a list (rows
// under named columns, shown as an aligned table). The JSON printer writes the data as it is;
// the table printer derives everything from it, so a handler builds one value and never prints.
//
//   Result r = Result::Record({{"id", 101}, {"name", "defaultBackupSet"}});
//   PrintTable(r, std::cout);             // FIELD  VALUE / id  101 / name  defaultBackupSet
//   std::cout << JsonLine(r.data) << "\n";  // {"id":101,"name":"defaultBackupSet"}
//
// Thread-safety: plain values and free functions; no shared state.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace appmgrctl {

// Members keep the order a handler inserts them in, which is the order the table shows.
using Json = nlohmann::ordered_json;

struct Result {
  enum class Shape { kRecord, kList };

  Shape shape = Shape::kRecord;
  // kList only: the column names. Each row is an object with exactly these members or, when
  // there is a single column, the bare value (so a list of names is a JSON array of strings).
  std::vector<std::string> columns;
  // kRecord: an object, whose nested objects the table shows as "outer.inner" fields.
  // kList: an array of rows.
  Json data = Json::object();

  static Result Record(Json object);
  static Result List(std::vector<std::string> columns, Json rows);
};

// Writes `result` as an aligned table with a header line. Values are escaped so that a control
// character in a server's text cannot break the layout.
void PrintTable(const Result& result, std::ostream& out);

// `value` as one line of JSON. Text that is not valid UTF-8 (servers store bytes) is written
// with U+FFFD in place of the bad bytes rather than failing.
std::string JsonLine(const Json& value);

// The line a failure is reported with: "error 1: backup set 42 does not exist", or "error 1"
// for operations that give no text.
std::string ErrorLine(int status, const std::string& text);

}  // namespace appmgrctl
