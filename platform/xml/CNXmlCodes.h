// Result codes, field kinds and limits of the XML message library (CNMessageBase and the
// message classes). docs/xml.md describes the wire form these apply to.
//
// Every call of the library that can fail returns an int: 0 (kCNOk) on success, else one of the
// codes below. Nothing in the library throws; running out of memory while reading or writing a
// document is reported as kCNErrLimit.
#pragma once

#include <cstddef>

// Numbers are what callers log and may hand on as operation statuses, so they never change; a
// retired code stays as a comment. They sit apart from the platform's KpErr codes (1001..).
enum CNXmlErr : int {
  kCNOk = 0,
  // The text is not a document of the wire form: not well-formed XML, not UTF-8, a NUL byte, a
  // document type declaration, an unknown element or attribute, a missing attribute, a field
  // number or element id given twice, text where only elements may stand.
  kCNErrMalformed = 1101,
  // The document is well formed but carries another message: its tag id (or, for a typed class,
  // its root name) is not that of the object it is read into.
  kCNErrWrongTag = 1102,
  // A value does not parse or does not fit: a non-numeric or out-of-range integer, invalid or
  // non-canonical base64, a bad character reference, a field number out of range, or a field
  // whose kind is not the one the message class declares for it.
  kCNErrBadValue = 1103,
  // A limit below was reached (document size, nesting depth, list length), or memory ran out.
  kCNErrLimit = 1104,
  // The caller's own input is wrong: a null pointer, a field number out of range, a text that is
  // not valid UTF-8 or holds a character XML cannot carry, a kind that is not a text kind.
  kCNErrBadArgument = 1105,
  // Our own bug: the message catalogue failed its self-check (see CNMessageBase::Initialize).
  kCNErrInternal = 1106,
};

// Name of a code ("malformed", "wrong tag", ...); "error" for codes outside CNXmlErr.
const char* CNXmlErrName(int code);

// The kind of a numbered field or of an element attribute. The numbers are also the `kind`
// argument of getstringByRef (2 reads a text, 3 the bytes of a binary value).
enum CNFieldKind : int {
  kCNKindNone = 0,    // the field is not set
  kCNKindInt64 = 1,   // signed 64-bit integer
  kCNKindString = 2,  // UTF-8 text
  kCNKindBinary = 3,  // any bytes; base64 on the wire
  kCNKindList = 4,    // an ordered list of nested records (CNEntity); fields only, not attributes
};

// Field numbers and attribute slots run from 1 to this.
constexpr int kCNMaxFieldNumber = 65535;
// Lists nest at most this deep: the message's own fields are at depth 0, a record in one of its
// lists at depth 1, a record in a list of that record at depth 2, and so on. Reading stops at the
// first record deeper than this, before descending, so a hostile document cannot exhaust the
// stack; writing refuses such a record so that we never send what a peer must refuse.
constexpr int kCNMaxDepth = 32;
// Entries of one list. A peer's document cannot make us hold more than this per list.
constexpr size_t kCNMaxListEntries = 100000;
// Bytes of one document, read or written. Large enough for a cache fill of many thousand
// encoded messages; anything larger is refused before it is parsed.
constexpr size_t kCNMaxDocumentBytes = size_t{64} << 20;
