// The handlers answered on many connection threads at once: each client's changes and reads stay
// consistent while others change and read the same store.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "protocol/Messages.h"
#include "tests/server/HandlerClient.h"
#include "tests/server/ServedStore.h"

namespace appmgr::server {
namespace {

using namespace appmgr::msg;

TEST(HandlersConcurrently, ClientsOnManyConnectionsSeeTheirOwnChanges) {
  ServedStore served;
  constexpr int kRounds = 30;
  const uint64_t backupSets[] = {101, 102, 103, 104};
  std::vector<std::thread> threads;
  for (uint64_t id : backupSets) {
    threads.emplace_back([&served, id] {
      HandlerClient client(served.connect(), "writer-" + std::to_string(id));
      for (int i = 0; i < kRounds; ++i) {
        std::string name = "set-" + std::to_string(id) + "-" + std::to_string(i);
        GenericUpdateReq2 u;
        u.id = id;
        u.name = name.c_str();
        u.value = i;
        ASSERT_EQ(client.Call(kBsUpdate, u).hdr.errorCode, 0);
        std::string value = std::to_string(i);
        AppMgrProps p[1] = {{"nRound", 1, value.c_str()}};
        GenericSetPropsReq s;
        s.id = id;
        s.count = 1;
        s.props = p;
        ASSERT_EQ(client.Call(kBsSetProperties, s).hdr.errorCode, 0);

        GenericLookupReq4 l;
        l.id = id;
        GenericLookupResp4 r = client.Call(kBsLookup, l);
        ASSERT_EQ(r.hdr.errorCode, 0);
        EXPECT_STREQ(r.name, name.c_str());
        EXPECT_EQ(r.value, i);
        GenericGetPropsReq g;
        g.id = id;
        GenericGetPropsResp props = client.Call(kBsGetProperties, g);
        ASSERT_EQ(props.hdr.errorCode, 0);
        ASSERT_GE(props.count, 1u);
        EXPECT_STREQ(props.props[props.count - 1].value, value.c_str());
      }
    });
  }
  // Readers of data nobody changes, and requests that fail, alongside.
  for (int k = 0; k < 2; ++k) {
    threads.emplace_back([&served] {
      HandlerClient client(served.connect(), "reader");
      for (int i = 0; i < kRounds; ++i) {
        APPFLRSystemStateInfoReq f;
        f.id = 105;
        f.name = "db01";
        APPFLRSystemStateInfoResp state = client.Call(kBsFlrSystemState, f);
        ASSERT_EQ(state.hdr.errorCode, 0);
        ASSERT_EQ(state.count, 2u);
        EXPECT_STREQ(state.infos[0].pairs[1].name, "SOFTWARE");
        GetStoreListReq missing;
        missing.id = 42;
        GenericStringListResp none = client.Call(kBsStoreList, missing);
        EXPECT_STREQ(none.hdr.errorText, "backup set 42 does not exist");
      }
    });
  }
  for (std::thread& t : threads) t.join();
}

}  // namespace
}  // namespace appmgr::server
