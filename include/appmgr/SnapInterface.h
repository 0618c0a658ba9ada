// SnapInterface: snapshot-information records. Obtained from getLibraryInterface(11); the caller
// owns the object and deletes it through this class. Objects hold no state, so one may serve
// many threads.
//
// Every operation is one request/response with the App Manager and returns 0 or the code of the
// step that failed, with `errorString` holding that step's text (the server's text for a server
// error). The caller's record or list is written only on success. The trailing void* is never
// read.
//
// Not every field travels in every operation (the record is carried positionally; what each
// field means is the App Manager's):
//   - F7 and F14 never travel: they are not sent, and reads leave them as they were (a record
//     appended by getSnapInfoList has them at their defaults, 0 and empty);
//   - F3 travels only with setSnapInfo, getSnapInfoList and setSnapInfoList: lookup, create and
//     update neither send it nor change it.
#pragma once

#include <list>
#include <string>

// One snapshot-information record. F2 is its id.
struct _AppSnapInfo {
  unsigned long F1 = 0;
  unsigned long F2 = 0;
  std::string F3;
  std::string F4;
  std::string F5;
  std::string F6;
  unsigned long F7 = 0;
  std::string F8;
  std::string F9;
  unsigned long F10 = 0;
  unsigned long F11 = 0;
  unsigned long F12 = 0;
  std::string F13;
  std::string F14;
  unsigned long F15 = 0;
};

class SnapInterface {
 public:
  virtual ~SnapInterface() = default;

  // Reads the record whose id is info.F2 into `info`.
  virtual int lookup(_AppSnapInfo& info, std::string& errorString, void* context) = 0;
  virtual int create(_AppSnapInfo& info, std::string& errorString, void* context) = 0;
  virtual int update(_AppSnapInfo& info, std::string& errorString, void* context) = 0;
  // Sends only the id.
  virtual int remove(unsigned long id, std::string& errorString, void* context) = 0;
  // Writes one record, F3 included.
  virtual int setSnapInfo(_AppSnapInfo info, std::string& errorString, void* context) = 0;
  // Appends every record the App Manager holds; the list is not cleared first.
  virtual int getSnapInfoList(std::list<_AppSnapInfo>& infos, std::string& errorString,
                              void* context) = 0;
  // Writes every record of the list in one request.
  virtual int setSnapInfoList(std::list<_AppSnapInfo> infos, std::string& errorString,
                              void* context) = 0;
};
