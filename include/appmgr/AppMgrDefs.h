// Definitions the library's sources share with their callers' headers.
//
// The two texts are process-wide constants that callers compare against or print; no operation
// of the library reads them. The App Manager constants bound content types and join the parts
// of an application id's text form.
#pragma once

// What a caller shows in place of a value that could not be read.
inline constexpr char vmFatalError[] = "**FatalError**";
// The backup operation types a browse of the latest backup recognises, as callers print them.
inline constexpr char JMBackupOptypeListForBLR[] = "4, 14, 18, 30, 43, 59, 60, 65";

// The highest content type a content read hands to its callback; entries of a higher type (as
// an unsigned 64-bit number) are skipped.
inline constexpr int KP_CONTENT_MAX_INDEX = 64;

// Stands between neighbouring items of an application id's text form.
inline constexpr char KP_STRING_APPLICATIONID_DELIMITER[] = "|";
