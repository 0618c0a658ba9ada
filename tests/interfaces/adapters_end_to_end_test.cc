// Every list query of AdaptersInterfaceNet through the library against the real appmgrd on its
// demo data: the members appended behind what the caller's lists held, the empty answers, the
// server's refusals, and the operations answered without a message.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "adapters/AdaptersInterfaceNet.h"
#include "server/store/StoreErrors.h"
#include "session/ClientSessionWrapper.h"
#include "tests/session/SessionFixture.h"
#include "tests/support/AppmgrdProcess.h"

namespace {

using L = std::list<unsigned long>;
using N = std::list<std::string>;
using F = std::list<bool>;
using appmgr::server::kStoreErrInvalidArgument;
using appmgr::server::kStoreErrNotFound;

template <class T>
std::string Join(const std::list<T>& list) {
  std::string s;
  for (const T& v : list) {
    if (!s.empty()) s += ',';
    if constexpr (std::is_same_v<T, std::string>) {
      s += v;
    } else {
      s += std::to_string(v);
    }
  }
  return s;
}

class AdaptersEndToEnd : public SessionFixture {
 protected:
  void SetUp() override {
    AppmgrdProcess::Options o;
    o.fixture = AppmgrdProcess::DemoFixture();
    server_ = std::make_unique<AppmgrdProcess>(o);
    Settings("[Controlhost]\nsHOSTNAME = " + server_->host() + "\nsCLIENTNAME = controlhost\n");
  }

  // A pair list called on lists that hold (0, "old"): its status and what the lists then hold.
  std::string Pairs(const std::function<int(L&, N&, std::string&)>& call) {
    L ids{0};
    N names{"old"};
    err_.clear();
    int status = call(ids, names, err_);
    if (status != 0) return "error " + std::to_string(status) + ": " + err_;
    return Join(ids) + " | " + Join(names);
  }

  std::unique_ptr<AppmgrdProcess> server_;
  AdaptersInterfaceNet a_;
  std::string err_;
};

TEST_F(AdaptersEndToEnd, EveryListAppendsTheServersAnswer) {
  struct Case {
    const char* name;
    std::function<int(L&, N&, std::string&)> call;
    const char* lists;
  };
  AdaptersInterfaceNet& a = a_;
  const Case cases[] = {
      {"the domain",
       [&](L& i, N& n, std::string& e) { return a.getOrbitList(i, n, e, 0, nullptr, false); },
       "0,1 | old,lab-domain"},
      {"clients by platform bits",
       [&](L& i, N& n, std::string& e) { return a.getClientList(i, n, e, 4, nullptr, 0); },
       "0,3,4 | old,db01,fs02"},
      {"every client by host name",
       [&](L& i, N& n, std::string& e) { return a.getClientList(i, n, e, 0, nullptr, 1); },
       "0,2,3,4 | old,ch01.lab.example.net,db01.lab.example.net,fs02.lab.example.net"},
      {"clients of an application type",
       [&](L& i, N& n, std::string& e) {
         return a.getClientListOfType(i, n, e, 0, 30, nullptr, false);
       },
       "0,3 | old,db01"},
      {"a client's application types",
       [&](L& i, N& n, std::string& e) { return a.getApplicationTypes(i, n, e, 4, nullptr, 0); },
       "0,10 | old,File System"},
      {"instances by client, type and group",
       [&](L& i, N& n, std::string& e) { return a.getInstanceList(i, n, e, 3, 20, 1, nullptr, 0); },
       "0,13,15 | old,SALESDB,+ASM"},
      {"instances of a client: (a, 0, b)",
       [&](L& i, N& n, std::string& e) { return a.getInstanceList(i, n, e, 3, 0, nullptr, 0); },
       "0,12,13,15 | old,default,SALESDB,+ASM"},
      {"instances of a type: (0, a, b)",
       [&](L& i, N& n, std::string& e) { return a.getInstanceList(10, 1, i, n, e, nullptr, 0); },
       "0,12,14 | old,default,default"},
      {"subclients by client, type, instance and backup set",
       [&](L& i, N& n, std::string& e) {
         return a.getSubclientList(i, n, e, 3, 10, 12, 0, nullptr, 0);
       },
       "0,1021,1022,1051 | old,default,logs,default"},
      {"clients of a type in a group",
       [&](L& i, N& n, std::string& e) {
         return a.getClientListByAppType(i, n, e, 10, 1, nullptr);
       },
       "0,3,4 | old,db01,fs02"},
      {"clients of a group with platform bits",
       [&](L& i, N& n, std::string& e) {
         return a.getClientListByAppGroup(i, n, e, 1, 4, nullptr);
       },
       "0,3,4 | old,db01,fs02"},
      {"clients of a group",
       [&](L& i, N& n, std::string& e) { return a.getClientList(i, n, e, 1, 0, nullptr, 0); },
       "0,3,4 | old,db01,fs02"},
      {"groups of a client",
       [&](L& i, N& n, std::string& e) { return a.getClientGroupList(i, n, e, 4, nullptr, 0); },
       "0,1,2 | old,Production servers,Linux machines"},
      {"groups two clients share",
       [&](L& i, N& n, std::string& e) { return a.getClientGroupList(i, n, e, 3, 4, nullptr, 0); },
       "0,1 | old,Production servers"},
      {"every cloud",
       [&](L& i, N& n, std::string& e) { return a.getCloudList(i, n, 0, e, nullptr); },
       "0,1,2 | old,lab-cloud,dr-cloud"},
  };
  for (const Case& c : cases) EXPECT_EQ(Pairs(c.call), c.lists) << c.name;

  // The lists with more than ids and names.
  L ids{0}, values{0};
  N names{"old"}, texts{"old"};
  F flags{false};
  ASSERT_EQ(a.getProvidersList(ids, names, texts, flags, values, err_, 0, nullptr), 0) << err_;
  EXPECT_EQ(Join(ids), "0,1,2,3");
  EXPECT_EQ(Join(names), "old,Local disk library,Object store,Tape library");
  EXPECT_EQ(Join(texts),
            "old,/mnt/backup on ch01,https://s3.lab.example.net,LTO-8 changer in rack 2");
  EXPECT_EQ(Join(flags), "0,1,1,0");
  EXPECT_EQ(Join(values), "0,4,16,2");

  N appIds{"old"};
  ASSERT_EQ(a.getAppIdList(appIds, err_, 3, 10, 12, 102, 1021, nullptr, false), 0) << err_;
  EXPECT_EQ(Join(appIds), "old,3|1|10|12|102|1021|0|C:\\||");
  bool untouched = true;
  ASSERT_EQ(a.getApplications(appIds, 1, 3, untouched, err_, nullptr), 0) << err_;
  EXPECT_EQ(appIds.back(), "3|2|20|13|103|1031|0|SALESDB||");
  EXPECT_TRUE(untouched);

  L bsIds{0};
  N bsNames{"old"};
  F deleted{true};
  ASSERT_EQ(a.getBackupSetList(bsIds, bsNames, deleted, err_, 3, 10, 12, nullptr, 1), 0) << err_;
  EXPECT_EQ(Join(bsIds), "0,102,105,106");
  EXPECT_EQ(Join(bsNames), "old,defaultBackupSet,replication,retired");
  EXPECT_EQ(Join(deleted), "1,0,0,1");

  L scIds;
  N scNames;
  F scDeleted;
  ASSERT_EQ(a.getSubclientList(scIds, scNames, scDeleted, err_, 12, 106, nullptr, 1), 0) << err_;
  EXPECT_EQ(Join(scIds) + " " + Join(scNames) + " " + Join(scDeleted), "1061 default 1");

  L siblings{0};
  N siblingNames{"old"};
  unsigned long v[5] = {9, 9, 9, 9, 9};
  ASSERT_EQ(a.getSiblingSubclientList(1031, siblings, siblingNames, v[0], v[1], v[2], v[3], v[4],
                                      err_, nullptr, false),
            0)
      << err_;
  EXPECT_EQ(Join(siblings) + " " + Join(siblingNames), "0,1032 old,hourly-logs");
  EXPECT_EQ(Join(L(v, v + 5)), "3,20,13,103,1031");

  L clients{0}, platforms{0};
  N clientNames{"old"};
  ASSERT_EQ(a.getClientList(clients, clientNames, platforms, err_, nullptr, false), 0) << err_;
  EXPECT_EQ(Join(clients) + " " + Join(platforms), "0,2,3,4 0,1,4,4");
  EXPECT_EQ(Join(clientNames), "old,controlhost,db01,fs02");

  L l1{0}, l2, l3, l4;
  N s1, s2{"old"};
  ASSERT_EQ(a.getExDMClientDomainList("dmz", l1, l2, l3, l4, s1, s2, err_, nullptr, false), 0)
      << err_;
  EXPECT_EQ(Join(l1) + " " + Join(l2) + " " + Join(l3) + " " + Join(l4), "0,2 2 1 22");
  EXPECT_EQ(Join(s1) + " " + Join(s2), "controlhost old,DMZ");

  L members{0}, nodes{0};
  ASSERT_EQ(a.getCloudClientList(members, nodes, 1, err_, nullptr), 0) << err_;
  EXPECT_EQ(Join(members) + " " + Join(nodes), "0,3,4 0,2,0");
}

TEST_F(AdaptersEndToEnd, EmptyAnswersRefusalsAndLocalOperations) {
  AdaptersInterfaceNet& a = a_;
  struct Case {
    const char* name;
    std::function<int(L&, N&, std::string&)> call;
    std::string lists;
  };
  const Case cases[] = {
      // Nothing matches: the lists keep what they held.
      {"clients with a platform bit nobody has",
       [&](L& i, N& n, std::string& e) { return a.getClientList(i, n, e, 0x100, nullptr, 0); },
       "0 | old"},
      {"instances of a client without that type",
       [&](L& i, N& n, std::string& e) { return a.getInstanceList(i, n, e, 2, 20, 0, nullptr, 0); },
       "0 | old"},
      {"groups of the Controlhost, in one group only",
       [&](L& i, N& n, std::string& e) { return a.getClientGroupList(i, n, e, 2, nullptr, 0); },
       "0,2 | old,Linux machines"},
      {"clouds of a type nobody has",
       [&](L& i, N& n, std::string& e) { return a.getCloudList(i, n, 7, e, nullptr); }, "0 | old"},
      {"subclients of a deleted backup set",
       [&](L& i, N& n, std::string& e) {
         return a.getSubclientList(i, n, e, 0, 0, 0, 106, nullptr, 0);
       },
       "0 | old"},
      // Refusals: the status and text of the server, the lists untouched.
      {"a missing client",
       [&](L& i, N& n, std::string& e) { return a.getApplicationTypes(i, n, e, 42, nullptr, 0); },
       "error " + std::to_string(kStoreErrNotFound) + ": client 42 does not exist"},
      {"a missing client group",
       [&](L& i, N& n, std::string& e) { return a.getClientList(i, n, e, 7, 0, nullptr, 0); },
       "error 1: client group 7 does not exist"},
      {"a missing application type",
       [&](L& i, N& n, std::string& e) {
         return a.getClientListByAppType(i, n, e, 99, 0, nullptr);
       },
       "error 1: application type 99 does not exist"},
      {"a missing instance",
       [&](L& i, N& n, std::string& e) {
         return a.getSubclientList(i, n, e, 0, 0, 77, 0, nullptr, 0);
       },
       "error 1: instance 77 does not exist"},
  };
  for (const Case& c : cases) EXPECT_EQ(Pairs(c.call), c.lists) << c.name;

  L ids{0}, ids2{0};
  N names{"old"};
  unsigned long v[5] = {9, 9, 9, 9, 9};
  EXPECT_EQ(a.getSiblingSubclientList(4242, ids, names, v[0], v[1], v[2], v[3], v[4], err_, nullptr,
                                      false),
            kStoreErrNotFound);
  EXPECT_EQ(err_, "subclient 4242 does not exist");
  EXPECT_EQ(Join(L(v, v + 5)), "9,9,9,9,9");
  ASSERT_EQ(a.getSiblingSubclientList(1041, ids, names, v[0], v[1], v[2], v[3], v[4], err_, nullptr,
                                      false),
            0);
  EXPECT_EQ(Join(ids) + " " + Join(names), "0 old") << "an only subclient has no sibling";
  EXPECT_EQ(Join(L(v, v + 5)), "4,10,14,104,1041") << "written even for an empty list";
  EXPECT_EQ(a.getCloudClientList(ids, ids2, 9, err_, nullptr), kStoreErrNotFound);
  EXPECT_EQ(err_, "cloud 9 does not exist");
  L l1, l2, l3, l4;
  N s1, s2;
  ASSERT_EQ(a.getExDMClientDomainList("nowhere", l1, l2, l3, l4, s1, s2, err_, nullptr, true), 0);
  EXPECT_TRUE(l1.empty() && s1.empty());
  N appIds{"old"};
  bool untouched = false;
  ASSERT_EQ(a.getApplications(appIds, 12345, 0, untouched, err_, nullptr), 0);
  EXPECT_EQ(Join(appIds), "old");
  EXPECT_FALSE(untouched);
  L none;
  EXPECT_EQ(a.getClientList(none, names, ids, err_, nullptr, false), 0)
      << "the library sends the selector appmgrd knows";

  // The operations answered without a message reach no server, whatever it would say.
  const uint64_t sent = ClientSessionWrapper::m_nTotalMessageCalls.load();
  err_ = "kept";
  EXPECT_EQ(a.getInstanceList(ids, 3, 0, err_, nullptr), 0);
  EXPECT_EQ(a.setOpRules(3, names, err_, nullptr), 0);
  long local = 5;
  EXPECT_EQ(a.GetUTCToClientLocalTime(3, 100, local, err_, nullptr), 0);
  EXPECT_EQ(local, 5);
  EXPECT_EQ(a.getCostCategories(ids, names, err_, nullptr), 0xa0010);
  EXPECT_EQ(err_, "kept");
  EXPECT_EQ(a.deleteCloud(1, err_, nullptr), 0xa0010);
  EXPECT_EQ(err_, "Api not implemented.");
  EXPECT_EQ(ClientSessionWrapper::m_nTotalMessageCalls.load(), sent);
  L cloud{0};
  EXPECT_EQ(a.getCloudList(cloud, names, 1, err_, nullptr), 0) << "the cloud is still there";
  EXPECT_EQ(Join(cloud), "0,1");
}

}  // namespace
