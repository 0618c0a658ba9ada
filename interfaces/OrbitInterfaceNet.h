// OrbitInterfaceNet: the domain record over the App Manager protocol. Holds no state.
#pragma once

#include "appmgr/OrbitInterface.h"

class OrbitInterfaceNet : public OrbitInterface {
 public:
  int lookup(unsigned long& id1, unsigned long& id2, unsigned long& id3, unsigned long& id4,
             std::string& text1, std::string& text2, std::string& text3, std::string& text4,
             std::string& text5, int& number, std::string& text6, std::string& errorString,
             void* context) override;
  int create(unsigned long& id1, unsigned long& id2, unsigned long& id3, unsigned long& id4,
             std::string& text1, std::string& text2, std::string& text3, std::string& text4,
             std::string& text5, int& number, std::string& text6, std::string& errorString,
             void* context) override;
  int modify(unsigned long& id1, unsigned long& id2, unsigned long& id3, unsigned long& id4,
             std::string& text1, std::string& text2, std::string& text3, std::string& text4,
             std::string& text5, int& number, std::string& text6, std::string& errorString,
             void* context) override;
  int remove(unsigned long orbitId, std::string& errorString, void* context) override;
};
