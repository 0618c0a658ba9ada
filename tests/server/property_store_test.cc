// PropertyStore: merge and replace, strict and lenient removal, tables, missing entities.
#include "server/store/PropertyStore.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "server/store/StoreErrors.h"
#include "tests/server/TempStore.h"

namespace appmgr::server {
namespace {

using Props = std::vector<Property>;

class PropertyStoreTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_OK(t_.Open());
    ASSERT_OK(t_.Load(kSmallFixture));
    ASSERT_OK(props().Set(EntityKind::kBackupSet, 7, {{"a", 1, "one"}, {"b", 2, "two"}}, false));
  }

  PropertyStore props() { return PropertyStore(t_.store()); }

  Props Get(EntityKind kind = EntityKind::kBackupSet, uint64_t id = 7, int64_t table = 0) {
    Props out;
    CLmError e = props().Get(kind, id, table, &out);
    EXPECT_FALSE(e) << e.Text();
    return out;
  }

  TempStore t_;
};

struct SetCase {
  const char* name;
  Props given;
  bool replaceAll;
  Props expected;  // starting from a=1 "one", b=2 "two"
};
void PrintTo(const SetCase& c, std::ostream* os) {
  *os << c.name;
}

class PropertySet : public PropertyStoreTest, public testing::WithParamInterface<SetCase> {};

TEST_P(PropertySet, LeavesExactlyTheExpectedProperties) {
  const SetCase& c = GetParam();
  ASSERT_OK(props().Set(EntityKind::kBackupSet, 7, c.given, c.replaceAll));
  EXPECT_EQ(Get(), c.expected);
  EXPECT_EQ(Get(EntityKind::kBackupSet, 8), Props{});  // another entity is untouched
}

INSTANTIATE_TEST_SUITE_P(
    Cases, PropertySet,
    testing::Values(SetCase{"merge_updates_in_place_and_appends_new_names",
                            {{"c", 3, "three"}, {"a", 9, "ONE"}},
                            false,
                            {{"a", 9, "ONE"}, {"b", 2, "two"}, {"c", 3, "three"}}},
                    SetCase{"replace_keeps_only_the_list_in_its_order",
                            {{"c", 3, "three"}, {"a", 9, "ONE"}},
                            true,
                            {{"c", 3, "three"}, {"a", 9, "ONE"}}},
                    SetCase{"replace_with_nothing_clears", {}, true, {}},
                    SetCase{"merge_with_nothing_changes_nothing",
                            {},
                            false,
                            {{"a", 1, "one"}, {"b", 2, "two"}}},
                    SetCase{"a_repeated_name_takes_the_later_value",
                            {{"b", 5, "first"}, {"b", 6, "second"}},
                            false,
                            {{"a", 1, "one"}, {"b", 6, "second"}}},
                    SetCase{"names_are_case_sensitive",
                            {{"A", 0, ""}},
                            false,
                            {{"a", 1, "one"}, {"b", 2, "two"}, {"A", 0, ""}}},
                    SetCase{"types_keep_all_64_bits",
                            {{"a", UINT64_MAX, "max"}},
                            false,
                            {{"a", UINT64_MAX, "max"}, {"b", 2, "two"}}}),
    [](const testing::TestParamInfo<SetCase>& i) { return std::string(i.param.name); });

TEST_F(PropertyStoreTest, AnEmptyNameChangesNothing) {
  CLmError e = props().Set(EntityKind::kBackupSet, 7, {{"c", 3, "three"}, {"", 0, "x"}}, true);
  EXPECT_EQ(e.GetErrorCode(), kStoreErrInvalidArgument);
  EXPECT_EQ(Get(), (Props{{"a", 1, "one"}, {"b", 2, "two"}}));
}

TEST_F(PropertyStoreTest, StrictRemoveOfAnAbsentNameRemovesNothing) {
  CLmError e = props().Remove(EntityKind::kBackupSet, 7, {"a", "zz", "yy"}, true);
  EXPECT_EQ(e.GetErrorCode(), kStoreErrNotFound);
  EXPECT_EQ(e.Text(), "backup set 7 has no properties 'zz', 'yy'");
  EXPECT_EQ(Get(), (Props{{"a", 1, "one"}, {"b", 2, "two"}}));
}

TEST_F(PropertyStoreTest, StrictRemoveOfPresentNamesRemovesThem) {
  // A name given twice is present once: not a missing name.
  ASSERT_OK(props().Remove(EntityKind::kBackupSet, 7, {"b", "b"}, true));
  EXPECT_EQ(Get(), (Props{{"a", 1, "one"}}));
}

TEST_F(PropertyStoreTest, LenientRemoveIgnoresAbsentNames) {
  ASSERT_OK(props().Remove(EntityKind::kBackupSet, 7, {"zz", "a"}, false));
  EXPECT_EQ(Get(), (Props{{"b", 2, "two"}}));
}

TEST_F(PropertyStoreTest, TablesAreSeparate) {
  ASSERT_OK(props().Set(EntityKind::kBackupSet, 7, {{"a", 5, "other table"}}, true, 3));
  EXPECT_EQ(Get(EntityKind::kBackupSet, 7, 3), (Props{{"a", 5, "other table"}}));
  EXPECT_EQ(Get(), (Props{{"a", 1, "one"}, {"b", 2, "two"}}));
  ASSERT_OK(props().Remove(EntityKind::kBackupSet, 7, {"a"}, true));
  EXPECT_EQ(Get(EntityKind::kBackupSet, 7, 3), (Props{{"a", 5, "other table"}}));
}

TEST_F(PropertyStoreTest, KindsWithTheSameIdAreSeparate) {
  // Client 3 and backup set 7 exist; give client 3 properties and check backup set 7's stay.
  ASSERT_OK(props().Set(EntityKind::kClient, 3, {{"a", 0, "client"}}, true));
  EXPECT_EQ(Get(EntityKind::kClient, 3), (Props{{"a", 0, "client"}}));
  EXPECT_EQ(Get(), (Props{{"a", 1, "one"}, {"b", 2, "two"}}));
}

TEST_F(PropertyStoreTest, EveryOperationOnAMissingEntityIsNotFound) {
  Props out;
  for (CLmError e : {props().Get(EntityKind::kSubclient, 99, 0, &out),
                     props().Set(EntityKind::kSubclient, 99, {{"a", 0, ""}}, false),
                     props().Remove(EntityKind::kSubclient, 99, {"a"}, false)}) {
    EXPECT_EQ(e.GetErrorCode(), kStoreErrNotFound);
    EXPECT_EQ(e.Text(), "subclient 99 does not exist");
  }
}

TEST_F(PropertyStoreTest, DeletingAnEntityDropsItsPropertiesAndThoseOfWhatItOwned) {
  ASSERT_OK(props().Set(EntityKind::kClient, 3, {{"c", 0, "client"}}, false));
  ASSERT_OK(props().Set(EntityKind::kSubclient, 71, {{"s", 0, "subclient"}}, false));
  {
    Store::Transaction txn(t_.store(), "test", Store::Transaction::kWrite);
    // Client 3 owns, through its instance, backup sets 7 and 8 and their subclients.
    ASSERT_OK(txn.Exec("DELETE FROM clients WHERE id = 3"));
    ASSERT_OK(txn.Commit());
  }
  Store::Transaction txn(t_.store(), "test", Store::Transaction::kRead);
  Statement st = txn.Prepare("SELECT count(*) FROM properties");
  bool row = false;
  ASSERT_OK(st.Step(&row));
  EXPECT_EQ(st.Int(0), 0);
}

}  // namespace
}  // namespace appmgr::server
