// AdaptersInterfaceNet against the scriptable server: what each list query sends, how the
// answer's arrays reach the caller's lists, what is left alone when a step fails or an answer is
// malformed, and the operations answered without a message.
//
// One table holds every list operation, called on lists that already hold one member; the same
// table runs against a server that answers two members, nothing, an error, or arrays shorter
// than their driver.
#include "adapters/AdaptersInterfaceNet.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/net/XdrCodec.h"
#include "platform/xml/AppMessages.h"
#include "platform/xml/KPGuiMessages.h"
#include "tests/session/SessionFixture.h"

namespace {

namespace msg = appmgr::msg;
namespace wire = appmgr::wire;
using appmgr::server::Exchange;

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

// The fields of a request after its header, as the codec's debug form shows them.
template <class Req>
std::string Fields(Req req) {
  std::memset(static_cast<void*>(&req.hdr), 0, sizeof req.hdr);
  std::string s = wire::DebugString(wire::Wire<Req>::schema, &req);
  size_t start = s.find("} ") + 2;  // after "{hdr={...} "
  return s.substr(start, s.size() - start - 1);
}

// How the server answers every list message.
enum class Answer {
  kTwo,    // two members: array k holds 10(k+1), 10(k+1)+1 (a flags array 10(k+1), 0), or
           // the texts "<field>0" and null; the scalars after the arrays 100, 101, ...
  kEmpty,  // the zeroed record: every count 0
  kError,  // code 7, "list refused"
  kShort,  // as kTwo, but the last array read beside the driver holds one element
};

void Fill(const wire::RecordSchema& s, void* record, Exchange& x, Answer answer) {
  char* rec = static_cast<char*>(record);
  uint32_t lastParallel = 0;
  for (uint32_t i = 0; i < s.fieldCount; ++i) {
    if (s.fields[i].drivingCountOffset != wire::FieldDesc::kNoDriver) lastParallel = i;
  }
  uint64_t array = 0, scalar = 0;
  for (uint32_t i = 1; i < s.fieldCount; ++i) {
    const wire::FieldDesc& f = s.fields[i];
    if (f.kind == wire::FieldKind::kU64) {
      uint64_t v = 100 + scalar++;
      std::memcpy(rec + f.offset, &v, sizeof v);
      continue;
    }
    if (f.kind != wire::FieldKind::kArray) continue;
    ++array;
    uint32_t n = answer == Answer::kShort && i == lastParallel ? 1 : 2;
    void* items = nullptr;
    if (f.element == &wire::kU64Element) {
      uint64_t* ids = x.Array<uint64_t>(n);
      for (uint32_t k = 0; k < n; ++k) ids[k] = 10 * array + k;
      if (n == 2 && std::string(f.name) == "flags") ids[1] = 0;
      items = ids;
    } else {
      const char** texts = x.Array<const char*>(n);
      texts[0] = x.Text(std::string(f.name) + "0");
      items = texts;
    }
    std::memcpy(rec + f.countOffset, &n, sizeof n);
    std::memcpy(rec + f.offset, &items, sizeof items);
  }
}

class AdaptersListsTest : public SessionFixture {
 protected:
  void SetUp() override {
    Settings(ControlhostAt(server_));
    ScriptAll();
  }

  template <class Req, class Resp>
  void Script(const wire::Op<Req, Resp>& op) {
    server_.On(op, [this, op](const Req& req, Resp& resp, Exchange& x) {
      seen_[op.requestId] = Fields(req);
      if (answer_ == Answer::kError) {
        resp.hdr.errorCode = 7;
        resp.hdr.errorText = "list refused";
      } else if (answer_ != Answer::kEmpty) {
        Fill(wire::Wire<Resp>::schema, &resp, x, answer_);
      }
    });
  }

  void ScriptAll() {
    Script(msg::kGetProvidersList);
    Script(msg::kGetAppIdList);
    Script(msg::kGetOrbitList);
    Script(msg::kGetClientList);
    Script(msg::kGetClientListOfType);
    Script(msg::kGetApplicationTypes);
    Script(msg::kGetInstanceList);
    Script(msg::kGetBackupSetList);
    Script(msg::kGetSubclientList);
    Script(msg::kGetAllSubclientList);
    Script(msg::kGetSiblingSubclientList);
    Script(msg::kGetClientListByAppType);
    Script(msg::kGetClientListByAppGroup);
    Script(msg::kGetAppIdListByArchId);
    Script(msg::kGetClientsByClientGroup);
    Script(msg::kGetClientGroupList);
    Script(msg::kGetClientGroupsOfClient);
    Script(msg::kGetClientListWithValues);
    Script(msg::kGetExdmDomainList);
    Script(msg::kGetCloudList);
    Script(msg::kGetCloudClientList);
  }

  // One list operation: its request id, the fields it must send, the call (on lists that hold
  // one member each: 7, "x", false), and its out-lists after a two-member answer.
  struct Case {
    const char* name;
    uint32_t requestId;
    std::string sent;
    // Calls the operation; renders its out-lists into `out`, "|" between lists.
    std::function<int(std::string& err, std::string& out)> call;
    std::string afterTwo;
    bool hasParallelArrays = true;
  };

  std::vector<Case> Cases() {
    using L = std::list<unsigned long>;
    using N = std::list<std::string>;
    using F = std::list<bool>;
    AdaptersInterfaceNet& a = adapters_;
    return {
        {"getProvidersList", 0x3400019c, "selector=5",
         [&a](std::string& e, std::string& out) {
           L ids{7}, values{7};
           N names{"x"}, texts{"x"};
           F flags{false};
           int s = a.getProvidersList(ids, names, texts, flags, values, e, 5, nullptr);
           out = Join(ids) + "|" + Join(names) + "|" + Join(texts) + "|" + Join(flags) + "|" +
                 Join(values);
           return s;
         },
         "7,30,31|x,names0,|x,texts0,|0,1,0|7,50,51"},
        {"getAppIdList", 0x3400005f,
         "selector1=1 selector2=2 selector3=3 selector4=4 selector5=5 flag=1",
         [&a](std::string& e, std::string& out) {
           N ids{"x"};
           int s = a.getAppIdList(ids, e, 1, 2, 3, 4, 5, nullptr, true);
           out = Join(ids);
           return s;
         },
         "x,texts0,", false},
        {"getOrbitList", 0x34000061, "selector=9 option=0",
         [&a](std::string& e, std::string& out) {
           L ids{7};
           N names{"x"};
           int s = a.getOrbitList(ids, names, e, 9, nullptr, false);
           out = Join(ids) + "|" + Join(names);
           return s;
         },
         "7,10,11|x,names0,"},
        {"getClientList(selector)", 0x34000102, "selector=9 option=4294967295",
         [&a](std::string& e, std::string& out) {
           L ids{7};
           N names{"x"};
           int s = a.getClientList(ids, names, e, 9, nullptr, -1);  // an int flag: its bits
           out = Join(ids) + "|" + Join(names);
           return s;
         },
         "7,10,11|x,names0,"},
        {"getClientListOfType", 0x34000075, "selector1=3 selector2=4 flag=1",
         [&a](std::string& e, std::string& out) {
           L ids{7};
           N names{"x"};
           int s = a.getClientListOfType(ids, names, e, 3, 4, nullptr, true);
           out = Join(ids) + "|" + Join(names);
           return s;
         },
         "7,10,11|x,names0,"},
        {"getApplicationTypes", 0x34000065, "selector=6 option=2",
         [&a](std::string& e, std::string& out) {
           L ids{7};
           N names{"x"};
           int s = a.getApplicationTypes(ids, names, e, 6, nullptr, 2);
           out = Join(ids) + "|" + Join(names);
           return s;
         },
         "7,10,11|x,names0,"},
        {"getInstanceList(a, b, c)", 0x34000067, "id1=1 id2=2 id3=3 flag=5",
         [&a](std::string& e, std::string& out) {
           L ids{7};
           N names{"x"};
           int s = a.getInstanceList(ids, names, e, 1, 2, 3, nullptr, 5);
           out = Join(ids) + "|" + Join(names);
           return s;
         },
         "7,10,11|x,names0,"},
        {"getInstanceList(a, b): 0 in the middle", 0x34000067, "id1=1 id2=0 id3=2 flag=5",
         [&a](std::string& e, std::string& out) {
           L ids{7};
           N names{"x"};
           int s = a.getInstanceList(ids, names, e, 1, 2, nullptr, 5);
           out = Join(ids) + "|" + Join(names);
           return s;
         },
         "7,10,11|x,names0,"},
        {"getInstanceList(a, b, lists): 0 first", 0x34000067, "id1=0 id2=1 id3=2 flag=5",
         [&a](std::string& e, std::string& out) {
           L ids{7};
           N names{"x"};
           int s = a.getInstanceList(1, 2, ids, names, e, nullptr, 5);
           out = Join(ids) + "|" + Join(names);
           return s;
         },
         "7,10,11|x,names0,"},
        {"getBackupSetList", 0x34000069, "id1=1 id2=2 id3=3 flag=0",
         [&a](std::string& e, std::string& out) {
           L ids{7};
           N names{"x"};
           F flags{false};
           int s = a.getBackupSetList(ids, names, flags, e, 1, 2, 3, nullptr, 0);
           out = Join(ids) + "|" + Join(names) + "|" + Join(flags);
           return s;
         },
         "7,10,11|x,names0,|0,1,0"},
        {"getSubclientList(flags)", 0x3400006b, "id1=1 id2=2 flag=1",
         [&a](std::string& e, std::string& out) {
           L ids{7};
           N names{"x"};
           F flags{false};
           int s = a.getSubclientList(ids, names, flags, e, 1, 2, nullptr, 1);
           out = Join(ids) + "|" + Join(names) + "|" + Join(flags);
           return s;
         },
         "7,10,11|x,names0,|0,1,0"},
        {"getSubclientList(four ids)", 0x340000ce, "id1=1 id2=2 id3=3 id4=4 flag=1",
         [&a](std::string& e, std::string& out) {
           L ids{7};
           N names{"x"};
           int s = a.getSubclientList(ids, names, e, 1, 2, 3, 4, nullptr, 1);
           out = Join(ids) + "|" + Join(names);
           return s;
         },
         "7,10,11|x,names0,"},
        {"getSiblingSubclientList", 0x3400006d, "subclientId=42 flag=1",
         [&a](std::string& e, std::string& out) {
           L ids{7};
           N names{"x"};
           unsigned long v[5] = {9, 9, 9, 9, 9};
           int s = a.getSiblingSubclientList(42, ids, names, v[0], v[1], v[2], v[3], v[4], e,
                                             nullptr, true);
           out = Join(ids) + "|" + Join(names) + "|" + Join(L(v, v + 5));
           return s;
         },
         "7,10,11|x,names0,|100,101,102,103,104"},
        {"getClientListByAppType", 0x34000079, "selector1=3 selector2=4",
         [&a](std::string& e, std::string& out) {
           L ids{7};
           N names{"x"};
           int s = a.getClientListByAppType(ids, names, e, 3, 4, nullptr);
           out = Join(ids) + "|" + Join(names);
           return s;
         },
         "7,10,11|x,names0,"},
        {"getClientListByAppGroup", 0x3400022e, "selector1=3 selector2=4",
         [&a](std::string& e, std::string& out) {
           L ids{7};
           N names{"x"};
           int s = a.getClientListByAppGroup(ids, names, e, 3, 4, nullptr);
           out = Join(ids) + "|" + Join(names);
           return s;
         },
         "7,10,11|x,names0,"},
        {"getApplications", 0x3400006f, "id1=8 id2=9",
         [&a](std::string& e, std::string& out) {
           N ids{"x"};
           bool untouched = true;
           int s = a.getApplications(ids, 8, 9, untouched, e, nullptr);
           out = Join(ids) + "|" + (untouched ? "true" : "written");
           return s;
         },
         "x,texts0,|true", false},
        {"getClientList(group)", 0x34000293, "id1=1 id2=2 flag=3",
         [&a](std::string& e, std::string& out) {
           L ids{7};
           N names{"x"};
           int s = a.getClientList(ids, names, e, 1, 2, nullptr, 3);
           out = Join(ids) + "|" + Join(names);
           return s;
         },
         "7,10,11|x,names0,"},
        {"getClientGroupList(selector)", 0x34000297, "selector=5 option=1",
         [&a](std::string& e, std::string& out) {
           L ids{7};
           N names{"x"};
           int s = a.getClientGroupList(ids, names, e, 5, nullptr, 1);
           out = Join(ids) + "|" + Join(names);
           return s;
         },
         "7,10,11|x,names0,"},
        {"getClientGroupList(a, b)", 0x34000301, "id1=5 id2=6 flag=1",
         [&a](std::string& e, std::string& out) {
           L ids{7};
           N names{"x"};
           int s = a.getClientGroupList(ids, names, e, 5, 6, nullptr, 1);
           out = Join(ids) + "|" + Join(names);
           return s;
         },
         "7,10,11|x,names0,"},
        {"getClientList(values): the selector is always 2", 0x340000f4, "selector=2 option=1",
         [&a](std::string& e, std::string& out) {
           L ids{7}, values{7};
           N names{"x"};
           int s = a.getClientList(ids, names, values, e, nullptr, true);
           out = Join(ids) + "|" + Join(names) + "|" + Join(values);
           return s;
         },
         "7,10,11|x,names0,|7,20,21"},
        {"getExDMClientDomainList", 0x340000fa, "domain=\"LAB\"",
         [&a](std::string& e, std::string& out) {
           L l1{7}, l2{7}, l3{7}, l4{7};
           N s1{"x"}, s2{"x"};
           int s = a.getExDMClientDomainList("LAB", l1, l2, l3, l4, s1, s2, e, nullptr, true);
           out = Join(l1) + "|" + Join(l2) + "|" + Join(l3) + "|" + Join(l4) + "|" + Join(s1) +
                 "|" + Join(s2);
           return s;
         },
         "7,10,11|7,20,21|7,30,31|7,40,41|x,texts10,|x,texts20,"},
        {"getCloudList", 0x3400026f, "selector=7",
         [&a](std::string& e, std::string& out) {
           L ids{7};
           N names{"x"};
           int s = a.getCloudList(ids, names, 7, e, nullptr);
           out = Join(ids) + "|" + Join(names);
           return s;
         },
         "7,10,11|x,names0,"},
        {"getCloudClientList", 0x3400011e, "cloudId=9",
         [&a](std::string& e, std::string& out) {
           L ids1{7}, ids2{7};
           int s = a.getCloudClientList(ids1, ids2, 9, e, nullptr);
           out = Join(ids1) + "|" + Join(ids2);
           return s;
         },
         "7,10,11|7,20,21"},
    };
  }

  ScriptServer server_;
  AdaptersInterfaceNet adapters_;
  Answer answer_ = Answer::kTwo;
  std::map<uint32_t, std::string> seen_;
};

TEST_F(AdaptersListsTest, EachQuerySendsItsArgumentsInOrderAndAppendsTheAnswer) {
  for (const Case& c : Cases()) {
    SCOPED_TRACE(c.name);
    seen_.clear();
    std::string err = "before", out;
    EXPECT_EQ(c.call(err, out), 0) << err;
    EXPECT_EQ(err, "before") << "success leaves the error string";
    EXPECT_EQ(seen_[c.requestId], c.sent);
    EXPECT_EQ(out, c.afterTwo);
  }
}

// The first member of every list as the calls set it up: what an answer that adds nothing, or
// fails, must leave.
std::string FirstMembersOnly(const std::string& afterTwo) {
  std::string out;
  size_t start = 0;
  for (;;) {
    size_t bar = afterTwo.find('|', start);
    std::string list = afterTwo.substr(start, bar == std::string::npos ? bar : bar - start);
    out += list.substr(0, list.find(','));
    if (bar == std::string::npos) break;
    out += '|';
    start = bar + 1;
  }
  return out;
}

TEST_F(AdaptersListsTest, AnEmptyAnswerLeavesTheListsAndStillWritesTheSiblingValues) {
  answer_ = Answer::kEmpty;
  for (const Case& c : Cases()) {
    SCOPED_TRACE(c.name);
    std::string err, out;
    EXPECT_EQ(c.call(err, out), 0) << err;
    std::string expected = FirstMembersOnly(c.afterTwo);
    if (c.requestId == msg::kGetSiblingSubclientList.requestId) expected = "7|x|0,0,0,0,0";
    EXPECT_EQ(out, expected);
  }
}

TEST_F(AdaptersListsTest, AServerErrorReturnsItsCodeAndTextAndAppendsNothing) {
  answer_ = Answer::kError;
  for (const Case& c : Cases()) {
    SCOPED_TRACE(c.name);
    std::string err, out;
    EXPECT_EQ(c.call(err, out), 7);
    EXPECT_EQ(err, "list refused");
    std::string expected = FirstMembersOnly(c.afterTwo);
    if (c.requestId == msg::kGetSiblingSubclientList.requestId) expected = "7|x|9,9,9,9,9";
    EXPECT_EQ(out, expected);
  }
}

// A peer that sends fewer names (flags, values, ...) than ids must not make the walk read past
// an array: the decoder refuses the answer and the caller's lists stay as they were.
TEST_F(AdaptersListsTest, AnArrayShorterThanItsDriverIsRefusedAndAppendsNothing) {
  answer_ = Answer::kShort;
  for (const Case& c : Cases()) {
    if (!c.hasParallelArrays) continue;
    SCOPED_TRACE(c.name);
    std::string err, out;
    EXPECT_EQ(c.call(err, out), kKpErrProtocol);
    EXPECT_NE(err.find("holds 1 elements, fewer than the 2 of"), std::string::npos) << err;
    EXPECT_NE(err.find("which it is read beside"), std::string::npos) << err;
    std::string expected = FirstMembersOnly(c.afterTwo);
    if (c.requestId == msg::kGetSiblingSubclientList.requestId) expected = "7|x|9,9,9,9,9";
    EXPECT_EQ(out, expected);
  }
  // The driver of the providers' list comes after two of the arrays it drives.
  std::list<unsigned long> ids, values;
  std::list<std::string> names, texts;
  std::list<bool> flags;
  std::string err;
  server_.On(msg::kGetProvidersList,
             [](const GetProvidersListReq&, GetProvidersListResp& r, Exchange& x) {
               r.idCount = r.flagCount = r.valueCount = r.textCount = 3;
               r.ids = x.Array<uint64_t>(3);
               r.flags = x.Array<uint64_t>(3);
               r.values = x.Array<uint64_t>(3);
               r.texts = x.Array<const char*>(3);
               r.nameCount = 2;
               r.names = x.Array<const char*>(2);
             });
  EXPECT_EQ(adapters_.getProvidersList(ids, names, texts, flags, values, err, 0, nullptr),
            kKpErrProtocol);
  EXPECT_NE(err.find("GetProvidersListResp.names: holds 2 elements, fewer than the 3 of ids"),
            std::string::npos)
      << err;
  EXPECT_TRUE(ids.empty() && names.empty() && texts.empty() && flags.empty() && values.empty());
}

TEST_F(AdaptersListsTest, ATransportFailureReturnsItsStatusAndAppendsNothing) {
  server_.DropBeforeAnswer(msg::kGetBackupSetList.requestId);
  std::list<unsigned long> ids{7};
  std::list<std::string> names;
  std::list<bool> flags;
  std::string err;
  EXPECT_EQ(adapters_.getBackupSetList(ids, names, flags, err, 1, 2, 3, nullptr, 0),
            kKpErrDisconnected);
  EXPECT_EQ(err.rfind("[ClientSessionWrapper::receive] Error receiving message.", 0), 0u) << err;
  EXPECT_EQ(ids, (std::list<unsigned long>{7}));
  EXPECT_TRUE(names.empty() && flags.empty());
}

TEST_F(AdaptersListsTest, OperationsAnsweredLocallySendNothing) {
  using L = std::list<unsigned long>;
  using N = std::list<std::string>;
  AdaptersInterfaceNet& a = adapters_;
  L ids{1};
  N names{"n"};
  std::list<int> ints;
  unsigned long u = 5;
  long l = 5;
  std::string text = "t";
  bool b = true;
  // Each call's status, given the error string it writes (kept when it writes none).
  std::vector<std::pair<const char*, std::function<int(std::string&)>>> notProvided = {
      {"getBackupSetList(int)",
       [&](std::string& e) {
         return a.getBackupSetList(ids, names, ints, e, 1, 2, 3, nullptr, 0);
       }},
      {"GetAppTypeNameIdPair",
       [&](std::string& e) { return a.GetAppTypeNameIdPair(ids, names, e, nullptr); }},
      {"getAssociatedSubclient",
       [&](std::string& e) { return a.getAssociatedSubclient(1, u, e, nullptr); }},
      {"getSnapshotWorkflowList",
       [&](std::string& e) { return a.getSnapshotWorkflowList(ids, names, e, nullptr); }},
      {"controlALertsSystem",
       [&](std::string& e) { return a.controlALertsSystem(true, e, nullptr); }},
      {"getEncryptedClientCount",
       [&](std::string& e) { return a.getEncryptedClientCount(u, e, nullptr); }},
      {"getMultipleStreamSublientCount",
       [&](std::string& e) { return a.getMultipleStreamSublientCount(u, e, nullptr); }},
      {"getDefaultSubclient",
       [&](std::string& e) { return a.getDefaultSubclient(1, 2, 3, u, e, nullptr); }},
      {"getPhysicalClientIdfromRACClientId",
       [&](std::string& e) { return a.getPhysicalClientIdfromRACClientId(1, u, e, nullptr); }},
      {"getStartDay", [&](std::string& e) { return a.getStartDay(1, 2, l, e, nullptr); }},
      {"getEndDay", [&](std::string& e) { return a.getEndDay(1, 2, l, e, nullptr); }},
      {"getDay", [&](std::string& e) { return a.getDay(1, 2, l, e, nullptr); }},
      {"getLastWeekDay", [&](std::string& e) { return a.getLastWeekDay(1, 2, l, e, nullptr); }},
      {"getLastWeekDayOfMonth",
       [&](std::string& e) { return a.getLastWeekDayOfMonth(1, 2, 3, l, e, nullptr); }},
      {"getLastWeekend", [&](std::string& e) { return a.getLastWeekend(1, 2, l, e, nullptr); }},
      {"getNthWeekDay", [&](std::string& e) { return a.getNthWeekDay(1, 2, 3, 4, l, e, nullptr); }},
      {"getNthWeekendDay",
       [&](std::string& e) { return a.getNthWeekendDay(1, 2, 3, l, e, nullptr); }},
      {"getStartDayTime", [&](std::string& e) { return a.getStartDayTime(1, 2, l, e, nullptr); }},
      {"getCustomCalList",
       [&](std::string& e) { return a.getCustomCalList(ids, names, e, nullptr); }},
      {"setCustomCalList",
       [&](std::string& e) { return a.setCustomCalList(ids, names, e, nullptr); }},
      {"removeCustomCalList",
       [&](std::string& e) { return a.removeCustomCalList(ids, e, nullptr); }},
      {"getCustomCalMonthList",
       [&](std::string& e) { return a.getCustomCalMonthList(1, ids, e, nullptr); }},
      {"setCustomCalMonthList",
       [&](std::string& e) { return a.setCustomCalMonthList(1, ids, e, nullptr); }},
      {"removeCustomCalMonthList",
       [&](std::string& e) { return a.removeCustomCalMonthList(1, ids, e, nullptr); }},
      {"getBackupSetContent",
       [&](std::string& e) { return a.getBackupSetContent(1, names, e, nullptr); }},
      {"moveInstance", [&](std::string& e) { return a.moveInstance(1, 2, e, nullptr); }},
      {"getSubclientDeletedTime",
       [&](std::string& e) { return a.getSubclientDeletedTime(1, l, e, nullptr); }},
      {"setCloudClientList",
       [&](std::string& e) { return a.setCloudClientList(1, ids, e, nullptr); }},
      {"addCloudClient", [&](std::string& e) { return a.addCloudClient(1, 2, e, nullptr); }},
      {"delCloudClient", [&](std::string& e) { return a.delCloudClient(1, 2, e, nullptr); }},
      {"deleteCloud", [&](std::string& e) { return a.deleteCloud(1, e, nullptr); }},
      {"delComponentProp", [&](std::string& e) { return a.delComponentProp(1, "p", e, nullptr); }},
      {"getExchMailBoxHistory",
       [&](std::string& e) { return a.getExchMailBoxHistory(1, "m", names, e, nullptr); }},
      {"getAllClientNetHostName",
       [&](std::string& e) { return a.getAllClientNetHostName(ids, names, e, nullptr); }},
      {"lookupkeys", [&](std::string& e) { return a.lookupkeys(1, names, e, nullptr); }},
      {"updatekeys", [&](std::string& e) { return a.updatekeys(1, names, e, nullptr); }},
  };
  std::vector<std::pair<const char*, std::function<int(std::string&)>>> silent = {
      {"getEntitiesList",
       [&](std::string& e) { return a.getEntitiesList(1, ids, names, e, nullptr); }},
      {"getEntityMembersList",
       [&](std::string& e) { return a.getEntityMembersList(1, ids, e, nullptr); }},
      {"setEntityMembersList",
       [&](std::string& e) { return a.setEntityMembersList(1, ids, e, nullptr); }},
      {"removeEntityMembersList",
       [&](std::string& e) { return a.removeEntityMembersList(1, ids, e, nullptr); }},
      {"getAssociatedEntityInfo",
       [&](std::string& e) { return a.getAssociatedEntityInfo(1, 2, ids, names, e, nullptr); }},
      {"getCostCategories",
       [&](std::string& e) { return a.getCostCategories(ids, names, e, nullptr); }},
      {"setWorkFlowOperation",
       [&](std::string& e) { return a.setWorkFlowOperation(1, "op", e, nullptr); }},
      {"LookupFirewallRelationships",
       [&](std::string& e) { return a.LookupFirewallRelationships(1, ids, ids, e, nullptr); }},
      {"deletePlatformInfo", [&](std::string& e) { return a.deletePlatformInfo(1, e, nullptr); }},
      {"getPlatformInfo", [&](std::string& e) { return a.getPlatformInfo(1, text, e, nullptr); }},
      {"setPlatformInfo", [&](std::string& e) { return a.setPlatformInfo(1, "i", e, nullptr); }},
      {"getCIEntityTagListBlob",
       [&](std::string& e) { return a.getCIEntityTagListBlob(1, 2, text, e, nullptr); }},
      {"configRepsetForDDRSnapSubclient",
       [&](std::string& e) { return a.configRepsetForDDRSnapSubclient(1, 2, e, nullptr); }},
      {"getJobErrorRules", [&](std::string& e) { return a.getJobErrorRules(text, e); }},
      {"setJobErrorRules", [&](std::string& e) { return a.setJobErrorRules("r", e, nullptr); }},
      {"configureContentAnalyzerCloud",
       [&](std::string& e) { return a.configureContentAnalyzerCloud(1, "s", e, nullptr); }},
      {"deleteAssocIdForEntity",
       [&](std::string& e) { return a.deleteAssocIdForEntity(1, 2, e, nullptr); }},
      {"getCredentialIdFromAssocIdForEntity",
       [&](std::string& e) { return a.getCredentialIdFromAssocIdForEntity(1, 2, u, e, nullptr); }},
      {"setAssocIdforEntity",
       [&](std::string& e) { return a.setAssocIdforEntity(1, 2, 3, e, nullptr); }},
      {"getRightsOnCredentialsForUser",
       [&](std::string& e) { return a.getRightsOnCredentialsForUser(1, 2, u, e, nullptr); }},
      {"getCredentialNameForId",
       [&](std::string& e) { return a.getCredentialNameForId(1, text, e, nullptr); }},
  };
  std::vector<std::pair<const char*, std::function<int(std::string&)>>> noOps = {
      {"setOpRules", [&](std::string& e) { return a.setOpRules(1, names, e, nullptr); }},
      {"setOpRule(text)", [&](std::string& e) { return a.setOpRule(1, "r", e, nullptr); }},
      {"setOpRule(id)", [&](std::string& e) { return a.setOpRule(1, 2, true, e, nullptr); }},
      {"deleteOpRules", [&](std::string& e) { return a.deleteOpRules(1, e, nullptr); }},
      {"GetUTCToClientLocalTime",
       [&](std::string& e) { return a.GetUTCToClientLocalTime(1, 2, l, e, nullptr); }},
      {"getInstanceList(ids only)",
       [&](std::string& e) { return a.getInstanceList(ids, 1, 2, e, nullptr); }},
  };
  auto run = [](auto& calls, int status, const char* err) {
    for (auto& [name, call] : calls) {
      std::string e = "untouched";
      EXPECT_EQ(call(e), status) << name;
      EXPECT_EQ(e, err) << name;
    }
  };
  run(notProvided, 0xa0010, "Api not implemented.");
  run(silent, 0xa0010, "untouched");
  run(noOps, 0, "untouched");
  EXPECT_EQ(ids, (L{1}));
  EXPECT_EQ(names, (N{"n"}));
  EXPECT_EQ(u, 5u);
  EXPECT_EQ(l, 5);
  EXPECT_EQ(text, "t");
  EXPECT_TRUE(b);
  EXPECT_EQ(server_.core().ConnectionsAccepted(), 0u) << "nothing reached the server";
}

}  // namespace
