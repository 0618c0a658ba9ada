#include "protocol/Catalogue.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <mutex>
#include <set>
#include <tuple>

#include "protocol/Schemas.h"

namespace appmgr::wire {
namespace {

constexpr MessageRow kMessageRows[] = {
#define APPMGR_MESSAGE(constant, NAME, reqId, Req, respId, Resp)                          \
  {reqId, Direction::kRequest, &Wire<Req>::schema, NAME "_REQ", respId, &Wire<Resp>::schema}, \
      {respId, Direction::kResponse, &Wire<Resp>::schema, NAME "_RESP", 0, nullptr},
#include "protocol/messages/All.def"
#undef APPMGR_MESSAGE
};

constexpr const RecordSchema* kListedRecords[] = {
#define APPMGR_RECORD(T) &Wire<T>::schema,
#include "protocol/messages/Records.def"
#undef APPMGR_RECORD
};

bool RowLess(const MessageRow* a, const MessageRow* b) {
  return std::tie(a->id, a->direction, a->record->size) <
         std::tie(b->id, b->direction, b->record->size);
}

struct Index {
  std::vector<const MessageRow*> rows;       // sorted, one per (id, direction, size)
  std::vector<const RecordSchema*> records;  // each once
  std::map<uint32_t, std::string> names;     // printable name per id
  std::vector<std::string> problems;

  Index() {
    for (const MessageRow& row : kMessageRows) {
      auto it = std::lower_bound(rows.begin(), rows.end(), &row, RowLess);
      if (it != rows.end() && !RowLess(&row, *it)) {
        // Several requests may share one response; it must be the same record.
        if ((*it)->record != row.record) {
          problems.push_back("message " + Hex(row.id) + " of length " +
                             std::to_string(row.record->size) + " is listed as both " +
                             (*it)->record->name + " and " + row.record->name);
        }
        continue;
      }
      rows.insert(it, &row);
    }
    std::set<const RecordSchema*> seen;
    auto addRecord = [&](const RecordSchema* r) {
      if (seen.insert(r).second) records.push_back(r);
    };
    for (const RecordSchema* r : kListedRecords) addRecord(r);
    for (const MessageRow* row : rows) addRecord(row->record);
    // A printable name per id: several records under one id give "A|B"; a response shared by
    // several requests is one record and keeps the name of its first row.
    std::map<uint32_t, std::set<const RecordSchema*>> namedRecords;
    for (const MessageRow* row : rows) {
      if (!namedRecords[row->id].insert(row->record).second) continue;
      std::string& n = names[row->id];
      n += n.empty() ? row->name : std::string("|") + row->name;
    }
    for (const MessageRow* row : rows) {
      if (row->direction == Direction::kRequest) {
        auto* answer = FindIn(row->responseId, Direction::kResponse, row->responseRecord->size);
        if (answer == nullptr || answer->record != row->responseRecord) {
          problems.push_back(std::string(row->name) + " is answered by " + Hex(row->responseId) +
                             ", which is not listed with record " + row->responseRecord->name);
        }
      }
    }
  }

  const MessageRow* FindIn(uint32_t id, Direction d, uint32_t size) const {
    MessageRow key{id, d, nullptr, nullptr, 0, nullptr};
    RecordSchema probe{"", size, 1, nullptr, 0, 0, 0};
    key.record = &probe;
    auto it = std::lower_bound(rows.begin(), rows.end(), &key, RowLess);
    if (it == rows.end() || RowLess(&key, *it)) return nullptr;
    return *it;
  }

  static std::string Hex(uint32_t id) {
    char buf[16];
    snprintf(buf, sizeof buf, "0x%08x", id);
    return buf;
  }
};

const Index& TheIndex() {
  static const Index* index = new Index();  // never destroyed: logging may use it at exit
  return *index;
}

}  // namespace

std::span<const MessageRow* const> Catalogue::Rows() { return TheIndex().rows; }

std::span<const RecordSchema* const> Catalogue::Records() { return TheIndex().records; }

const MessageRow* Catalogue::Find(uint32_t id, Direction direction, uint32_t recordLength) {
  return TheIndex().FindIn(id, direction, recordLength);
}

const MessageRow* Catalogue::FindAnyDirection(uint32_t id, uint32_t recordLength) {
  const MessageRow* req = Find(id, Direction::kRequest, recordLength);
  const MessageRow* resp = Find(id, Direction::kResponse, recordLength);
  if (req && resp && req->record != resp->record) return nullptr;
  return req ? req : resp;
}

std::vector<const MessageRow*> Catalogue::RowsOf(uint32_t id) {
  const auto& rows = TheIndex().rows;
  auto first = std::lower_bound(rows.begin(), rows.end(), id,
                                [](const MessageRow* r, uint32_t v) { return r->id < v; });
  std::vector<const MessageRow*> out;
  for (auto it = first; it != rows.end() && (*it)->id == id; ++it) out.push_back(*it);
  return out;
}

const char* Catalogue::Name(uint32_t id) {
  const auto& names = TheIndex().names;
  auto it = names.find(id);
  return it == names.end() ? "UNKNOWN_MESSAGE" : it->second.c_str();
}

std::vector<std::string> Catalogue::Validate() { return TheIndex().problems; }

}  // namespace appmgr::wire
