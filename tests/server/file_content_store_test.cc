// FileContentStore: registrations replaced per client and file name and found by path or name,
// and pushed values kept newest-first within their bound.
#include "server/store/FileContentStore.h"

#include <gtest/gtest.h>

#include <vector>

#include "server/store/StoreErrors.h"
#include "tests/server/TempStore.h"

namespace appmgr::server {
namespace {

FileRegistration Registration(uint64_t client, const std::string& name, const std::string& text) {
  FileRegistration r;
  r.clientId = client;
  r.fileName = name;
  r.path = "C:\\Program Files\\KP\\Temp/" + name;
  r.storedPath = "/srv/appmgr/Temp/" + name;
  r.size = name.size();
  r.text = text;
  return r;
}

class FileContentStoreTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_OK(t_.Open());
    ASSERT_OK(t_.Load(kSmallFixture));  // clients 3 and 4
  }
  FileContentStore files() { return FileContentStore(t_.store()); }
  TempStore t_;
};

TEST_F(FileContentStoreTest, ARegistrationIsReplacedPerClientAndName) {
  uint64_t first = 0, second = 0, other = 0, again = 0;
  ASSERT_OK(files().Register(Registration(3, "report.txt", "v1"), &first));
  ASSERT_OK(files().Register(Registration(3, "data.bin", "d"), &second));
  ASSERT_OK(files().Register(Registration(4, "report.txt", "theirs"), &other));
  ASSERT_OK(files().Register(Registration(3, "report.txt", "v2"), &again));
  EXPECT_GT(again, other) << "a new registration has a new id";

  std::vector<FileRegistration> mine;
  ASSERT_OK(files().Registrations(3, &mine));
  ASSERT_EQ(mine.size(), 2u);
  EXPECT_EQ(mine[0].fileName, "data.bin");
  EXPECT_EQ(mine[1].fileName, "report.txt");
  EXPECT_EQ(mine[1].text, "v2");
  EXPECT_EQ(mine[1].id, again);
  EXPECT_EQ(mine[1].path, "C:\\Program Files\\KP\\Temp/report.txt");
  EXPECT_EQ(mine[1].storedPath, "/srv/appmgr/Temp/report.txt");
  EXPECT_GT(mine[1].registeredAt, 1600000000);

  std::vector<FileRegistration> all;
  ASSERT_OK(files().Registrations(0, &all));
  EXPECT_EQ(all.size(), 3u);
}

TEST_F(FileContentStoreTest, ARegistrationIsFoundByItsPathOrItsName) {
  uint64_t id = 0;
  ASSERT_OK(files().Register(Registration(3, "report.txt", "t"), &id));
  for (const char* key : {"C:\\Program Files\\KP\\Temp/report.txt", "report.txt",
                          "/elsewhere/report.txt", "D:\\x\\report.txt"}) {
    FileRegistration found;
    SCOPED_TRACE(key);
    ASSERT_OK(files().FindRegistration(3, key, &found));
    EXPECT_EQ(found.id, id) << key;
  }
  FileRegistration none;
  CLmError e = files().FindRegistration(4, "report.txt", &none);
  EXPECT_EQ(e.GetErrorCode(), kStoreErrNotFound);
  EXPECT_EQ(e.Text(), "client 4 has no registered file report.txt");
  EXPECT_EQ(none.id, 0u) << "written only on success";
}

TEST_F(FileContentStoreTest, AMissingClientOrNameIsRefused) {
  uint64_t id = 7;
  struct Case {
    const char* what;
    CLmError error;
    int code;
    const char* text;
  } cases[] = {
      {"register", files().Register(Registration(42, "x.txt", ""), &id), kStoreErrNotFound,
       "client 42 does not exist"},
      {"no name", files().Register(Registration(3, "", ""), &id), kStoreErrInvalidArgument,
       "a registered file needs a file name"},
      {"list", [&] { std::vector<FileRegistration> v; return files().Registrations(42, &v); }(),
       kStoreErrNotFound, "client 42 does not exist"},
      {"find", [&] { FileRegistration r; return files().FindRegistration(42, "x", &r); }(),
       kStoreErrNotFound, "client 42 does not exist"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(c.error.GetErrorCode(), c.code) << c.what;
    EXPECT_EQ(c.error.Text(), c.text) << c.what;
  }
  EXPECT_EQ(id, 7u);
}

TEST_F(FileContentStoreTest, PushedValuesAreKeptInOrderAndOnlyTheNewest) {
  VsDataRecord r;
  r.value1 = 1;
  r.value2 = 2;
  r.value3 = 3;
  r.value4 = ~0ull;
  r.text = "vs";
  r.number = -5;
  uint64_t id = 0;
  ASSERT_OK(files().AddVsData(r, &id));
  std::vector<VsDataRecord> kept;
  ASSERT_OK(files().VsData(&kept));
  ASSERT_EQ(kept.size(), 1u);
  r.id = id;
  r.receivedAt = kept[0].receivedAt;
  EXPECT_EQ(kept[0], r);

  // Rows far below the next id fall out of the bound; the ones within it stay.
  {
    Store::Transaction txn(t_.store(), "test", Store::Transaction::kWrite);
    Statement st = txn.Prepare(
        "INSERT INTO vs_data (id, received_at) VALUES (?1, 1), (?2, 1)");
    st.BindU64(1, 2 * FileContentStore::kMaxVsData).BindU64(2, FileContentStore::kMaxVsData + 2);
    ASSERT_OK(st.Run());
    ASSERT_OK(txn.Commit());
  }
  ASSERT_OK(files().AddVsData(r, &id));
  EXPECT_EQ(id, 2u * FileContentStore::kMaxVsData + 1);
  ASSERT_OK(files().VsData(&kept));
  ASSERT_EQ(kept.size(), 3u);
  EXPECT_EQ(kept[0].id, uint64_t(FileContentStore::kMaxVsData) + 2);
  EXPECT_EQ(kept[2].id, id);
}

TEST(LastPathComponent, SplitsAtTheLastSlashOrBackslash) {
  EXPECT_EQ(LastPathComponent("/opt/kp/Temp/a.txt"), "a.txt");
  EXPECT_EQ(LastPathComponent("C:\\KP\\Temp/b.bin"), "b.bin");
  EXPECT_EQ(LastPathComponent("C:\\KP\\c.bin"), "c.bin");
  EXPECT_EQ(LastPathComponent("plain"), "plain");
  EXPECT_EQ(LastPathComponent("ends/"), "");
}

}  // namespace
}  // namespace appmgr::server
