// SCInterface: subclients, the units of backup content under a backup set. Obtained from
// getLibraryInterface(8); the caller owns the object and deletes it through this class. Objects
// hold no state, so one may serve many threads.
//
// Every operation is one request/response with the App Manager and returns 0 or the code of
// the step that failed, with `errorString` holding that step's text (the server's text for a
// server error). Outputs are written only on success; lists and vectors are appended to, never
// cleared. The trailing void* is never read, nor is the trailing int* written.
//
// Answered without an exchange: getCurrentSRMActionSubClient, getSCdataPaths,
// updateSCdataPaths and getFLRconflictGUIDS return -1 with "Feature Not Supported";
// setContentGroups returns 0xa0010 and touches nothing.
#pragma once

#include <list>
#include <string>
#include <vector>

#include "appmgr/AppMgrTypes.h"
#include "appmgr/SCTypes.h"

class SCInterface {
 public:
  virtual ~SCInterface() = default;

  // Name, value (long&), three attributes and text of a subclient. A null name or text from
  // the server leaves the caller's string as it was.
  virtual int lookup(unsigned long subclientId, std::string& name, long& value,
                     unsigned long& attr2, unsigned long& attr3, unsigned long& attr4,
                     std::string& text, std::string& errorString, void* context) = 0;
  // The same by GUID; `subclientId` receives the subclient's id. The text is not read.
  virtual int lookup(std::string guid, std::string& name, long& value, unsigned long& attr2,
                     unsigned long& attr3, unsigned long& attr4, unsigned long& subclientId,
                     std::string& errorString, void* context) = 0;
  // Renames a subclient and sets its value (read from `value`, never written back). The bool
  // and the two numbers are not sent.
  virtual int update(unsigned long subclientId, const std::string& name, long& value, bool flag,
                     unsigned long a, unsigned long b, std::string& errorString,
                     void* context) = 0;
  virtual int getProperties(unsigned long subclientId, long table, std::string& errorString,
                            PropCallBack* callback, void* context) = 0;
  virtual int setProperties(unsigned long subclientId,
                            const std::list<const ApplProperty*>& properties, bool flag,
                            std::string& errorString, void* context, int* reserved) = 0;
  virtual int removeProperties(unsigned long subclientId,
                               const std::list<const ApplProperty*>& properties, bool flag,
                               std::string& errorString, void* context, int* reserved) = 0;
  virtual int removeProperties(unsigned long subclientId, const std::list<std::string>& names,
                               bool flag, std::string& errorString, void* context,
                               int* reserved) = 0;
  // Reads the content: callback->setFlag(content flag == 1) once, then addContent(type, text)
  // per entry in the server's order, skipping types above KP_CONTENT_MAX_INDEX. The trailing
  // bool, int and bool are not sent.
  virtual int initContent(unsigned long subclientId, long value, std::string& errorString,
                          ContentCallBack* callback, void* context, bool a, int b, bool c) = 0;
  // Adds and removes content entries in one request, each of `contentType`. A null entry in
  // either list is sent as a null text (the server refuses it).
  virtual int updateContent(unsigned long subclientId, int contentType,
                            const std::list<std::string*>& toAdd,
                            const std::list<std::string*>& toRemove, bool flag1, bool flag2,
                            bool flag3, std::string& errorString, void* context,
                            int* reserved) = 0;
  virtual int SetStoreAssociation(unsigned long subclientId, const std::list<std::string>& stores,
                                  std::string& errorString, void* context) = 0;
  virtual int SetActiveDirectoryAssociation(unsigned long subclientId,
                                            const std::list<std::string>& names,
                                            std::string& errorString, void* context) = 0;
  virtual int getOverlappingSubclientList(unsigned long subclientId,
                                          std::list<unsigned long>& subclients,
                                          std::string& errorString, void* context) = 0;
  virtual int getBackupHost(unsigned long subclientId, unsigned long& hostId,
                            std::string& errorString, void* context) = 0;
  // Sends the first, second and sixth arguments; receives a number and a text.
  virtual int getFRPairData(unsigned long first, unsigned long second, unsigned long& value,
                            std::string& text, std::string& errorString, unsigned long sixth,
                            void* context) = 0;
  virtual int setFRPairData(unsigned long first, unsigned long second, unsigned long third,
                            std::string& text, std::string& errorString, bool flag,
                            void* context) = 0;
  virtual int updateSCdataPaths(unsigned long subclientId, std::list<AppToDataPathItem>& paths,
                                std::string& errorString, void* context) = 0;
  virtual int getSCdataPaths(unsigned long subclientId, std::list<AppToDataPathItem>& paths,
                             std::string& errorString, void* context) = 0;
  virtual int getFLRconflictGUIDS(unsigned long a, unsigned long b,
                                  std::list<DataPairConflict>& out, std::string& errorString,
                                  void* context) = 0;
  virtual int getCurrentSRMActionSubClient(unsigned long& a, unsigned long& b,
                                           std::string& errorString, void* context) = 0;
  // In: a file type; out, on success only: its extensions, in the same string. No error
  // string: failures are reported by the status alone.
  virtual int getExtensionForFileType(std::string& fileTypeInExtensionsOut, void* context) = 0;
  // The first five numbers are numbers 3 to 7 of an application id, the sixth a value, then a
  // flag. No error string.
  virtual int getFSBackupsetContent(unsigned long n3, unsigned long n4, unsigned long n5,
                                    unsigned long n6, unsigned long n7, unsigned long value,
                                    bool flag, std::string& text1, std::string& text2,
                                    std::vector<unsigned long>& ids, void* context) = 0;
  // No error string.
  virtual int getSmartCopySubclients(unsigned long subclientId,
                                     std::vector<RefCopySCInfo>& copies, void* context) = 0;
  virtual int setContentGroups(unsigned long subclientId, std::string& groups,
                               void* context) = 0;
};
