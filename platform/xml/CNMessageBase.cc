#include "platform/xml/CNMessageBase.h"

#include <cstdio>
#include <cstring>
#include <new>

#include "platform/xml/CNRecordLayout.h"
#include "platform/xml/CNXmlReader.h"
#include "platform/xml/CNXmlWriter.h"

const char* CNXmlErrName(int code) {
  switch (code) {
    case kCNOk:
      return "ok";
    case kCNErrMalformed:
      return "malformed";
    case kCNErrWrongTag:
      return "wrong tag";
    case kCNErrBadValue:
      return "bad value";
    case kCNErrLimit:
      return "limit";
    case kCNErrBadArgument:
      return "bad argument";
    case kCNErrInternal:
      return "internal";
    default:
      return "error";
  }
}

CNMessageBase::CNMessageBase(unsigned long tagId)
    : tagId_(tagId), tagName_(kGenericTagName), layout_(nullptr) {}

CNMessageBase::CNMessageBase(unsigned long tagId, const char* tagName, const CNRecordLayout* layout)
    : tagId_(tagId), tagName_(tagName), layout_(layout) {}

CNMessageBase::~CNMessageBase() = default;

int CNMessageBase::CheckContent(const CNEntity&, std::string*) const {
  return kCNOk;
}

bool CNMessageBase::operator==(const CNMessageBase& other) const {
  return tagId_ == other.tagId_ && tagName_ == other.tagName_ &&
         static_cast<const CNEntity&>(*this) == static_cast<const CNEntity&>(other);
}

int CNMessageBase::serialize(std::string& out, bool pretty) const {
  try {
    std::string text;
    int rc = appmgr::xml::WriteMessage(tagId_, tagName_, *this, pretty, &text);
    if (rc == kCNOk) out.swap(text);
    return rc;
  } catch (const std::bad_alloc&) {
    return kCNErrLimit;
  }
}

int CNMessageBase::unserialize(const char* xml) {
  if (!xml) return unserialize(xml, 0);
  // A C string longer than the limit is refused without scanning past it.
  return unserialize(xml, strnlen(xml, kCNMaxDocumentBytes + 1));
}

int CNMessageBase::unserialize(const std::string& xml) {
  return unserialize(xml.data(), xml.size());
}

int CNMessageBase::unserialize(const char* data, size_t length) {
  try {
    appmgr::xml::ParsedMessage parsed;
    std::string detail;
    int rc = appmgr::xml::ReadMessage(data, length, &parsed, &detail);
    if (rc != kCNOk) {
      errorText_ = std::move(detail);
      return rc;
    }
    return Adopt(parsed.tagId, std::move(parsed.tagName), std::move(parsed.record));
  } catch (const std::bad_alloc&) {
    errorText_ = "out of memory";
    return kCNErrLimit;
  }
}

int CNMessageBase::Adopt(unsigned long tagId, std::string tagName, CNEntity record) {
  char buf[96];
  if (tagId != tagId_) {
    snprintf(buf, sizeof buf, "tag id 0x%08lx is not 0x%08lx", tagId, tagId_);
    errorText_ = buf;
    return kCNErrWrongTag;
  }
  if (layout_) {
    if (tagName != tagName_) {
      errorText_ = "message " + tagName + " is not " + tagName_;
      return kCNErrWrongTag;
    }
    std::string detail;
    int rc = CNCheckRecord(record, *layout_, &detail);
    if (rc == kCNOk) rc = CheckContent(record, &detail);
    if (rc != kCNOk) {
      errorText_ = std::move(detail);
      return rc;
    }
  }
  static_cast<CNEntity&>(*this) = std::move(record);
  tagName_ = std::move(tagName);
  errorText_.clear();
  return kCNOk;
}
