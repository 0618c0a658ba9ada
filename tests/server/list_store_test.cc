// ListStore: what each list holds for each filter, what it leaves out (entities marked deleted,
// the subclient itself among its siblings), what fails (a filter naming nothing), and the
// count-then-rows contract its sinks rely on.
#include "server/store/ListStore.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "server/store/StoreErrors.h"
#include "tests/server/TempStore.h"

namespace appmgr::server {
namespace {

constexpr std::string_view kFixture = R"json({
  "format": 1,
  "domain": {"id": 1, "text1": "lab"},
  "appTypes": [{"id": 10, "name": "File System"}, {"id": 20, "name": "SQL"}],
  "clients": [
    {"id": 1, "name": "alpha", "hostName": "alpha.lab", "platformType": 1,
     "applications": [{"id": 101, "appType": 10}]},
    {"id": 2, "name": "beta", "hostName": "beta.lab", "platformType": 4,
     "applications": [{"id": 201, "appType": 10},
                      {"id": 202, "appType": 20, "contentsDeleted": true}]},
    {"id": 3, "name": "gamma", "hostName": "gamma.lab", "platformType": 5,
     "applications": [{"id": 301, "appType": 20}]}
  ],
  "clientGroups": [{"id": 1, "name": "prod", "members": [2, 3]},
                   {"id": 2, "name": "linux", "members": [1, 3]},
                   {"id": 3, "name": "empty"}],
  "instances": [
    {"id": 11, "client": 1, "appType": 10, "name": "default"},
    {"id": 21, "client": 2, "appType": 10, "name": "default"},
    {"id": 22, "client": 2, "appType": 20, "name": "old", "contentsDeleted": true},
    {"id": 31, "client": 3, "appType": 20, "name": "DB"}
  ],
  "backupSets": [
    {"id": 111, "instance": 11, "name": "bs",
     "subclients": [{"id": 1111, "name": "default"}, {"id": 1112, "name": "logs"},
                    {"id": 1113, "name": "gone", "contentsDeleted": true}],
     "stores": [{"name": "primary", "defaultSubclient": 1112}, {"name": "other",
                 "defaultSubclient": 1111}]},
    {"id": 112, "instance": 11, "name": "old", "contentsDeleted": true,
     "subclients": [{"id": 1121, "name": "default", "contentsDeleted": true}]},
    {"id": 211, "instance": 21, "name": "bs", "subclients": [{"id": 2111, "name": "only"}]},
    {"id": 311, "instance": 31, "name": "db", "subclients": [{"id": 3111, "name": "default"}]}
  ],
  "providers": [{"id": 1, "name": "disk", "description": "local", "type": 1, "value": 4},
                {"id": 2, "name": "tape", "type": 1, "disabled": true},
                {"id": 3, "name": "s3", "description": "object", "type": 2, "value": 9}],
  "clouds": [{"id": 1, "name": "c1", "type": 1,
              "clients": [{"client": 3, "accessNode": 1}, {"client": 2}]},
             {"id": 2, "name": "c2", "type": 2}],
  "domainClients": [{"domain": "LAB", "client": 2, "value1": 1, "value2": 2, "value3": 3},
                    {"domain": "Lab2", "client": 1},
                    {"domain": "LAB", "client": 1, "value3": 7}],
  "appIds": [
    {"id": 1, "number3": 1, "number4": 10, "number5": 11, "number6": 111, "number7": 1111,
     "number8": 18446744073709551615, "text0": "a", "text2": "c", "archiveGroup": 5},
    {"id": 2, "number3": 1, "number4": 10, "number5": 11, "number6": 111, "number7": 1112,
     "archiveGroup": 5, "incrArchiveGroup": 6},
    {"id": 3, "number3": 2, "number6": 211, "archiveGroup": 7}
  ]
})json";

// Receives a list as text: "id name" per row, with the row's other parts where asked for.
class Collect : public ListSink {
 public:
  enum Parts { kIdName = 0, kText = 1, kValues = 2 };
  explicit Collect(int parts = kIdName) : parts_(parts) {}

  CLmError Begin(size_t rows) override {
    ++begins;
    announced = rows;
    return fail;
  }
  void Row(const ListRow& row) override {
    // Appended piece by piece: GCC 12 at -O3 warns (-Wrestrict) about "literal" + string.
    std::string s = std::to_string(row.id);
    if (!row.name.empty()) s.append(" ").append(row.name);
    if (parts_ & kText) s.append(" [").append(row.text).append("]");
    if (parts_ & kValues) {
      s.append(" (").append(std::to_string(row.values[0])).append(",");
      s.append(std::to_string(row.values[1])).append(",");
      s.append(std::to_string(row.values[2])).append(")");
    }
    if (!out.empty()) out += "; ";
    out += s;
    ++rows;
  }

  std::string out;
  size_t announced = 0, rows = 0;
  int begins = 0;
  CLmError fail;

 private:
  int parts_;
};

class ListStoreTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_OK(t_.Open());
    ASSERT_OK(t_.Load(kFixture));
  }
  ListStore lists() { return ListStore(t_.store()); }
  TempStore t_;
};

struct Case {
  const char* name;
  std::function<CLmError(ListStore&, Collect&)> list;
  std::string rows;  // the rows, or the error text when `code` is not 0
  int code = 0;
  int parts = Collect::kIdName;
};

TEST_F(ListStoreTest, EachListHoldsWhatItsFiltersSelect) {
  auto clients = [](ClientFilter f) {
    return [f](ListStore& s, Collect& c) { return s.Clients(f, c); };
  };
  auto instances = [](TreeFilter f) {
    return [f](ListStore& s, Collect& c) { return s.Instances(f, c); };
  };
  auto backupSets = [](TreeFilter f) {
    return [f](ListStore& s, Collect& c) { return s.BackupSets(f, c); };
  };
  auto subclients = [](TreeFilter f) {
    return [f](ListStore& s, Collect& c) { return s.Subclients(f, c); };
  };
  const Case cases[] = {
      // Clients: platform bits, installed (not deleted) application types, groups, host names.
      {"every client", clients({}), "1 alpha (1,0,0); 2 beta (4,0,0); 3 gamma (5,0,0)", 0,
       Collect::kValues},
      {"platform bit 4", clients({.platformMask = 4}), "2 beta; 3 gamma"},
      {"platform bits nothing has", clients({.platformMask = 8}), ""},
      {"application type 20: beta's is deleted", clients({.appTypeId = 20}), "3 gamma"},
      {"group 1", clients({.groupId = 1}), "2 beta; 3 gamma"},
      {"group 1 with application type 10", clients({.appTypeId = 10, .groupId = 1}), "2 beta"},
      {"group 2, bit 4, host names", clients({.platformMask = 4, .groupId = 2, .hostNames = true}),
       "3 gamma.lab"},
      {"an empty group", clients({.groupId = 3}), ""},
      {"a missing group", clients({.groupId = 9}), "client group 9 does not exist",
       kStoreErrNotFound},
      {"a missing application type", clients({.appTypeId = 99}),
       "application type 99 does not exist", kStoreErrNotFound},
      // Application types: all known, or a client's (deleted ones on request).
      {"every application type", [](ListStore& s, Collect& c) { return s.AppTypes(0, false, c); },
       "10 File System; 20 SQL"},
      {"beta's application types", [](ListStore& s, Collect& c) { return s.AppTypes(2, false, c); },
       "10 File System"},
      {"beta's, deleted too", [](ListStore& s, Collect& c) { return s.AppTypes(2, true, c); },
       "10 File System; 20 SQL"},
      {"a missing client's", [](ListStore& s, Collect& c) { return s.AppTypes(8, false, c); },
       "client 8 does not exist", kStoreErrNotFound},
      // The entity tree.
      {"every instance", instances({}), "11 default; 21 default; 31 DB"},
      {"every instance, deleted too", instances({.withDeleted = true}),
       "11 default; 21 default; 22 old; 31 DB"},
      {"instances of client 2", instances({.clientId = 2, .withDeleted = true}),
       "21 default; 22 old"},
      {"instances of application type 20 in group 1", instances({.appTypeId = 20, .groupId = 1}),
       "31 DB"},
      {"instances of a missing instance filter", instances({.instanceId = 5}),
       "instance 5 does not exist", kStoreErrNotFound},
      {"backup sets of client 1", backupSets({.clientId = 1}), "111 bs (0,0,0)", 0,
       Collect::kValues},
      {"backup sets of instance 11, deleted too",
       backupSets({.instanceId = 11, .withDeleted = true}), "111 bs (0,0,0); 112 old (1,0,0)", 0,
       Collect::kValues},
      {"backup sets of application type 10", backupSets({.appTypeId = 10}), "111 bs; 211 bs"},
      {"every subclient", subclients({}), "1111 default; 1112 logs; 2111 only; 3111 default"},
      {"subclients of backup set 111, deleted too",
       subclients({.backupSetId = 111, .withDeleted = true}),
       "1111 default (0,0,0); 1112 logs (0,0,0); 1113 gone (1,0,0)", 0, Collect::kValues},
      {"subclients of instance 11", subclients({.instanceId = 11}), "1111 default; 1112 logs"},
      {"subclients of client 3", subclients({.clientId = 3}), "3111 default"},
      {"subclients of client 1 under instance 21", subclients({.clientId = 1, .instanceId = 21}),
       ""},
      {"subclients of a missing backup set", subclients({.backupSetId = 4}),
       "backup set 4 does not exist", kStoreErrNotFound},
      // Groups two clients share.
      {"every group", [](ListStore& s, Collect& c) { return s.ClientGroups(0, 0, c); },
       "1 prod; 2 linux; 3 empty"},
      {"gamma's groups", [](ListStore& s, Collect& c) { return s.ClientGroups(3, 0, c); },
       "1 prod; 2 linux"},
      {"the second client alone", [](ListStore& s, Collect& c) { return s.ClientGroups(0, 1, c); },
       "2 linux"},
      {"groups of beta and gamma", [](ListStore& s, Collect& c) { return s.ClientGroups(2, 3, c); },
       "1 prod"},
      {"groups of alpha and beta", [](ListStore& s, Collect& c) { return s.ClientGroups(1, 2, c); },
       ""},
      {"a missing client's groups",
       [](ListStore& s, Collect& c) { return s.ClientGroups(1, 7, c); }, "client 7 does not exist",
       kStoreErrNotFound},
      // Providers, clouds, domains.
      {"providers of type 1", [](ListStore& s, Collect& c) { return s.Providers(1, c); },
       "1 disk [local] (1,4,0); 2 tape [] (0,0,0)", 0, Collect::kText | Collect::kValues},
      {"every provider", [](ListStore& s, Collect& c) { return s.Providers(0, c); },
       "1 disk; 2 tape; 3 s3"},
      {"clouds of type 2", [](ListStore& s, Collect& c) { return s.Clouds(2, c); }, "2 c2"},
      {"cloud 1's clients and access nodes",
       [](ListStore& s, Collect& c) { return s.CloudClients(1, c); }, "2 (0,0,0); 3 (1,0,0)", 0,
       Collect::kValues},
      {"a cloud without clients", [](ListStore& s, Collect& c) { return s.CloudClients(2, c); },
       ""},
      {"a missing cloud", [](ListStore& s, Collect& c) { return s.CloudClients(9, c); },
       "cloud 9 does not exist", kStoreErrNotFound},
      {"cloud 0", [](ListStore& s, Collect& c) { return s.CloudClients(0, c); },
       "cloud 0 does not exist", kStoreErrNotFound},
      {"domain lab, in any case",
       [](ListStore& s, Collect& c) { return s.DomainClients("lab", c); },
       "1 alpha [LAB] (0,0,7); 2 beta [LAB] (1,2,3)", 0, Collect::kText | Collect::kValues},
      {"every domain", [](ListStore& s, Collect& c) { return s.DomainClients("", c); },
       "1 alpha [LAB]; 1 alpha [Lab2]; 2 beta [LAB]", 0, Collect::kText},
      {"a domain nobody is in", [](ListStore& s, Collect& c) { return s.DomainClients("X", c); },
       ""},
      {"the domain record", [](ListStore& s, Collect& c) { return s.Domains(0, c); }, "1 lab"},
      {"a missing domain record", [](ListStore& s, Collect& c) { return s.Domains(2, c); },
       "domain 2 does not exist", kStoreErrNotFound},
      // Application ids in their text form (numbers as unsigned, texts last).
      {"application ids of client 1, subclient 1111 (numbers 3 and 7)",
       [](ListStore& s, Collect& c) {
         return s.AppIds({1, 0, 0, 0, 1111}, c);
       },
       "1 1|1|10|11|111|1111|18446744073709551615|a||c"},
      {"application ids of number 4 = 10",
       [](ListStore& s, Collect& c) {
         return s.AppIds({0, 10, 0, 0, 0}, c);
       },
       "1 1|1|10|11|111|1111|18446744073709551615|a||c; 2 1|2|10|11|111|1112|0|||"},
      {"application ids of archive group 5, incremental 6",
       [](ListStore& s, Collect& c) { return s.AppIdsByArchiveGroup(5, 6, c); },
       "2 1|2|10|11|111|1112|0|||"},
      {"application ids of archive group 7",
       [](ListStore& s, Collect& c) { return s.AppIdsByArchiveGroup(7, 0, c); },
       "3 2|3|0|0|211|0|0|||"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Collect sink(c.parts);
    ListStore store = lists();
    CLmError e = c.list(store, sink);
    if (c.code != 0) {
      EXPECT_EQ(e.GetErrorCode(), c.code);
      EXPECT_EQ(e.Text(), c.rows);
      EXPECT_EQ(sink.rows, 0u) << "a failed list gives no row";
      continue;
    }
    ASSERT_FALSE(e) << e.Text();
    EXPECT_EQ(sink.out, c.rows);
    EXPECT_EQ(sink.begins, 1);
    EXPECT_EQ(sink.announced, sink.rows) << "Begin announces exactly the rows that follow";
  }
}

TEST_F(ListStoreTest, SiblingsAreTheOtherLiveSubclientsAndThePlaceIsReported) {
  Collect sink;
  SubclientPlace place;
  ASSERT_OK(lists().Siblings(1111, false, &place, sink));
  EXPECT_EQ(sink.out, "1112 logs");
  EXPECT_EQ(place.clientId, 1u);
  EXPECT_EQ(place.appTypeId, 10u);
  EXPECT_EQ(place.instanceId, 11u);
  EXPECT_EQ(place.backupSetId, 111u);
  EXPECT_EQ(place.defaultSubclientId, 1112u) << "the first store's default";

  Collect all;
  ASSERT_OK(lists().Siblings(1113, true, &place, all));
  EXPECT_EQ(all.out, "1111 default; 1112 logs");

  Collect alone;
  SubclientPlace lonely;
  ASSERT_OK(lists().Siblings(2111, false, &lonely, alone));
  EXPECT_EQ(alone.out, "");
  EXPECT_EQ(lonely.backupSetId, 211u);
  EXPECT_EQ(lonely.defaultSubclientId, 0u) << "a backup set without stores";

  Collect none;
  SubclientPlace untouched;
  untouched.clientId = 77;
  CLmError e = lists().Siblings(4242, false, &untouched, none);
  EXPECT_EQ(e.GetErrorCode(), kStoreErrNotFound);
  EXPECT_EQ(e.Text(), "subclient 4242 does not exist");
  EXPECT_EQ(untouched.clientId, 77u);
  EXPECT_EQ(none.begins, 0);
}

TEST_F(ListStoreTest, ASinkThatRefusesTheSizeGetsNoRowAndItsErrorIsReturned) {
  Collect sink;
  sink.fail = CLmError(kKpErrLimit, "too many");
  CLmError e = lists().Clients({}, sink);
  EXPECT_EQ(e.GetErrorCode(), kKpErrLimit);
  EXPECT_EQ(sink.announced, 3u);
  EXPECT_EQ(sink.rows, 0u);
}

}  // namespace
}  // namespace appmgr::server
