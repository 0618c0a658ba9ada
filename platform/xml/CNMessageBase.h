// CNMessageBase: the base of every XML message, and the library's entry points.
//
// A message is a record (CNEntity: numbered fields and keyed elements) with a tag: a numeric
// tag id, which identifies the message kind on the wire and in routing, and a tag name
// ("App::GetDataInPreInstallModeResp"). The message classes of AppMessages.h and
// KPGuiMessages.h derive from it, fix their tag, declare their fields as a table (CNRecordLayout.h)
// and add typed accessors; the factory (Create, FromXml) makes the right class from a tag id.
// A tag id no class claims gets a generic CNMessageBase that carries whatever fields it has.
//
// The XML form (one root element named after the message, the tag id as its attribute, one
// child element per field) is described in docs/xml.md. serialize() writes it; equal messages
// give equal text. unserialize() reads it and trusts nothing: every failure, including hostile
// input, is a CNXmlErr code (CNXmlCodes.h), never a crash, an unbounded recursion or a read
// outside the given bytes. Limits: kCNMaxDocumentBytes, kCNMaxDepth, kCNMaxListEntries.
//
// pugixml does the parsing, behind the implementation; users of this header do not need it.
//
// Ownership: a message owns its content. Create and FromXml hand over a new message in a
// std::unique_ptr. Copies are made through the message classes (copying a CNMessageBase through
// a base reference would slice, so the base's copy is protected).
//
// Thread-safety: as for CNEntity, distinct messages may be used from distinct threads, and const
// methods (serialize, getters) of one message may run concurrently while nothing changes it.
// Initialize, Create and FromXml may be called from any thread at any time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/xml/CNEntity.h"
#include "platform/xml/CNXmlCodes.h"

struct CNRecordLayout;

class CNMessageBase : public CNEntity {
 public:
  // Tag name of a generic message made by the program rather than read from a document.
  static constexpr const char* kGenericTagName = "CNMessage";

  // A generic message: tag id `tagId`, tag name kGenericTagName, no declared fields.
  explicit CNMessageBase(unsigned long tagId);
  virtual ~CNMessageBase();

  // Prepares the library once per process: checks the message catalogue (unique tag ids and
  // names, sound field tables) and returns kCNOk, or kCNErrInternal when this build's own
  // tables are wrong. The check runs once; later calls, from any number of threads at once,
  // return its result (a check that ran out of memory returns kCNErrLimit and is tried again by
  // the next call). Every other call works without it.
  static int Initialize();

  // A new message of the class registered for `tagId`, as its default constructor makes it; for
  // an unknown tag id, an empty generic message carrying that id. Never null.
  static std::unique_ptr<CNMessageBase> Create(unsigned long tagId);

  // Reads the root's tag id from the `length` bytes at `data`, makes the message with Create,
  // and reads the document into it. Null on failure, with the code in *error (kCNOk on success)
  // and what failed in *errorText when those are not null.
  static std::unique_ptr<CNMessageBase> FromXml(const char* data, size_t length, int* error,
                                                std::string* errorText = nullptr);

  // Replaces `out` with the document of this message; `pretty` indents it, one element per
  // line. Returns kCNOk, or kCNErrLimit (lists nested deeper than kCNMaxDepth, or a document
  // above kCNMaxDocumentBytes) leaving `out` unchanged.
  int serialize(std::string& out, bool pretty = false) const;

  // Reads a document into this message, replacing all its content. The document's tag id must be
  // this message's; for a message class its root name must also be the class's tag name, and
  // every declared field present must have its declared kind. A generic message takes the
  // document's tag name. On failure returns the code, keeps the previous content untouched and
  // records what failed (GetReadError).
  // The first form reads up to the terminating NUL (REQUIRES: `xml` is NUL-terminated or null);
  // the others read exactly the given bytes, so an embedded NUL is an error there.
  int unserialize(const char* xml);
  int unserialize(const std::string& xml);
  int unserialize(const char* data, size_t length);

  const char* getTagName() const { return tagName_.c_str(); }
  unsigned long getTagId() const { return tagId_; }
  // The declared field table of the class; null for a generic message.
  const CNRecordLayout* GetLayout() const { return layout_; }
  // What the last failed unserialize found wrong, with its byte offset; empty after a success.
  const std::string& GetReadError() const { return errorText_; }

  // Same tag id, tag name and content.
  bool operator==(const CNMessageBase& other) const;

 protected:
  // For message classes: a fixed tag, and the table their content must satisfy when read.
  CNMessageBase(unsigned long tagId, const char* tagName, const CNRecordLayout* layout);
  CNMessageBase(const CNMessageBase&) = default;
  CNMessageBase& operator=(const CNMessageBase&) = default;
  CNMessageBase(CNMessageBase&&) noexcept = default;
  CNMessageBase& operator=(CNMessageBase&&) noexcept = default;

  // A class's own rule beyond its table, checked on a record that already passed the table
  // before it replaces the content. kCNOk, or a code with *detail set.
  virtual int CheckContent(const CNEntity& record, std::string* detail) const;

 private:
  int Adopt(unsigned long tagId, std::string tagName, CNEntity record);

  unsigned long tagId_;
  std::string tagName_;
  const CNRecordLayout* layout_;  // static storage; null for a generic message
  std::string errorText_;
};
