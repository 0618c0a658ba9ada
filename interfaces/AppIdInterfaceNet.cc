#include "interfaces/AppIdInterfaceNet.h"

#include "appmgr/records/AppIdRecords.h"
#include "interfaces/Exchange.h"
#include "protocol/Messages.h"

using appmgr::iface::Exchange;
namespace msg = appmgr::msg;

namespace {

constexpr const char* kGetLabel = "AppIdInterfaceNet::getApplicationId";

void FillRequest(AppIdInfoReq& r, const AppIdInfo& info) {
  uint64_t* numbers[] = {&r.number0, &r.number1, &r.number2, &r.number3, &r.number4,
                         &r.number5, &r.number6, &r.number7, &r.number8};
  for (int i = 0; i < 9; ++i) *numbers[i] = info.number[i];
  r.text0 = info.text[0].c_str();
  r.text1 = info.text[1].c_str();
  r.text2 = info.text[2].c_str();
  r.option = info.option;
}

void CopyNumbers(const AppIdInfoResp& r, AppIdInfo& info) {
  const uint64_t numbers[] = {r.number0, r.number1, r.number2, r.number3, r.number4,
                              r.number5, r.number6, r.number7, r.number8};
  for (int i = 0; i < 9; ++i) info.number[i] = numbers[i];
}

// The text form, built only when a line at `level` will be written.
std::string TextForm(const AppIdInfo& info, int level) {
  std::string text;
  if (EvLog::On(level)) info.dump(text);
  return text;
}

}  // namespace

int AppIdInterfaceNet::createApplicationId(AppIdInfo& info, std::string& err, AppIdCallBack*, void*) {
  Exchange x(msg::kAppIdCreate);
  FillRequest(x.request(), info);
  if (int status = x.Run(err)) return status;
  const AppIdInfoResp& r = x.response();
  CopyNumbers(r, info);
  // A create answers all three texts; a null one reads as empty rather than crashing.
  info.text[0] = appmgr::iface::Text(r.text0);
  info.text[1] = appmgr::iface::Text(r.text1);
  info.text[2] = appmgr::iface::Text(r.text2);
  return 0;
}

int AppIdInterfaceNet::getApplicationId(AppIdInfo& info, std::string& err, void*) {
  EvEventWrapper::DebugLvl(kGetLabel, 8, "Entry:  appId[%s]", TextForm(info, 8).c_str());
  int status = 0;
  {
    Exchange x(msg::kAppIdGet);
    FillRequest(x.request(), info);
    if ((status = x.Send(err)) != 0) {
      EvEventWrapper::DebugLvl(kGetLabel, 2, "Session Send Error[%d], appId[%s]", status,
                               TextForm(info, 2).c_str());
    } else if ((status = x.Receive(err)) != 0) {
      EvEventWrapper::DebugLvl(kGetLabel, 2, "Session Recv Error[%d], appId[%s]", status,
                               TextForm(info, 2).c_str());
    } else if (AppMgrRespHdr hdr = x.response().hdr;  // the verifier takes a mutable header
               (status = x.message().verifyResponseHeader(hdr)) != 0) {
      err = appmgr::iface::Text(hdr.errorText);
    } else {
      const AppIdInfoResp& r = x.response();
      CopyNumbers(r, info);
      const char* texts[] = {r.text0, r.text1, r.text2};
      for (int i = 0; i < 3; ++i) {
        if (texts[i] != nullptr) {
          info.text[i] = texts[i];
        } else {
          (void)info.text[i].empty();  // deliberately nothing: an absent text keeps the caller's
        }
      }
    }
  }
  EvEventWrapper::DebugLvl(kGetLabel, 2, "Exit: [%d], appId[%s]", status, TextForm(info, 2).c_str());
  return status;
}

int AppIdInterfaceNet::removeApplicationId(AppIdInfo& info, std::string& err, void*) {
  Exchange x(msg::kAppIdRemove);
  FillRequest(x.request(), info);
  return x.Run(err);
}

int AppIdInterfaceNet::updateArchiveGroups(unsigned long first, unsigned long second,
                                           unsigned long third, std::string& err, void*, int*) {
  Exchange x(msg::kAppIdUpdateArchiveGroups);
  x.request().first = first;
  x.request().second = second;
  x.request().third = third;
  return x.Run(err);
}

int AppIdInterfaceNet::getIncrArchiveGroup(unsigned long& archiveGroupId, unsigned long id,
                                           std::string& err, void*) {
  Exchange x(msg::kAppIdIncrArchiveGroup);
  x.request().id = id;
  if (int status = x.Run(err)) return status;
  archiveGroupId = x.response().archiveGroupId;
  return 0;
}
