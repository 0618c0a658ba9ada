#include "tools/protocol-doc/ProtocolDoc.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <set>
#include <sstream>
#include <vector>

#include "platform/net/ControlRecords.h"
#include "protocol/Catalogue.h"

namespace appmgr::doc {
namespace {

using wire::Catalogue;
using wire::Direction;
using wire::FieldDesc;
using wire::FieldKind;
using wire::MessageRow;
using wire::RecordSchema;

std::string Hex(uint32_t id) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "0x%08x", id);
  return buffer;
}

std::string Code(const std::string& text) {
  return "`" + text + "`";
}

// A record's name as the document uses it: without a C++ namespace.
std::string RecordName(const RecordSchema& r) {
  std::string name = r.name;
  size_t colon = name.rfind("::");
  return colon == std::string::npos ? name : name.substr(colon + 2);
}

// A request row's printable name without its "_REQ".
std::string MessageName(const MessageRow& row) {
  std::string name = row.name;
  if (name.size() > 4 && name.compare(name.size() - 4, 4, "_REQ") == 0)
    name.resize(name.size() - 4);
  return name;
}

// The element records of bare-text and bare-id arrays are described in the wire column itself.
bool IsBareElement(const RecordSchema* r) {
  return r == &wire::kTextElement || r == &wire::kU64Element;
}

std::string ElementName(const RecordSchema* r) {
  if (r == &wire::kTextElement) return "text";
  if (r == &wire::kU64Element) return "u64";
  return Code(RecordName(*r));
}

// What a field is on the wire, in the terms of the encoding table of docs/protocol.md.
std::string WireText(const RecordSchema& record, const FieldDesc& f) {
  switch (f.kind) {
    case FieldKind::kU32:
      return "u32";
    case FieldKind::kI32:
      return "i32";
    case FieldKind::kU64:
      return "u64";
    case FieldKind::kI64:
      return "i64";
    case FieldKind::kText:
      return "text";
    case FieldKind::kChars:
      return "char[" + std::to_string(f.size) + "]";
    case FieldKind::kStruct:
      return Code(RecordName(*f.element)) + " in place";
    case FieldKind::kArray: {
      std::string text = "array of " + ElementName(f.element) + " (count: u32 at offset " +
                         std::to_string(f.countOffset) + ")";
      if (f.drivingCountOffset != FieldDesc::kNoDriver) {
        for (uint32_t i = 0; i < record.fieldCount; ++i) {
          const FieldDesc& driver = record.fields[i];
          if (driver.kind == FieldKind::kArray && driver.countOffset == f.drivingCountOffset) {
            text += "; read beside " + Code(driver.name) + ", at least as many elements";
          }
        }
      }
      return text;
    }
  }
  return "?";
}

void RenderRecord(const RecordSchema& r, std::ostringstream& out) {
  out << "#### " << Code(RecordName(r)) << "\n\n"
      << r.size << " bytes in memory, at least " << r.minWireSize << " bytes on the wire.\n\n"
      << "| # | field | offset | size | wire |\n"
      << "|---:|---|---:|---:|---|\n";
  for (uint32_t i = 0; i < r.fieldCount; ++i) {
    const FieldDesc& f = r.fields[i];
    out << "| " << i + 1 << " | " << Code(f.name) << " | " << f.offset << " | " << f.size << " | "
        << WireText(r, f) << " |\n";
  }
  out << "\n";
}

// Adds `r` and every record it nests or holds arrays of, each once.
void Collect(const RecordSchema* r, std::set<const RecordSchema*>* seen,
             std::vector<const RecordSchema*>* out) {
  if (IsBareElement(r) || !seen->insert(r).second) return;
  out->push_back(r);
  for (uint32_t i = 0; i < r->fieldCount; ++i) {
    const FieldDesc& f = r->fields[i];
    if (f.kind == FieldKind::kStruct || f.kind == FieldKind::kArray) Collect(f.element, seen, out);
  }
}

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

}  // namespace

std::string RenderGenerated() {
  std::ostringstream out;
  std::vector<const MessageRow*> requests;
  for (const MessageRow* row : Catalogue::Rows()) {
    if (row->direction == Direction::kRequest) requests.push_back(row);
  }
  // By id, then length: the same order whatever order the message files are listed in.
  std::sort(requests.begin(), requests.end(), [](const MessageRow* a, const MessageRow* b) {
    return std::make_pair(a->id, a->record->size) < std::make_pair(b->id, b->record->size);
  });

  out << "### Control records\n\n"
      << "The session's own records, carried by the hello, hello-accept, hello-refuse, error, "
         "file-begin, file-end and file-result frames.\n\n";
  for (const RecordSchema* r :
       {&wire::Wire<net::HelloRecord>::schema, &wire::Wire<net::HelloAcceptRecord>::schema,
        &wire::Wire<net::ReasonRecord>::schema, &wire::Wire<net::FileBeginRecord>::schema,
        &wire::Wire<net::FileEndRecord>::schema}) {
    RenderRecord(*r, out);
  }

  out << "### Messages\n\n"
      << requests.size() << " requests, by request id. A length is the record's size in memory, "
      << "the `recordLength` of its frame, which with the id and the direction names the "
         "record.\n\n"
      << "| request | id | record | length | response id | response record | length |\n"
      << "|---|---|---|---:|---|---|---:|\n";
  for (const MessageRow* row : requests) {
    out << "| " << Code(MessageName(*row)) << " | " << Code(Hex(row->id)) << " | "
        << Code(RecordName(*row->record)) << " | " << row->record->size << " | "
        << Code(Hex(row->responseId)) << " | " << Code(RecordName(*row->responseRecord)) << " | "
        << row->responseRecord->size << " |\n";
  }
  out << "\n";

  std::set<const RecordSchema*> seen;
  std::vector<const RecordSchema*> records;
  for (const RecordSchema* r : Catalogue::Records()) Collect(r, &seen, &records);
  std::sort(records.begin(), records.end(), [](const RecordSchema* a, const RecordSchema* b) {
    return std::make_pair(Lower(RecordName(*a)), RecordName(*a)) <
           std::make_pair(Lower(RecordName(*b)), RecordName(*b));
  });
  out << "### Records\n\n"
      << records.size() << " records, by name. Fields are listed in wire order; offsets and sizes "
      << "are those of the record in memory (a text or array pointer takes 8 bytes).\n\n";
  for (const RecordSchema* r : records) RenderRecord(*r, out);
  std::string text = out.str();
  while (text.size() > 1 && text[text.size() - 1] == '\n' && text[text.size() - 2] == '\n') {
    text.pop_back();
  }
  return text;
}

bool ReplaceGenerated(const std::string& document, const std::string& generated, std::string* out,
                      std::string* error) {
  const size_t begin = document.find(kBeginMarker);
  const size_t end = document.find(kEndMarker);
  if (begin == std::string::npos || end == std::string::npos || end < begin) {
    *error = std::string("the markers are missing or out of order: ") + kBeginMarker + " ... " +
             kEndMarker;
    return false;
  }
  if (document.find(kBeginMarker, begin + 1) != std::string::npos ||
      document.find(kEndMarker, end + 1) != std::string::npos) {
    *error = "the markers appear more than once";
    return false;
  }
  const size_t contentStart = begin + std::string(kBeginMarker).size();
  *out = document.substr(0, contentStart) + "\n\n" + generated + "\n" + document.substr(end);
  return true;
}

std::string ExtractGenerated(const std::string& document) {
  const size_t begin = document.find(kBeginMarker);
  const size_t end = document.find(kEndMarker);
  if (begin == std::string::npos || end == std::string::npos || end < begin) return {};
  const size_t contentStart = begin + std::string(kBeginMarker).size();
  std::string text = document.substr(contentStart, end - contentStart);
  // The blank line after the marker and the one before the end marker are layout.
  if (text.rfind("\n\n", 0) == 0) text.erase(0, 2);
  if (text.size() >= 1 && text.back() == '\n') text.pop_back();
  return text;
}

}  // namespace appmgr::doc
