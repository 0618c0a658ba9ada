// Caller-side types of the interface operations: properties, callbacks, and the records the
// backup-set operations fill.
//
// The library calls only the operations declared here; callers may derive their own classes.
#pragma once

#include <cstdint>
#include <list>
#include <string>

// One property to set or remove: a name, a 64-bit type and a text value.
class ApplProperty {
 public:
  ApplProperty() = default;
  ApplProperty(std::string name, unsigned long type, std::string value)
      : name_(std::move(name)), type_(type), value_(std::move(value)) {}
  virtual ~ApplProperty() = default;

  virtual const std::string& getName() const { return name_; }
  virtual unsigned long getType() const { return type_; }
  virtual const std::string& getValue() const { return value_; }

 private:
  std::string name_;
  unsigned long type_ = 0;
  std::string value_;
};

// Receives the properties an operation returns, one call per property, in the server's order.
class PropCallBack {
 public:
  virtual ~PropCallBack() = default;
  // `reserved` is always 0.
  virtual void addProperty(const std::string& name, unsigned long type, const std::string& value,
                           long reserved) = 0;
};

// Receives content entries, one call per entry, in the server's order.
class ContentCallBack {
 public:
  virtual ~ContentCallBack() = default;
  virtual void addContent(unsigned long type, const std::string& text) = 0;
  // Called once before the entries by the operations that report this flag.
  virtual void setFlag(bool flag) = 0;
};

// One replication data pair; the same layout as the wire record DataPairConflict_1.
struct DataPairConflict {
  unsigned long id1 = 0;
  unsigned long id2 = 0;
  unsigned long id3 = 0;
  unsigned long id4 = 0;
  char text1[255] = {};
  char text2[128] = {};
  char text3[128] = {};
  char text4[1024] = {};
  unsigned long value = 0;
};
static_assert(sizeof(DataPairConflict) == 1576);

struct PairData {
  unsigned long id = 0;
  std::string name;
};

struct FLRSystemStateInfo {
  unsigned long id = 0;
  std::list<PairData> pairs;
  unsigned long value = 0;
  std::string text1;
  std::string text2;
};
