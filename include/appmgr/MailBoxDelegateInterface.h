// MailBoxDelegateInterface: mailbox-delegate records. Obtained from getLibraryInterface(12); the
// caller owns the object and deletes it through this class. Objects hold no state, so one may
// serve many threads.
//
// Every operation is one request/response with the App Manager and returns 0 or the code of the
// step that failed, with `errorString` holding that step's text (the server's text for a server
// error). The caller's record or list is written only on success. All seven fields travel in
// every operation that carries a record; their meaning is the App Manager's. The trailing void*
// is never read.
#pragma once

#include <list>
#include <string>

// One mailbox-delegate record. G7 is its id.
struct _MailBoxDelegateInfo {
  unsigned long G1 = 0;
  std::string G2;
  std::string G3;
  std::string G4;
  std::string G5;
  std::string G6;
  unsigned long G7 = 0;
};

class MailBoxDelegateInterface {
 public:
  virtual ~MailBoxDelegateInterface() = default;

  // Reads the record whose id is info.G7 into `info`.
  virtual int lookup(_MailBoxDelegateInfo& info, std::string& errorString, void* context) = 0;
  virtual int create(_MailBoxDelegateInfo& info, std::string& errorString, void* context) = 0;
  virtual int update(_MailBoxDelegateInfo& info, std::string& errorString, void* context) = 0;
  // Sends the id with G1 = 0 and empty texts.
  virtual int remove(unsigned long id, std::string& errorString, void* context) = 0;
  virtual int setMailBoxDelegate(_MailBoxDelegateInfo info, std::string& errorString,
                                 void* context) = 0;
  // Appends the records; the list is not cleared first. Same as the overload below with id 0.
  virtual int getMailBoxDelegateList(std::list<_MailBoxDelegateInfo>& infos,
                                     std::string& errorString, void* context) = 0;
  // Writes every record of the list in one request.
  virtual int setMailBoxDelegateList(const std::list<_MailBoxDelegateInfo>& infos,
                                     std::string& errorString, void* context) = 0;
  // Appends the records the App Manager selects by `id`; the list is not cleared first.
  virtual int getMailBoxDelegateList(std::list<_MailBoxDelegateInfo>& infos, unsigned long id,
                                     std::string& errorString, void* context) = 0;
  // Removes every record of the list in one request.
  virtual int removeMailBoxDelegateList(const std::list<_MailBoxDelegateInfo>& infos,
                                        std::string& errorString, void* context) = 0;
};
