// Every message of the catalogue against literal rows typed from the protocol's tables: request
// id, request record and length, response id, response record and length. A changed id, a
// record swapped under an id, or a response id computed instead of listed fails here, and so
// does a catalogued request that no row pins. The rows live one file per family in pins/.
#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdio>
#include <set>
#include <string>
#include <utility>

#include "protocol/Catalogue.h"

namespace {

using appmgr::wire::Catalogue;
using appmgr::wire::Direction;
using appmgr::wire::MessageRow;

struct Pin {
  uint32_t requestId;
  const char* request;
  uint32_t requestLength;
  uint32_t responseId;
  const char* response;
  uint32_t responseLength;
};

constexpr Pin kPins[] = {
#include "tests/protocol/pins/Cache.inc"
#include "tests/protocol/pins/EntityTree.inc"
#include "tests/protocol/pins/BackupSet.inc"
#include "tests/protocol/pins/Lists.inc"
#include "tests/protocol/pins/Client.inc"
#include "tests/protocol/pins/AppId.inc"
#include "tests/protocol/pins/GlobalParam.inc"
#include "tests/protocol/pins/ClientGroup.inc"
#include "tests/protocol/pins/Domain.inc"
#include "tests/protocol/pins/Subclient.inc"
#include "tests/protocol/pins/Instance.inc"
#include "tests/protocol/pins/AppType.inc"
#include "tests/protocol/pins/Alerts.inc"
#include "tests/protocol/pins/Xml.inc"
#include "tests/protocol/pins/SnapInfo.inc"
#include "tests/protocol/pins/MailBoxDelegate.inc"
#include "tests/protocol/pins/FileContent.inc"
};

std::string Hex(uint32_t id) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08" PRIx32, id);
  return text;
}

TEST(CataloguePins, EveryPinnedRowIsCataloguedExactly) {
  for (const Pin& p : kPins) {
    SCOPED_TRACE(Hex(p.requestId) + " " + p.request);
    const MessageRow* row = Catalogue::Find(p.requestId, Direction::kRequest, p.requestLength);
    ASSERT_NE(row, nullptr) << "no request of this id and length";
    EXPECT_STREQ(row->record->name, p.request);
    EXPECT_EQ(row->responseId, p.responseId) << "answered by " << Hex(row->responseId);
    EXPECT_STREQ(row->responseRecord->name, p.response);
    EXPECT_EQ(row->responseRecord->size, p.responseLength);
    const MessageRow* answer = Catalogue::Find(p.responseId, Direction::kResponse, p.responseLength);
    ASSERT_NE(answer, nullptr) << "the response is not catalogued";
    EXPECT_STREQ(answer->record->name, p.response);
  }
}

TEST(CataloguePins, EveryCataloguedRequestIsPinned) {
  std::set<std::pair<uint32_t, uint32_t>> pinned;
  for (const Pin& p : kPins) {
    EXPECT_TRUE(pinned.insert({p.requestId, p.requestLength}).second)
        << Hex(p.requestId) << " is pinned twice";
  }
  for (const MessageRow* row : Catalogue::Rows()) {
    if (row->direction != Direction::kRequest) continue;
    EXPECT_TRUE(pinned.count({row->id, row->record->size}))
        << row->name << " (" << Hex(row->id) << ", " << row->record->size
        << " bytes) has no row in tests/protocol/pins";
  }
}

}  // namespace
