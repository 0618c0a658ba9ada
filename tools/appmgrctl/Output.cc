#include "tools/appmgrctl/Output.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <string_view>
#include <utility>

namespace appmgrctl {

namespace {

// Control characters become escapes, so one value stays one cell on one line. Backslashes are
// left alone: Windows paths are common values and read better unescaped.
std::string Escape(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    unsigned char u = static_cast<unsigned char>(c);
    if (c == '\n') {
      out += "\\n";
    } else if (c == '\t') {
      out += "\\t";
    } else if (c == '\r') {
      out += "\\r";
    } else if (u < 0x20 || u == 0x7f) {
      char buf[8];
      std::snprintf(buf, sizeof buf, "\\x%02x", u);
      out += buf;
    } else {
      out += c;
    }
  }
  return out;
}

// Columns are aligned by code points, not bytes, so UTF-8 names line up (wide characters aside).
size_t DisplayWidth(std::string_view text) {
  return static_cast<size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xc0) != 0x80;
  }));
}

std::string CellText(const Json& value);

// An element of a list inside a cell: an object shows its values joined by ':' (a system-state
// pair {id 1, name SYSTEM} reads "1:SYSTEM").
std::string ElementText(const Json& value) {
  if (!value.is_object()) return CellText(value);
  std::string out;
  for (const auto& [key, member] : value.items()) {
    if (!out.empty()) out += ':';
    out += CellText(member);
  }
  return out;
}

std::string CellText(const Json& value) {
  switch (value.type()) {
    case Json::value_t::null:
      return "-";
    case Json::value_t::string:
      return Escape(value.get_ref<const std::string&>());
    case Json::value_t::array: {
      std::string out;
      for (const Json& element : value) {
        if (!out.empty()) out += ", ";
        out += ElementText(element);
      }
      return out;
    }
    case Json::value_t::object: {
      std::string out;
      for (const auto& [key, member] : value.items()) {
        if (!out.empty()) out += ", ";
        out += key + "=" + CellText(member);
      }
      return out;
    }
    default:
      return value.dump();  // numbers and booleans
  }
}

using Row = std::vector<std::string>;

// One row per member; a non-empty nested object adds its members as "outer.inner" rows.
void Flatten(const Json& object, const std::string& prefix, std::vector<Row>* rows) {
  for (const auto& [key, member] : object.items()) {
    if (member.is_object() && !member.empty()) {
      Flatten(member, prefix + key + ".", rows);
    } else {
      rows->push_back({prefix + key, CellText(member)});
    }
  }
}

std::string Upper(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

void WriteAligned(const std::vector<Row>& rows, std::ostream& out) {
  std::vector<size_t> widths;
  for (const Row& row : rows) {
    widths.resize(std::max(widths.size(), row.size()), 0);
    for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], DisplayWidth(row[i]));
  }
  for (const Row& row : rows) {
    std::string line;
    for (size_t i = 0; i < row.size(); ++i) {
      line += row[i];
      if (i + 1 < row.size()) line.append(widths[i] - DisplayWidth(row[i]) + 2, ' ');
    }
    // No trailing blanks, also when the last cells are empty.
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
  }
}

}  // namespace

Result Result::Record(Json object) {
  Result r;
  r.shape = Shape::kRecord;
  r.data = std::move(object);
  return r;
}

Result Result::List(std::vector<std::string> columns, Json rows) {
  Result r;
  r.shape = Shape::kList;
  r.columns = std::move(columns);
  r.data = rows.is_null() ? Json::array() : std::move(rows);
  return r;
}

void PrintTable(const Result& result, std::ostream& out) {
  std::vector<Row> rows;
  if (result.shape == Result::Shape::kRecord) {
    rows.push_back({"FIELD", "VALUE"});
    Flatten(result.data, "", &rows);
  } else {
    Row header;
    for (const std::string& column : result.columns) header.push_back(Upper(column));
    rows.push_back(std::move(header));
    for (const Json& item : result.data) {
      Row row;
      if (item.is_object()) {
        for (const std::string& column : result.columns) {
          row.push_back(item.contains(column) ? CellText(item[column]) : "-");
        }
      } else {
        row.push_back(CellText(item));
      }
      rows.push_back(std::move(row));
    }
  }
  WriteAligned(rows, out);
}

std::string JsonLine(const Json& value) {
  return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string ErrorLine(int status, const std::string& text) {
  std::string line = "error " + std::to_string(status);
  if (!text.empty()) line += ": " + text;
  return line;
}

}  // namespace appmgrctl
