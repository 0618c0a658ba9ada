// FileReceiver: the receiving end of file puts on one connection of the file-transfer facility.
//
// A put is file-begin, file-data frames, file-end (docs/protocol.md, "File transfer"). The file
// is written to a hidden part file beside its final name (".NAME.part-<connection>") and renamed
// into place only once every announced byte has arrived, the byte count and checksum of the
// file-end record match what was written, and the data is on disk (fsync). Any failure, and a
// connection that ends in the middle of a file, removes the part file: a name under which a file
// is stored only ever holds a whole file, the old one or the new one.
//
// Each frame's outcome says whether the sender is to be answered now. A file refused at its
// begin (a name with a path component, above the size limit, no room on the disk) or failing on
// the way (the disk fills up) is answered at once, so the sender can stop; the frames it still
// sends for that file are then read and dropped, up to its file-end, which gets no second
// answer. Otherwise the answer follows file-end.
//
// Memory: nothing beyond the frame the connection has read; data goes from it to the file.
//
// Thread-safety: belongs to one connection thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/base/CLmError.h"
#include "platform/net/FileChecksum.h"

namespace appmgr::server {

class FileReceiver {
 public:
  struct Options {
    std::string directory;          // where files are stored
    uint64_t maxFileBytes = 0;      // a larger file is refused at its begin
    uint64_t minFreeBytes = 0;      // a file that would leave less free space is refused
  };

  // What a frame calls for: no answer yet, or a file-result with `code` (0: stored at
  // `storedPath`; otherwise `reason` says why not).
  struct Outcome {
    bool answer = false;
    int32_t code = 0;
    std::string reason;
    std::string storedPath;
  };

  FileReceiver(Options options, uint64_t connectionId);
  ~FileReceiver();  // a file still in transfer is removed
  FileReceiver(const FileReceiver&) = delete;
  FileReceiver& operator=(const FileReceiver&) = delete;

  Outcome Begin(const uint8_t* payload, size_t length);
  Outcome Data(const uint8_t* payload, size_t length);
  Outcome End(const uint8_t* payload, size_t length);
  // Removes the file in transfer, if any: the connection ended.
  void Abandon();

  // Succeeds for a plain file name: 1 to 255 bytes, not "." or "..", without '/', '\' or a
  // control character, and not of the form a part file takes. The error says what is wrong.
  static CLmError CheckFileName(std::string_view name);
  // Removes the part files a server that stopped abruptly left in `directory`.
  static void RemoveStaleParts(const std::string& directory);

 private:
  enum class State { kIdle, kReceiving, kDraining };

  // Ends the file in transfer with an answer now, and drops its frames up to its file-end.
  Outcome Refuse(int32_t code, std::string reason);
  void DropPart();
  CLmError Finish(const std::string& name);

  const Options options_;
  const uint64_t connectionId_;
  State state_ = State::kIdle;
  int fd_ = -1;
  std::string name_, part_, final_;
  bool overwrite_ = false;
  uint64_t size_ = 0, received_ = 0;
  net::FileChecksum checksum_;
};

}  // namespace appmgr::server
