// The list handlers on a real server core and store holding the demo fixture: which request
// position filters by what, the shape of each answer (arrays of equal length, ascending ids),
// the refusals, and a list of 100,000 clients in one exchange.
#include "server/handlers/ListHandlers.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/net/XdrCodec.h"
#include "protocol/Messages.h"
#include "server/store/StoreErrors.h"
#include "tests/server/HandlerClient.h"
#include "tests/server/ServedStore.h"

namespace appmgr::server {
namespace {

using namespace appmgr::msg;

// The answer after its header, as the codec's debug form shows it, or its error.
template <class Resp>
std::string Shown(const Resp& resp) {
  if (resp.hdr.errorCode != 0) {
    return "error " + std::to_string(resp.hdr.errorCode) + ": " +
           (resp.hdr.errorText ? resp.hdr.errorText : "");
  }
  std::string s = wire::DebugString(wire::Wire<Resp>::schema, &resp);
  size_t start = s.find("} ") + 2;
  return s.substr(start, s.size() - start - 1);
}

class ListHandlersTest : public testing::Test {
 public:
  template <class Req, class Resp>
  std::string Ask(const wire::Op<Req, Resp>& op, Req req) {
    return Shown(client_.Call(op, req));
  }

 protected:
  ServedStore served_;
  HandlerClient client_{served_.connect()};
};

TEST_F(ListHandlersTest, EachPositionFiltersAsDocumented) {
  struct Case {
    const char* name;
    std::function<std::string(ListHandlersTest&)> ask;
    const char* answer;
  };
  const Case cases[] = {
      {"providers of type 1: disabled ones have a zero flag",
       [](auto& t) {
         return t.Ask(kGetProvidersList, GetProvidersListReq{.hdr = {}, .selector = 1});
       },
       "names=[\"Local disk library\", \"Tape library\"] texts=[\"/mnt/backup on ch01\", "
       "\"LTO-8 changer in rack 2\"] ids=[1, 3] flags=[1, 0] values=[4, 2]"},
      {"application ids by numbers 3 and 4",
       [](auto& t) {
         return t.Ask(kGetAppIdList, GetAppIdListReq{.hdr = {}, .selector1 = 3, .selector2 = 10});
       },
       "texts=[\"3|1|10|12|102|1021|0|C:\\\\||\"]"},
      {"application ids by number 7",
       [](auto& t) { return t.Ask(kGetAppIdList, GetAppIdListReq{.hdr = {}, .selector5 = 1031}); },
       "texts=[\"3|2|20|13|103|1031|0|SALESDB||\"]"},
      {"application ids by archive group",
       [](auto& t) {
         return t.Ask(kGetAppIdListByArchId,
                      GetAppIdListByArchIdReq{.hdr = {}, .id1 = 1, .id2 = 3});
       },
       "texts=[\"3|2|20|13|103|1031|0|SALESDB||\"]"},
      {"the domain",
       [](auto& t) { return t.Ask(kGetOrbitList, GenericListPairReq{.hdr = {}, .selector = 0}); },
       "ids=[1] names=[\"lab-domain\"]"},
      {"clients with platform bit 4, by host name",
       [](auto& t) {
         return t.Ask(kGetClientList, GenericListPairReq{.hdr = {}, .selector = 4, .option = 1});
       },
       "ids=[3, 4] names=[\"db01.lab.example.net\", \"fs02.lab.example.net\"]"},
      {"clients of platform bits and application type",
       [](auto& t) {
         return t.Ask(kGetClientListOfType,
                      GetClientListOfTypeReq{.hdr = {}, .selector1 = 5, .selector2 = 10});
       },
       "ids=[2, 3, 4] names=[\"controlhost\", \"db01\", \"fs02\"]"},
      {"clients of application type 20",
       [](auto& t) {
         return t.Ask(kGetClientListOfType, GetClientListOfTypeReq{.hdr = {}, .selector2 = 20});
       },
       "ids=[3] names=[\"db01\"]"},
      {"clients by application type and group",
       [](auto& t) {
         return t.Ask(kGetClientListByAppType,
                      GetClientListByAppTypeReq{.hdr = {}, .selector1 = 10, .selector2 = 1});
       },
       "ids=[3, 4] names=[\"db01\", \"fs02\"]"},
      {"clients by group and platform bits",
       [](auto& t) {
         return t.Ask(kGetClientListByAppGroup,
                      GetClientListByAppGroupReq{.hdr = {}, .selector1 = 1, .selector2 = 1});
       },
       "ids=[] names=[]"},
      {"clients of a group with an application type",
       [](auto& t) {
         return t.Ask(kGetClientsByClientGroup,
                      GetClientsByClientGroupReq{.hdr = {}, .id1 = 1, .id2 = 20});
       },
       "ids=[3] names=[\"db01\"]"},
      {"every client with its platform type",
       [](auto& t) {
         return t.Ask(kGetClientListWithValues, GenericListPairReq{.hdr = {}, .selector = 2});
       },
       "ids=[2, 3, 4] values=[1, 4, 4] names=[\"controlhost\", \"db01\", \"fs02\"]"},
      {"a client's application types",
       [](auto& t) {
         return t.Ask(kGetApplicationTypes, GenericListPairReq{.hdr = {}, .selector = 3});
       },
       "ids=[10, 20, 30] names=[\"File System\", \"SQL Database\", \"Mailbox\"]"},
      {"instances of client 3",
       [](auto& t) { return t.Ask(kGetInstanceList, GetInstanceListReq{.hdr = {}, .id1 = 3}); },
       "ids=[12, 13, 15] names=[\"default\", \"SALESDB\", \"+ASM\"]"},
      {"instances of application type 10 on clients of group 1",
       [](auto& t) {
         return t.Ask(kGetInstanceList, GetInstanceListReq{.hdr = {}, .id2 = 10, .id3 = 1});
       },
       "ids=[12, 14] names=[\"default\", \"default\"]"},
      {"backup sets of client 3",
       [](auto& t) { return t.Ask(kGetBackupSetList, GetBackupsetListReq{.hdr = {}, .id1 = 3}); },
       "ids=[102, 103, 105] names=[\"defaultBackupSet\", \"databases\", \"replication\"] "
       "flags=[0, 0, 0]"},
      {"backup sets of instance 12, deleted too",
       [](auto& t) {
         return t.Ask(kGetBackupSetList, GetBackupsetListReq{.hdr = {}, .id3 = 12, .flag = 1});
       },
       "ids=[102, 105, 106] names=[\"defaultBackupSet\", \"replication\", \"retired\"] "
       "flags=[0, 0, 1]"},
      {"subclients of instance 12",
       [](auto& t) { return t.Ask(kGetSubclientList, GetSubclientListReq{.hdr = {}, .id1 = 12}); },
       "ids=[1021, 1022, 1051] names=[\"default\", \"logs\", \"default\"] flags=[0, 0, 0]"},
      {"subclients of backup set 106, deleted too",
       [](auto& t) {
         return t.Ask(kGetSubclientList, GetSubclientListReq{.hdr = {}, .id2 = 106, .flag = 1});
       },
       "ids=[1061] names=[\"default\"] flags=[1]"},
      {"subclients by client and application type",
       [](auto& t) {
         return t.Ask(kGetAllSubclientList, GetAllSubclientListReq{.hdr = {}, .id1 = 3, .id2 = 20});
       },
       "ids=[1031, 1032] names=[\"default\", \"hourly-logs\"]"},
      {"siblings and the place of subclient 1021",
       [](auto& t) {
         return t.Ask(kGetSiblingSubclientList,
                      GetSiblingSCListReq{.hdr = {}, .subclientId = 1021});
       },
       "ids=[1022] names=[\"logs\"] value1=3 value2=10 value3=12 value4=102 value5=1021"},
      {"groups of client 3",
       [](auto& t) {
         return t.Ask(kGetClientGroupList, GenericListPairReq{.hdr = {}, .selector = 3});
       },
       "ids=[1] names=[\"Production servers\"]"},
      {"groups of client 2",
       [](auto& t) {
         return t.Ask(kGetClientGroupList, GenericListPairReq{.hdr = {}, .selector = 2});
       },
       "ids=[2] names=[\"Linux machines\"]"},
      {"groups clients 3 and 4 share",
       [](auto& t) {
         return t.Ask(kGetClientGroupsOfClient,
                      GetClientGroupsOfClientReq{.hdr = {}, .id1 = 3, .id2 = 4});
       },
       "ids=[1] names=[\"Production servers\"]"},
      {"the clients of domain lab",
       [](auto& t) {
         return t.Ask(kGetExdmDomainList, GetEXDMDomainListReq{.hdr = {}, .domain = "lab"});
       },
       "ids=[3, 4] values1=[1, 1] values2=[0, 0] values3=[445, 445] texts1=[\"db01\", \"fs02\"] "
       "texts2=[\"LAB\", \"LAB\"]"},
      {"every cloud",
       [](auto& t) { return t.Ask(kGetCloudList, GetCloudListReq{.hdr = {}, .selector = 0}); },
       "ids=[1, 2] names=[\"lab-cloud\", \"dr-cloud\"]"},
      {"the clients of cloud 1 and their access nodes",
       [](auto& t) {
         return t.Ask(kGetCloudClientList, GetCloudClientListReq{.hdr = {}, .cloudId = 1});
       },
       "ids1=[3, 4] ids2=[2, 0]"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(c.ask(*this), c.answer) << c.name;
  }
}

TEST_F(ListHandlersTest, RefusalsAreHeaderErrorsWithNothingElse) {
  struct Case {
    const char* name;
    std::function<Outcome(HandlerClient&)> ask;
    int code;
    const char* text;
  };
  const Case cases[] = {
      {"an unknown value selector",
       [](auto& c) {
         return OutcomeOf(
             c.Call(kGetClientListWithValues, GenericListPairReq{.hdr = {}, .selector = 3}));
       },
       kStoreErrInvalidArgument,
       "value selector 3 is unknown; this server answers 2 (platform types)"},
      {"a null domain name",
       [](auto& c) { return OutcomeOf(c.Call(kGetExdmDomainList, GetEXDMDomainListReq{})); },
       kStoreErrInvalidArgument, "the request carries no domain name"},
      {"a missing client",
       [](auto& c) {
         return OutcomeOf(c.Call(kGetInstanceList, GetInstanceListReq{.hdr = {}, .id1 = 99}));
       },
       kStoreErrNotFound, "client 99 does not exist"},
      {"a missing subclient",
       [](auto& c) {
         return OutcomeOf(
             c.Call(kGetSiblingSubclientList, GetSiblingSCListReq{.hdr = {}, .subclientId = 9999}));
       },
       kStoreErrNotFound, "subclient 9999 does not exist"},
      {"no cloud",
       [](auto& c) { return OutcomeOf(c.Call(kGetCloudClientList, GetCloudClientListReq{})); },
       kStoreErrNotFound, "cloud 0 does not exist"},
  };
  for (const Case& c : cases) {
    Outcome o = c.ask(client_);
    EXPECT_EQ(o.code, c.code) << c.name;
    EXPECT_EQ(o.text, c.text) << c.name;
    EXPECT_TRUE(o.restZero) << c.name;
  }
}

TEST(ListHandlersAtScale, AHundredThousandClientsComeBackInOneExchange) {
  constexpr int kClients = 100000;
  TempStore t;
  ASSERT_OK(t.Open());
  {
    Store::Transaction txn(t.store(), "test", Store::Transaction::kWrite);
    ASSERT_OK(txn.Exec(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 100000)"
        " INSERT INTO clients (id, name, host_name, platform_type)"
        " SELECT i, printf('client-%06d', i), printf('client-%06d.lab', i), i % 3 FROM n"));
    ASSERT_OK(txn.Commit());
  }
  ServerOptions o;
  o.port = 0;
  Server server(o);
  RegisterListHandlers(server, t.store());
  ASSERT_OK(server.Start());
  HandlerClient client(
      MangleHostName("127.0.0.1:" + std::to_string(server.port()), "ch01", 8400, 8402));
  GenericListPairResp r = client.Call(kGetClientList, GenericListPairReq{});
  ASSERT_EQ(r.hdr.errorCode, 0) << r.hdr.errorText;
  ASSERT_EQ(r.idCount, uint32_t{kClients});
  ASSERT_EQ(r.nameCount, uint32_t{kClients});
  for (uint32_t i = 0; i < r.idCount; i += 9973) {
    EXPECT_EQ(r.ids[i], i + 1);
    char expected[32];
    std::snprintf(expected, sizeof expected, "client-%06u", i + 1);
    EXPECT_STREQ(r.names[i], expected);
  }
  EXPECT_STREQ(r.names[kClients - 1], "client-100000");
  EXPECT_EQ(server.RequestCount(kGetClientList.requestId), 1u) << "one exchange";
  server.Stop();
}

}  // namespace
}  // namespace appmgr::server
