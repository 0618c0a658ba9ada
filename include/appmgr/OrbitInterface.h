// OrbitInterface: the domain (the Orbit: one central server and its clients). Obtained from
// getLibraryInterface(3); the caller owns the object and deletes it through this class. Objects
// hold no state, so one may serve many threads.
//
// The domain record travels as loose references: four 64-bit ids, six texts and one integer.
// lookup, create and modify send all eleven and, on success, store the four ids and six texts of
// the answer. `number` is never taken from the answer: it keeps the caller's own value. On
// failure nothing is written. Each operation returns 0 or the code of the step that failed, with
// `errorString` holding that step's text (the server's text for a server error). The trailing
// void* is never read.
#pragma once

#include <string>

class OrbitInterface {
 public:
  virtual ~OrbitInterface() = default;

  // A null text in the answer leaves the caller's string as it was.
  virtual int lookup(unsigned long& id1, unsigned long& id2, unsigned long& id3, unsigned long& id4,
                     std::string& text1, std::string& text2, std::string& text3, std::string& text4,
                     std::string& text5, int& number, std::string& text6, std::string& errorString,
                     void* context) = 0;
  virtual int create(unsigned long& id1, unsigned long& id2, unsigned long& id3, unsigned long& id4,
                     std::string& text1, std::string& text2, std::string& text3, std::string& text4,
                     std::string& text5, int& number, std::string& text6, std::string& errorString,
                     void* context) = 0;
  virtual int modify(unsigned long& id1, unsigned long& id2, unsigned long& id3, unsigned long& id4,
                     std::string& text1, std::string& text2, std::string& text3, std::string& text4,
                     std::string& text5, int& number, std::string& text6, std::string& errorString,
                     void* context) = 0;
  // Removes the domain `orbitId`; nothing is copied back.
  virtual int remove(unsigned long orbitId, std::string& errorString, void* context) = 0;
};
