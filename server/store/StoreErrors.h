// Error codes of the App Manager's store, as they reach clients.
//
// Every store failure is a CLmError. The codes below are the ones a request handler copies into
// the response header's error code, with the CLmError's text as the header's error text, so a
// client sees them as the status of its call. They are small positive numbers, distinct from 0
// (success) and from 100 (a status the server reports without it counting as an error). The
// numbers are part of the protocol as the server speaks it: never change or reuse one; a retired
// code stays here as a comment.
//
// Failures that only the server itself sees (opening the file, a schema newer than the code)
// use the platform's KpErr codes instead.
#pragma once

namespace appmgr::server {

enum StoreErr : int {
  // The entity named by the request does not exist ("backup set 42 does not exist"), or a part
  // of it does not (a store name, a property name in a strict remove). Retrying will not help
  // until something creates it.
  kStoreErrNotFound = 1,
  // The change would break a rule the stored data keeps: a name already used by a sibling, a
  // second pair with the same source, an entity still referred to by another.
  kStoreErrConflict = 2,
  // The request itself is malformed: an empty name, a text longer than its field, a value out
  // of range, a fixture entry of the wrong shape.
  kStoreErrInvalidArgument = 3,
  // The database failed: I/O error, a full disk, a lock held too long by another process, a
  // damaged file. The request may succeed later; the text carries SQLite's own message.
  kStoreErrDatabase = 4,
};

// Name of a store code ("not found", ...); "error" for any other number.
inline const char* StoreErrName(int code) {
  switch (code) {
    case kStoreErrNotFound:
      return "not found";
    case kStoreErrConflict:
      return "conflict";
    case kStoreErrInvalidArgument:
      return "invalid argument";
    case kStoreErrDatabase:
      return "database";
    default:
      return "error";
  }
}

}  // namespace appmgr::server
