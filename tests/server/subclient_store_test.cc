// SubclientStore: the rules the server keeps for subclients beyond their content list: path
// overlap on one client, associations, pair data, the backup host and the fixture's settings.
#include "server/store/SubclientStore.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "server/store/ContentStore.h"
#include "server/store/StoreErrors.h"
#include "tests/server/TempStore.h"

namespace appmgr::server {
namespace {

// Client 3 has subclients 71 (backup set 7) and 81 (backup set 8, another instance); client 4
// has subclient 91. Backup set 7 has stores "primary" and "archive" and replication pair 1.
constexpr std::string_view kTree = R"json({
  "format": 1,
  "appTypes": [{"id": 10, "name": "File System"}, {"id": 20, "name": "SQL"}],
  "clients": [{"id": 3, "name": "db01", "hostName": "db01",
               "applications": [{"id": 301, "appType": 10}, {"id": 302, "appType": 20}]},
              {"id": 4, "name": "fs02", "hostName": "fs02",
               "applications": [{"id": 401, "appType": 10}]}],
  "instances": [{"id": 12, "client": 3, "appType": 10, "name": "a"},
                {"id": 13, "client": 3, "appType": 20, "name": "b"},
                {"id": 14, "client": 4, "appType": 10, "name": "c"}],
  "backupSets": [
    {"id": 7, "instance": 12, "name": "s7",
     "subclients": [{"id": 71, "name": "x"}, {"id": 72, "name": "y", "contentsDeleted": true}],
     "stores": [{"name": "primary"}, {"name": "archive"}],
     "replicationPairs": [{"id": 1, "destinationClient": 4, "source": "/data",
                           "destination": "/replica", "state": 3}]},
    {"id": 8, "instance": 13, "name": "s8", "subclients": [{"id": 81, "name": "x"}]},
    {"id": 9, "instance": 14, "name": "s9", "subclients": [{"id": 91, "name": "x"}]}],
  "subclientSettings": [{"subclient": 71, "referenceCopies": [81, 91],
                         "pairData": [{"pair": 1, "selector": 2, "text": "journal"}]},
                        {"subclient": 81, "backupHost": 4}],
  "fileTypeExtensions": [{"fileType": "Office", "extensions": "doc,docx"}]
})json";

using Entries = std::vector<ContentEntry>;

class SubclientStoreTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_OK(t_.Open());
    ASSERT_OK(t_.Load(kTree));
  }
  void SetPaths(uint64_t id, const std::vector<std::string>& paths) {
    Entries add;
    for (const std::string& p : paths) add.push_back({p, 1});
    ASSERT_OK(ContentStore(t_.store()).Update(EntityKind::kSubclient, id, add, {}, true));
  }
  SubclientStore sc() { return SubclientStore(t_.store()); }
  TempStore t_;
};

TEST_F(SubclientStoreTest, OverlapIsEqualityOrContainmentOfPathsOnTheSameClient) {
  struct Case {
    std::vector<std::string> mine, other;
    bool overlaps;
  } cases[] = {
      {{"/var/log"}, {"/var/log"}, true},
      {{"/var"}, {"/var/log/x"}, true},          // mine contains theirs
      {{"/var/log/x"}, {"/var"}, true},          // theirs contains mine
      {{"/var"}, {"/varnish"}, false},           // a prefix of the text is not a parent
      {{"/var/"}, {"/var/log"}, true},           // a trailing separator is ignored
      {{"/"}, {"/etc"}, true},                   // the root contains every absolute path
      {{"C:\\"}, {"C:\\Users"}, true},
      {{"C:\\Users"}, {"D:\\Users"}, false},
      {{"D:\\Logs"}, {"D:/Logs/Replica"}, true},  // either separator
      {{"/Data"}, {"/data"}, false},             // exact comparison, case included
      {{"SALESDB"}, {"SALESDB"}, true},          // entries without separators: equality only
      {{}, {"/etc"}, false},
      {{"/a", "/b/c"}, {"/x", "/b"}, true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE((c.mine.empty() ? "" : c.mine[0]) + " vs " + c.other[0]);
    SetPaths(71, c.mine.empty() ? std::vector<std::string>{"placeholder"} : c.mine);
    if (c.mine.empty()) {
      ASSERT_OK(ContentStore(t_.store()).Update(EntityKind::kSubclient, 71, {},
                                                Entries{{"placeholder", 1}}, false));
    }
    SetPaths(81, c.other);
    std::vector<uint64_t> ids{99};
    ASSERT_OK(sc().Overlapping(71, &ids));
    EXPECT_EQ(ids, c.overlaps ? std::vector<uint64_t>{81} : std::vector<uint64_t>{});
  }
}

TEST_F(SubclientStoreTest, OverlapLooksOnlyAtOtherSubclientsOfTheSameClient) {
  SetPaths(71, {"/data"});
  SetPaths(72, {"/data/a"});  // same backup set, marked deleted: still overlaps
  SetPaths(81, {"/data"});
  SetPaths(91, {"/data"});    // another client
  std::vector<uint64_t> ids;
  ASSERT_OK(sc().Overlapping(71, &ids));
  EXPECT_EQ(ids, (std::vector<uint64_t>{72, 81}));
  EXPECT_EQ(sc().Overlapping(5, &ids).GetErrorCode(), kStoreErrNotFound);
}

TEST_F(SubclientStoreTest, OverlapOfTenThousandPathsIsOnePass) {
  std::vector<std::string> mine, other;
  for (int i = 0; i < 10000; ++i) {
    mine.push_back("/data/dir" + std::to_string(i) + "/sub");
    other.push_back("/other/dir" + std::to_string(i));
  }
  other.back() = "/data/dir9999/sub/deeper";
  SetPaths(71, mine);
  SetPaths(81, other);
  std::vector<uint64_t> ids;
  ASSERT_OK(sc().Overlapping(71, &ids));
  EXPECT_EQ(ids, (std::vector<uint64_t>{81}));
}

TEST_F(SubclientStoreTest, AssociationsReplaceTheirKindAndStoresMustExist) {
  ASSERT_OK(sc().SetAssociations(71, AssociationKind::kStore, {"archive", "primary", "archive"}));
  ASSERT_OK(sc().SetAssociations(71, AssociationKind::kDirectory, {"OU=a"}));
  CLmError e = sc().SetAssociations(71, AssociationKind::kStore, {"primary", "nowhere"});
  EXPECT_EQ(e.GetErrorCode(), kStoreErrNotFound);
  EXPECT_NE(e.Text().find("backup set 7 has no store named 'nowhere'"), std::string::npos) << e.Text();
  EXPECT_EQ(sc().SetAssociations(71, AssociationKind::kDirectory, {"ok", ""}).GetErrorCode(),
            kStoreErrInvalidArgument);

  std::vector<std::string> stores, directories;
  ASSERT_OK(sc().Associations(71, AssociationKind::kStore, &stores));
  ASSERT_OK(sc().Associations(71, AssociationKind::kDirectory, &directories));
  EXPECT_EQ(stores, (std::vector<std::string>{"archive", "primary"})) << "the failed set changed nothing";
  EXPECT_EQ(directories, (std::vector<std::string>{"OU=a"}));
  ASSERT_OK(sc().SetAssociations(71, AssociationKind::kStore, {}));
  ASSERT_OK(sc().Associations(71, AssociationKind::kStore, &stores));
  EXPECT_TRUE(stores.empty());
}

TEST_F(SubclientStoreTest, PairDataBelongsToAPairOfTheSubclientsBackupSet) {
  uint64_t state = 0;
  std::string text;
  ASSERT_OK(sc().GetPairData(71, 1, 2, &state, &text));
  EXPECT_EQ(text, "journal");
  EXPECT_EQ(state, 3u);
  EXPECT_EQ(sc().SetPairData(71, 1, 2, "other", false).GetErrorCode(), kStoreErrConflict);
  ASSERT_OK(sc().GetPairData(71, 1, 2, &state, &text));
  EXPECT_EQ(text, "journal") << "a refused set keeps the data";
  ASSERT_OK(sc().SetPairData(71, 1, 2, "other", true));
  ASSERT_OK(sc().GetPairData(71, 1, 2, &state, &text));
  EXPECT_EQ(text, "other");
  EXPECT_EQ(sc().GetPairData(71, 1, 3, &state, &text).GetErrorCode(), kStoreErrNotFound);
  EXPECT_EQ(sc().GetPairData(81, 1, 2, &state, &text).GetErrorCode(), kStoreErrNotFound)
      << "pair 1 belongs to another backup set";
  EXPECT_EQ(sc().SetPairData(71, 5, 0, "x", true).GetErrorCode(), kStoreErrNotFound);
}

TEST_F(SubclientStoreTest, BackupHostCopiesExtensionsAndBackupSetContent) {
  uint64_t host = 0;
  ASSERT_OK(sc().BackupHost(81, &host));
  EXPECT_EQ(host, 4u);
  ASSERT_OK(sc().BackupHost(71, &host));
  EXPECT_EQ(host, 3u);
  std::vector<uint64_t> copies;
  ASSERT_OK(sc().ReferenceCopies(71, &copies));
  EXPECT_EQ(copies, (std::vector<uint64_t>{81, 91}));
  std::string ext;
  ASSERT_OK(sc().FileTypeExtensions("OFFICE", &ext));
  EXPECT_EQ(ext, "doc,docx");

  ASSERT_OK(ContentStore(t_.store()).Update(EntityKind::kSubclient, 71, Entries{{"/a", 1}, {"DB", 2}}, {},
                                            false));
  ASSERT_OK(ContentStore(t_.store()).Update(EntityKind::kSubclient, 72, Entries{{"/b", 1}}, {}, false));
  BackupSetContent content;
  ASSERT_OK(sc().FsBackupSetContent({3, 10, 12, 7, 0, 1, false}, &content));
  EXPECT_EQ(content.subclientIds, (std::vector<uint64_t>{71}));
  EXPECT_EQ(content.entries, "/a");
  ASSERT_OK(sc().FsBackupSetContent({0, 0, 0, 7, 0, 0, true}, &content));
  EXPECT_EQ(content.subclientIds, (std::vector<uint64_t>{71, 72}));
  EXPECT_EQ(content.entries, "/a\nDB\n/b");
  EXPECT_EQ(content.backupSetName, "s7");
  EXPECT_EQ(sc().FsBackupSetContent({0, 20, 0, 7, 0, 0, false}, &content).GetErrorCode(), kStoreErrNotFound);
  EXPECT_EQ(sc().FsBackupSetContent({0, 0, 0, 7, 81, 0, false}, &content).GetErrorCode(), kStoreErrNotFound);
}

TEST_F(SubclientStoreTest, TheFixtureRefusesSettingsThatReferToNothing) {
  struct Case {
    const char* fixture;
    const char* expected;
  } cases[] = {
      {R"({"format": 1, "subclientSettings": [{"subclient": 5}]})", "subclient 5 does not exist"},
      {R"({"format": 1, "subclientSettings": [{"subclient": 71, "backupHost": 9}]})",
       "client 9 does not exist"},
      {R"({"format": 1, "subclientSettings": [{"subclient": 81, "pairData": [{"pair": 1, "text": "x"}]}]})",
       "replication pair 1 is not a pair of subclient 81's backup set"},
      {R"({"format": 1, "subclientSettings": [{"subclient": 91, "referenceCopies": [91]}]})", "CHECK"},
      {R"({"format": 1, "fileTypeExtensions": [{"fileType": "office", "extensions": "x"}]})", "UNIQUE"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.fixture);
    CLmError e = t_.Load(c.fixture);
    ASSERT_TRUE(e);
    EXPECT_NE(e.Text().find(c.expected), std::string::npos) << e.Text();
  }
}

}  // namespace
}  // namespace appmgr::server
