#include "interfaces/OrbitInterfaceNet.h"

#include "appmgr/records/OrbitRecords.h"
#include "interfaces/Exchange.h"
#include "protocol/Messages.h"

using appmgr::iface::Exchange;
using appmgr::iface::Text;
namespace msg = appmgr::msg;

namespace {

// The caller's loose references, as lookup, create and modify take them.
struct OrbitRefs {
  unsigned long &id1, &id2, &id3, &id4;
  std::string &text1, &text2, &text3, &text4, &text5;
  int& number;
  std::string& text6;
};

// How a null text of the answer is copied out.
enum class NullText { kKeep, kEmpty };

// Sends all eleven values under `op` and, on success, copies the four ids and six texts back.
// The integer of the answer is not read: `number` gets the caller's own value back.
int ExchangeRecord(const appmgr::wire::Op<OrbitInfoReq1, OrbitInfoResp1>& op, const OrbitRefs& o,
                   NullText nulls, std::string& errorString) {
  Exchange x(op);
  OrbitInfoReq1& req = x.request();
  req.id1 = o.id1;
  req.id2 = o.id2;
  req.id3 = o.id3;
  req.id4 = o.id4;
  req.text1 = o.text1.c_str();
  req.text2 = o.text2.c_str();
  req.text3 = o.text3.c_str();
  req.text4 = o.text4.c_str();
  req.text5 = o.text5.c_str();
  req.text6 = o.text6.c_str();
  const int sentNumber = o.number;
  req.number = sentNumber;
  if (int status = x.Run(errorString)) return status;

  const OrbitInfoResp1& r = x.response();
  o.id1 = r.id1;
  o.id2 = r.id2;
  o.id3 = r.id3;
  o.id4 = r.id4;
  auto copy = [nulls](std::string& to, const char* from) {
    if (from != nullptr) {
      to = from;
    } else if (nulls == NullText::kEmpty) {
      to.clear();
    }  // kKeep: the caller's string stays as it was
  };
  copy(o.text1, r.text1);
  copy(o.text2, r.text2);
  copy(o.text3, r.text3);
  copy(o.text4, r.text4);
  copy(o.text5, r.text5);
  copy(o.text6, r.text6);
  o.number = sentNumber;
  return 0;
}

}  // namespace

int OrbitInterfaceNet::lookup(unsigned long& id1, unsigned long& id2, unsigned long& id3,
                              unsigned long& id4, std::string& text1, std::string& text2,
                              std::string& text3, std::string& text4, std::string& text5,
                              int& number, std::string& text6, std::string& errorString, void*) {
  return ExchangeRecord(msg::kOrbitLookup,
                        {id1, id2, id3, id4, text1, text2, text3, text4, text5, number, text6},
                        NullText::kKeep, errorString);
}

// create and modify assign every returned text; the server answers all six for the record it
// stored, and a null one reads as empty rather than crashing the caller.
int OrbitInterfaceNet::create(unsigned long& id1, unsigned long& id2, unsigned long& id3,
                              unsigned long& id4, std::string& text1, std::string& text2,
                              std::string& text3, std::string& text4, std::string& text5,
                              int& number, std::string& text6, std::string& errorString, void*) {
  return ExchangeRecord(msg::kOrbitCreate,
                        {id1, id2, id3, id4, text1, text2, text3, text4, text5, number, text6},
                        NullText::kEmpty, errorString);
}

int OrbitInterfaceNet::modify(unsigned long& id1, unsigned long& id2, unsigned long& id3,
                              unsigned long& id4, std::string& text1, std::string& text2,
                              std::string& text3, std::string& text4, std::string& text5,
                              int& number, std::string& text6, std::string& errorString, void*) {
  // Answered under the request's own id (kOrbitModify pairs 0x34000182 with itself).
  return ExchangeRecord(msg::kOrbitModify,
                        {id1, id2, id3, id4, text1, text2, text3, text4, text5, number, text6},
                        NullText::kEmpty, errorString);
}

int OrbitInterfaceNet::remove(unsigned long orbitId, std::string& errorString, void*) {
  Exchange x(msg::kOrbitRemove);
  x.request().id = orbitId;
  return x.Run(errorString);
}
