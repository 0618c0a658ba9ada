// SCInterfaceNet against the scriptable server: what each operation sends, what it copies out,
// what it leaves alone when a step fails, and the operations answered without an exchange.
#include "interfaces/SCInterfaceNet.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "appmgr/AppMgrDefs.h"
#include "tests/session/SessionFixture.h"

namespace {

namespace msg = appmgr::msg;
using appmgr::server::Exchange;

class SCTest : public SessionFixture {
 protected:
  void SetUp() override { Settings(ControlhostAt(server_)); }
  template <class Req, class Resp>
  void Fail(const appmgr::wire::Op<Req, Resp>& op, int32_t code, const char* text) {
    server_.On(op, [code, text](const Req&, Resp& resp, Exchange&) {
      resp.hdr.errorCode = code;
      resp.hdr.errorText = text;
    });
  }
  // Whether an error line with exactly this label and text was logged.
  bool LoggedError(const std::string& label, const std::string& text) {
    for (const EvLogRecord& r : log_.Records()) {
      if (r.error && r.level == 0 && r.label == label && r.text == text) return true;
    }
    return false;
  }
  ScriptServer server_;
  SCInterfaceNet sc_;
  std::string err_;
};

TEST_F(SCTest, LookupByIdCopiesEveryFieldAndKeepsStringsTheServerLeftNull) {
  server_.On(msg::kScLookup, [](const GenericLookupReq& req, AppGetSubClientPropertiesResp& resp,
                                Exchange& x) {
    resp.subclientId = 555;  // never copied
    resp.value = -4;
    resp.attr2 = 2;
    resp.attr3 = 3;
    resp.attr4 = 4;
    if (req.id == 1) {
      resp.name = x.Text("logs");
      resp.text = x.Text("text");
    }
  });
  std::string name = "before", text = "before";
  long value = 0;
  unsigned long a2 = 0, a3 = 0, a4 = 0;
  ASSERT_EQ(sc_.lookup(1, name, value, a2, a3, a4, text, err_, nullptr), 0);
  EXPECT_EQ(name + "/" + text, "logs/text");
  EXPECT_EQ(value, -4);
  EXPECT_EQ(std::vector<unsigned long>({a2, a3, a4}), std::vector<unsigned long>({2, 3, 4}));

  ASSERT_EQ(sc_.lookup(2, name, value, a2, a3, a4, text, err_, nullptr), 0);
  EXPECT_EQ(name, "logs") << "a null name keeps the caller's name";
  EXPECT_EQ(text, "text") << "a null text keeps the caller's text";
}

TEST_F(SCTest, LookupByGuidSendsACopyOfTheGuidAndReturnsTheIdLast) {
  std::string seenGuid;
  server_.On(msg::kScLookupByGuid, [&](const SCGUIDLookupReq& req,
                                       AppGetSubClientPropertiesResp& resp, Exchange& x) {
    seenGuid = req.guid;
    resp.subclientId = 1022;
    resp.value = 9;
    resp.name = nullptr;
    resp.text = x.Text("not copied");
  });
  std::string name = "kept";
  long value = 0;
  unsigned long a2 = 7, a3 = 7, a4 = 7, id = 0;
  ASSERT_EQ(sc_.lookup(std::string("9b1e-1022"), name, value, a2, a3, a4, id, err_, nullptr), 0);
  EXPECT_EQ(seenGuid, "9b1e-1022");
  EXPECT_EQ(id, 1022u);
  EXPECT_EQ(value, 9);
  EXPECT_EQ(a2, 0u);
  EXPECT_EQ(name, "kept");
  EXPECT_EQ(server_.Count(msg::kScLookup.requestId), 0u) << "the GUID look-up has its own id";
}

TEST_F(SCTest, AServerErrorReturnsItsCodeAndTextAndLeavesEveryOutput) {
  Fail(msg::kScLookup, 1, "subclient 42 does not exist");
  std::string name = "keep", text = "keep";
  long value = 5;
  unsigned long a2 = 9, a3 = 9, a4 = 9;
  EXPECT_EQ(sc_.lookup(42, name, value, a2, a3, a4, text, err_, nullptr), 1);
  EXPECT_EQ(err_, "subclient 42 does not exist");
  EXPECT_EQ(name + text, "keepkeep");
  EXPECT_EQ(value, 5);
  EXPECT_EQ(a2 + a3 + a4, 27u);

  Fail(msg::kScOverlapping, 4, "database is locked");
  std::list<unsigned long> ids{1};
  EXPECT_EQ(sc_.getOverlappingSubclientList(42, ids, err_, nullptr), 4);
  EXPECT_EQ(ids, std::list<unsigned long>{1});

  Fail(msg::kScBackupHost, 1, "x");
  unsigned long host = 77;
  EXPECT_EQ(sc_.getBackupHost(42, host, err_, nullptr), 1);
  EXPECT_EQ(host, 77u);
}

TEST_F(SCTest, UpdateSendsIdValueAndNameOnly) {
  GenericUpdateReq2 seen;
  std::string seenName;
  server_.On(msg::kScUpdate, [&](const GenericUpdateReq2& req, GenericResp&, Exchange&) {
    seen = req;
    seenName = req.name;
  });
  long value = -12;
  ASSERT_EQ(sc_.update(8, "renamed", value, true, 1, 2, err_, nullptr), 0);
  EXPECT_EQ(seen.id, 8u);
  EXPECT_EQ(seen.value, -12);
  EXPECT_EQ(seenName, "renamed");
  EXPECT_EQ(value, -12);
}

struct Content : ContentCallBack {
  std::vector<std::string> calls;
  void setFlag(bool flag) override { calls.push_back(flag ? "flag:true" : "flag:false"); }
  void addContent(unsigned long type, const std::string& text) override {
    calls.push_back(std::to_string(type) + ":" + text);
  }
};

TEST_F(SCTest, InitContentReportsTheFlagFirstThenEntriesUpToTheHighestType) {
  GenericInitContentReq seen;
  server_.On(msg::kScInitContent, [&](const GenericInitContentReq& req,
                                      GenericInitContentResp2& resp, Exchange& x) {
    seen = req;
    resp.contentFlag = req.id == 1 ? 1 : 2;
    resp.count = 5;
    resp.entries = x.Array<AppMgrContent>(5);
    resp.entries[0] = {x.Text("/etc"), 1};
    resp.entries[1] = {x.Text("skipped"), KP_CONTENT_MAX_INDEX + 1};
    resp.entries[2] = {x.Text("at the limit"), KP_CONTENT_MAX_INDEX};
    resp.entries[3] = {x.Text("negative reads as huge"), -1};
    resp.entries[4] = {nullptr, 2};
  });
  Content cb;
  ASSERT_EQ(sc_.initContent(1, -3, err_, &cb, nullptr, true, 5, true), 0);
  EXPECT_EQ(seen.id, 1u);
  EXPECT_EQ(seen.value, -3);
  const std::string limit = std::to_string(KP_CONTENT_MAX_INDEX) + ":at the limit";
  EXPECT_EQ(cb.calls, (std::vector<std::string>{"flag:true", "1:/etc", limit, "2:"}));

  Content other;
  ASSERT_EQ(sc_.initContent(2, 0, err_, &other, nullptr, false, 0, false), 0);
  EXPECT_EQ(other.calls.front(), "flag:false") << "only a flag of exactly 1 is true";

  Fail(msg::kScInitContent, 1, "subclient 3 does not exist");
  Content none;
  EXPECT_EQ(sc_.initContent(3, 0, err_, &none, nullptr, false, 0, false), 1);
  EXPECT_TRUE(none.calls.empty()) << "a failure calls nothing, not even the flag";
}

// What one content update put on the wire.
struct SeenUpdate {
  std::vector<std::string> add, remove;
  std::vector<int64_t> types;
  bool nullAdd = false, nullRemove = false;
  uint32_t flags[3] = {};
};

TEST_F(SCTest, UpdateContentSendsBothListsWithTheOneTypeAndTheThreeFlags) {
  std::vector<SeenUpdate> seen;
  server_.On(msg::kScUpdateContent, [&](const GenericUpdateContentReq& req, GenericResp&,
                                        Exchange&) {
    SeenUpdate s;
    for (uint32_t i = 0; i < req.count1; ++i) {
      s.add.push_back(req.content1[i].text);
      s.types.push_back(req.content1[i].type);
    }
    for (uint32_t i = 0; i < req.count2; ++i) {
      s.remove.push_back(req.content2[i].text);
      s.types.push_back(req.content2[i].type);
    }
    s.nullAdd = req.content1 == nullptr;
    s.nullRemove = req.content2 == nullptr;
    s.flags[0] = req.flag1;
    s.flags[1] = req.flag2;
    s.flags[2] = req.flag3;
    seen.push_back(std::move(s));
  });
  std::string a = "/a", b = "/b", c = "/c";
  ASSERT_EQ(sc_.updateContent(4, 7, {&a, &b}, {&c}, true, false, true, err_, nullptr, nullptr), 0);
  ASSERT_EQ(sc_.updateContent(4, -2, {}, {}, false, true, false, err_, nullptr, nullptr), 0);
  ASSERT_EQ(seen.size(), 2u) << "an empty update still makes its exchange";
  EXPECT_EQ(seen[0].add, (std::vector<std::string>{"/a", "/b"}));
  EXPECT_EQ(seen[0].remove, (std::vector<std::string>{"/c"}));
  EXPECT_EQ(seen[0].types, (std::vector<int64_t>{7, 7, 7}));
  EXPECT_EQ(std::vector<uint32_t>(seen[0].flags, seen[0].flags + 3), (std::vector<uint32_t>{1, 0, 1}));
  EXPECT_TRUE(seen[1].add.empty() && seen[1].remove.empty());
  EXPECT_TRUE(seen[1].nullAdd && seen[1].nullRemove) << "empty lists travel as null arrays";
  EXPECT_EQ(seen[1].flags[1], 1u);
}

TEST_F(SCTest, UpdateContentOfTenThousandEntriesIsOneRequest) {
  uint32_t count = 0;
  std::string last;
  server_.On(msg::kScUpdateContent, [&](const GenericUpdateContentReq& req, GenericResp&,
                                        Exchange&) {
    count = req.count1;
    last = req.content1[req.count1 - 1].text;
  });
  std::vector<std::string> paths(10000);
  std::list<std::string*> add;
  for (size_t i = 0; i < paths.size(); ++i) {
    paths[i] = "/data/dir" + std::to_string(i);
    add.push_back(&paths[i]);
  }
  ASSERT_EQ(sc_.updateContent(4, 1, add, {}, false, false, false, err_, nullptr, nullptr), 0) << err_;
  EXPECT_EQ(server_.Count(msg::kScUpdateContent.requestId), 1u);
  EXPECT_EQ(count, 10000u);
  EXPECT_EQ(last, "/data/dir9999");
}

TEST_F(SCTest, ThrowingOperationsLogTheFailureUnderTheirOwnLabel) {
  Fail(msg::kScUpdateContent, 3, "entry 1 of the content to add to subclient 4 is empty");
  std::string empty;
  EXPECT_EQ(sc_.updateContent(4, 1, {&empty}, {}, false, false, false, err_, nullptr, nullptr), 3);
  EXPECT_EQ(err_, "entry 1 of the content to add to subclient 4 is empty");
  EXPECT_TRUE(LoggedError("SCInterfaceNet::updateContent", err_));

  Fail(msg::kScSetStoreAssociation, 1, "backup set 102 has no store named 'x'");
  EXPECT_EQ(sc_.SetStoreAssociation(4, {"x"}, err_, nullptr), 1);
  EXPECT_TRUE(LoggedError("SCInterfaceNet::SetStoreAssociation", err_));

  Fail(msg::kScSetDirectoryAssociation, 2, "conflict");
  EXPECT_EQ(sc_.SetActiveDirectoryAssociation(4, {"ou"}, err_, nullptr), 2);
  EXPECT_TRUE(LoggedError("SCInterfaceNet::SetActiveDirectoryAssociation", "conflict"));

  Fail(msg::kScSetProperties, 3, "bad property");
  ApplProperty p("n", 1, "v");
  EXPECT_EQ(sc_.setProperties(4, {&p}, false, err_, nullptr, nullptr), 3);
  EXPECT_TRUE(LoggedError("SCInterfaceNet::setProperties", "bad property"));
}

TEST_F(SCTest, AssociationsSendTheNamesInOrderUnderTheirOwnIds) {
  std::vector<std::string> stores, directories;
  auto collect = [](std::vector<std::string>& out) {
    return [&out](const auto& req, GenericResp&, Exchange&) {
      out.push_back(std::to_string(req.id) + ":" + std::to_string(req.count) +
                    (req.names == nullptr ? ":null" : ""));
      for (uint32_t i = 0; i < req.count; ++i) out.push_back(req.names[i].text);
    };
  };
  server_.On(msg::kScSetStoreAssociation, collect(stores));
  server_.On(msg::kScSetDirectoryAssociation, collect(directories));
  ASSERT_EQ(sc_.SetStoreAssociation(5, {"primary", "archive"}, err_, nullptr), 0);
  ASSERT_EQ(sc_.SetActiveDirectoryAssociation(5, {}, err_, nullptr), 0);
  EXPECT_EQ(stores, (std::vector<std::string>{"5:2", "primary", "archive"}));
  EXPECT_EQ(directories, (std::vector<std::string>{"5:0:null"}));
}

TEST_F(SCTest, ListResultsAppendToTheCallersLists) {
  server_.On(msg::kScOverlapping, [](const GetOverlappingSCListReq& req,
                                     GetOverlappingSCListResp& resp, Exchange& x) {
    if (req.id == 0) return;
    resp.count = 2;
    resp.ids = x.Array<uint64_t>(2);
    resp.ids[0] = 1061;
    resp.ids[1] = 1070;
  });
  server_.On(msg::kScReferenceCopies, [](const GetReferenceCopySCReq&, GetReferenceCopySCResp& resp,
                                         Exchange& x) {
    resp.count = 1;
    resp.copies = x.Array<RefCopySCInfo>(1);
    resp.copies[0].subclientId = 1051;
  });
  std::list<unsigned long> ids{5};
  ASSERT_EQ(sc_.getOverlappingSubclientList(1021, ids, err_, nullptr), 0);
  EXPECT_EQ(ids, (std::list<unsigned long>{5, 1061, 1070}));
  ASSERT_EQ(sc_.getOverlappingSubclientList(0, ids, err_, nullptr), 0);
  EXPECT_EQ(ids.size(), 3u);

  std::vector<RefCopySCInfo> copies(1);
  copies[0].subclientId = 9;
  ASSERT_EQ(sc_.getSmartCopySubclients(1022, copies, nullptr), 0);
  ASSERT_EQ(copies.size(), 2u);
  EXPECT_EQ(copies[1].subclientId, 1051u);
}

TEST_F(SCTest, PairDataSendsItsArgumentsPositionally) {
  GetFRdataPairPropReq get;
  server_.On(msg::kScGetPairData, [&](const GetFRdataPairPropReq& req, GetFRdataPairPropResp& resp,
                                      Exchange& x) {
    get = req;
    resp.value = 3;
    resp.text = x.Text("journal");
  });
  SetFRdataPairPropReq set;
  std::string setText;
  server_.On(msg::kScSetPairData, [&](const SetFRdataPairPropReq& req, GenericResp&, Exchange&) {
    set = req;
    setText = req.text;
  });
  unsigned long value = 0;
  std::string text;
  ASSERT_EQ(sc_.getFRPairData(11, 22, value, text, err_, 66, nullptr), 0);
  EXPECT_EQ(std::vector<uint64_t>({get.first, get.second, get.third}),
            std::vector<uint64_t>({11, 22, 66}));
  EXPECT_EQ(value, 3u);
  EXPECT_EQ(text, "journal");
  std::string newText = "snapshot";
  ASSERT_EQ(sc_.setFRPairData(11, 22, 33, newText, err_, true, nullptr), 0);
  EXPECT_EQ(std::vector<uint64_t>({set.first, set.second, set.third, set.flag}),
            std::vector<uint64_t>({11, 22, 33, 1}));
  EXPECT_EQ(setText, "snapshot");
}

TEST_F(SCTest, ExtensionsReplaceTheFileTypeOnlyOnSuccess) {
  std::string seen;
  server_.On(msg::kScFileTypeExtensions, [&](const GetExtensionsForFileTypeReq& req,
                                             GetExtensionsForFileTypeResp& resp, Exchange& x) {
    seen = req.fileType;
    resp.extensions = x.Text("doc,docx");
  });
  std::string inOut = "Office";
  ASSERT_EQ(sc_.getExtensionForFileType(inOut, nullptr), 0);
  EXPECT_EQ(seen, "Office");
  EXPECT_EQ(inOut, "doc,docx");

  Fail(msg::kScFileTypeExtensions, 1, "no extensions are known for file type 'Nothing'");
  std::string type = "Nothing";
  EXPECT_EQ(sc_.getExtensionForFileType(type, nullptr), 1);
  EXPECT_EQ(type, "Nothing");
}

TEST_F(SCTest, BackupSetContentFillsNumbersThreeToSevenOfAnOtherwiseZeroApplicationId) {
  GetBackupsetContentReq seen;
  server_.On(msg::kScBackupSetContent, [&](const GetBackupsetContentReq& req,
                                           GetBackupsetContentResp& resp, Exchange& x) {
    seen = req;
    seen.appId.hdr.hostName = nullptr;  // points into the exchange
    seen.hdr.hostName = nullptr;
    resp.count = 2;
    resp.ids = x.Array<uint64_t>(2);
    resp.ids[0] = 1021;
    resp.ids[1] = 1022;
    resp.text1 = x.Text("defaultBackupSet");
    resp.text2 = nullptr;
  });
  std::string t1, t2 = "before";
  std::vector<unsigned long> ids{1};
  ASSERT_EQ(sc_.getFSBackupsetContent(3, 10, 12, 102, 0, 1, true, t1, t2, ids, nullptr), 0);
  const AppIdInfoReq& a = seen.appId;
  EXPECT_EQ(std::vector<uint64_t>({a.number3, a.number4, a.number5, a.number6, a.number7}),
            std::vector<uint64_t>({3, 10, 12, 102, 0}));
  EXPECT_EQ(a.number0 + a.number1 + a.number2 + a.number8 + a.option, 0u);
  EXPECT_EQ(a.hdr.version + a.hdr.pid + a.hdr.threadId, 0u) << "the embedded header stays zero";
  EXPECT_TRUE(a.text0 == nullptr && a.text1 == nullptr && a.text2 == nullptr);
  EXPECT_EQ(seen.value, 1u);
  EXPECT_EQ(seen.flag, 1u);
  EXPECT_EQ(ids, (std::vector<unsigned long>{1, 1021, 1022}));
  EXPECT_EQ(t1, "defaultBackupSet");
  EXPECT_EQ(t2, "");

  Fail(msg::kScBackupSetContent, 1, "backup set 9 does not exist");
  EXPECT_EQ(sc_.getFSBackupsetContent(0, 0, 0, 9, 0, 0, false, t1, t2, ids, nullptr), 1);
  EXPECT_EQ(ids.size(), 3u);
  EXPECT_EQ(t1, "defaultBackupSet");
}

TEST_F(SCTest, LocallyAnsweredOperationsSendNothingAndTouchNoOutput) {
  server_.Stop();  // any attempt to exchange would now fail with a transport error
  std::list<AppToDataPathItem> paths{{1, "/keep"}};
  std::list<DataPairConflict> conflicts(1);
  unsigned long a = 4, b = 5;
  struct Case {
    const char* label;
    std::function<int(std::string&)> call;
  };
  const Case cases[] = {
      {"SCInterfaceNet::getCurrentSRMActionSubClient",
       [&](std::string& e) { return sc_.getCurrentSRMActionSubClient(a, b, e, nullptr); }},
      {"SCInterfaceNet::getSCdataPaths",
       [&](std::string& e) { return sc_.getSCdataPaths(1, paths, e, nullptr); }},
      {"SCInterfaceNet::updateSCdataPaths",
       [&](std::string& e) { return sc_.updateSCdataPaths(1, paths, e, nullptr); }},
      {"SCInterfaceNet::getFLRconflictGUIDS",
       [&](std::string& e) { return sc_.getFLRconflictGUIDS(1, 2, conflicts, e, nullptr); }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    std::string error;
    EXPECT_EQ(c.call(error), -1);
    EXPECT_EQ(error, "Feature Not Supported");
    EXPECT_TRUE(LoggedError(c.label, "Feature Not Supported"));
  }
  EXPECT_EQ(a + b, 9u);
  EXPECT_EQ(paths.size(), 1u);
  EXPECT_EQ(conflicts.size(), 1u);

  std::string groups = "unchanged";
  size_t linesBefore = log_.Records().size();
  EXPECT_EQ(sc_.setContentGroups(1, groups, nullptr), 655376);
  EXPECT_EQ(groups, "unchanged");
  EXPECT_EQ(log_.Records().size(), linesBefore) << "setContentGroups logs nothing";
}

}  // namespace
