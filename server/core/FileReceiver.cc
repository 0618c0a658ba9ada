#include "server/core/FileReceiver.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "platform/net/ControlRecords.h"
#include "platform/net/XdrCodec.h"
#include "protocol/WireSchema.h"

namespace appmgr::server {
namespace {

constexpr size_t kMaxNameBytes = 255;
constexpr std::string_view kPartMarker = ".part-";

std::string Quoted(std::string_view name) { return "\"" + std::string(name) + "\""; }

// ".NAME.part-<digits>": the hidden name a file has while it is received.
bool IsPartName(std::string_view name) {
  if (name.size() < 2 || name[0] != '.') return false;
  size_t marker = name.rfind(kPartMarker);
  if (marker == std::string_view::npos || marker == 0) return false;
  std::string_view digits = name.substr(marker + kPartMarker.size());
  if (digits.empty()) return false;
  for (char c : digits) {
    if (c < '0' || c > '9') return false;
  }
  return true;
}

// What a failed write means to the sender: a full disk is said as such.
std::string WriteFailure(int error, const std::string& name, uint64_t written, uint64_t size) {
  std::string where = " after " + std::to_string(written) + " of " + std::to_string(size) + " bytes";
  if (error == ENOSPC || error == EDQUOT) {
    return "the server's disk is full: cannot write " + name + where + " (" + std::strerror(error) + ")";
  }
  if (error == EFBIG) {
    return "the server cannot hold a file this large: cannot write " + name + where + " (" +
           std::strerror(error) + ")";
  }
  return "cannot write " + name + where + ": " + std::strerror(error);
}

// Makes a rename in `directory` durable.
int SyncDirectory(const std::string& directory) {
  int fd = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return -1;
  int rc = ::fsync(fd);
  ::close(fd);
  return rc;
}

}  // namespace

CLmError FileReceiver::CheckFileName(std::string_view name) {
  if (name.empty()) return CLmError(kKpErrBadArgument, "the file has no name");
  if (name.size() > kMaxNameBytes) {
    return CLmError::Format(kKpErrBadArgument, "a file name has at most %zu bytes; this one has %zu",
                            kMaxNameBytes, name.size());
  }
  if (name == "." || name == "..") {
    return CLmError(kKpErrBadArgument, Quoted(name) + " is not a file name");
  }
  if (name[0] == '/' || name[0] == '\\') {
    return CLmError(kKpErrBadArgument,
                    Quoted(name) + " is an absolute path; only a plain file name is accepted");
  }
  for (unsigned char c : name) {
    if (c == '/' || c == '\\') {
      return CLmError(kKpErrBadArgument, Quoted(name) +
                                             " has a path component; only a plain file name is accepted");
    }
    if (c == 0) return CLmError(kKpErrBadArgument, "the file name holds a NUL byte");
    if (c < 0x20 || c == 0x7f) {
      return CLmError(kKpErrBadArgument, "the file name holds a control character");
    }
  }
  if (IsPartName(name)) {
    return CLmError(kKpErrBadArgument,
                    Quoted(name) + " has the form of a file in transfer (.NAME.part-N), which is kept for the server");
  }
  return {};
}

void FileReceiver::RemoveStaleParts(const std::string& directory) {
  std::error_code ec;
  for (const auto& entry : std::filesystem::directory_iterator(directory, ec)) {
    std::string name = entry.path().filename().string();
    if (IsPartName(name) && entry.is_regular_file(ec)) std::filesystem::remove(entry.path(), ec);
  }
}

FileReceiver::FileReceiver(Options options, uint64_t connectionId)
    : options_(std::move(options)), connectionId_(connectionId) {}

FileReceiver::~FileReceiver() { DropPart(); }

void FileReceiver::Abandon() {
  DropPart();
  state_ = State::kIdle;
}

void FileReceiver::DropPart() {
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
  if (!part_.empty()) ::unlink(part_.c_str());
  part_.clear();
}

FileReceiver::Outcome FileReceiver::Refuse(int32_t code, std::string reason) {
  DropPart();
  state_ = State::kDraining;
  Outcome o;
  o.answer = true;
  o.code = code;
  o.reason = std::move(reason);
  return o;
}

FileReceiver::Outcome FileReceiver::Begin(const uint8_t* payload, size_t length) {
  // A begin in the middle of a file abandons it (the sender gave up on it without a file-end).
  DropPart();
  state_ = State::kReceiving;
  received_ = 0;
  checksum_.Reset();

  net::FileBeginRecord begin;
  wire::Arena arena;
  if (CLmError e = wire::DecodeRecord(payload, length, begin, arena)) {
    return Refuse(kKpErrBadArgument, "the file-begin record cannot be read: " + e.Text());
  }
  name_ = begin.fileName ? begin.fileName : "";
  if (CLmError e = CheckFileName(name_)) return Refuse(e.GetErrorCode(), e.Text());
  size_ = begin.size;
  overwrite_ = begin.overwrite != 0;
  if (size_ > options_.maxFileBytes) {
    return Refuse(kKpErrLimit, name_ + " has " + std::to_string(size_) +
                                   " bytes, above this server's limit of " +
                                   std::to_string(options_.maxFileBytes) + " bytes per file");
  }
  std::filesystem::path directory(options_.directory);
  final_ = (directory / name_).string();
  std::error_code ec;
  if (!overwrite_ && std::filesystem::exists(final_, ec)) {
    return Refuse(kKpErrRefused, name_ + " exists already");
  }
  struct statvfs vfs {};
  if (::statvfs(options_.directory.c_str(), &vfs) == 0) {
    uint64_t free = uint64_t(vfs.f_bavail) * uint64_t(vfs.f_frsize);
    if (size_ > free || free - size_ < options_.minFreeBytes) {
      std::string keep = options_.minFreeBytes
                             ? ", and " + std::to_string(options_.minFreeBytes) + " must stay free"
                             : std::string();
      return Refuse(kKpErrLimit, "not enough free space on the server for " + name_ + ": it needs " +
                                     std::to_string(size_) + " bytes, " + std::to_string(free) +
                                     " are free" + keep);
    }
  }
  part_ = (directory / ("." + name_ + std::string(kPartMarker) + std::to_string(connectionId_))).string();
  fd_ = ::open(part_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644);
  if (fd_ < 0) {
    int error = errno;
    part_.clear();  // not ours: leave it
    return Refuse(kKpErrIo, "cannot create a file in " + options_.directory + ": " + std::strerror(error));
  }
  return {};
}

FileReceiver::Outcome FileReceiver::Data(const uint8_t* payload, size_t length) {
  if (state_ == State::kDraining) return {};
  if (state_ == State::kIdle) return Refuse(kKpErrProtocol, "file data without a file-begin");
  if (length > size_ - received_) {
    return Refuse(kKpErrProtocol, "more bytes of " + name_ + " than the " + std::to_string(size_) +
                                      " announced");
  }
  size_t done = 0;
  while (done < length) {
    ssize_t n = ::write(fd_, payload + done, length - done);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) return Refuse(kKpErrIo, WriteFailure(errno, name_, received_ + done, size_));
    done += size_t(n);
  }
  checksum_.Update(payload, length);
  received_ += length;
  return {};
}

FileReceiver::Outcome FileReceiver::End(const uint8_t* payload, size_t length) {
  if (state_ == State::kDraining) {  // answered already
    state_ = State::kIdle;
    return {};
  }
  if (state_ == State::kIdle) {
    Outcome o = Refuse(kKpErrProtocol, "a file-end without a file-begin");
    state_ = State::kIdle;
    return o;
  }
  net::FileEndRecord end;
  wire::Arena arena;
  Outcome o;
  if (CLmError e = wire::DecodeRecord(payload, length, end, arena)) {
    o = Refuse(kKpErrProtocol, "the file-end record of " + name_ + " cannot be read: " + e.Text());
  } else if (received_ != size_ || end.size != received_) {
    o = Refuse(kKpErrProtocol, name_ + " is incomplete: " + std::to_string(size_) +
                                   " bytes announced, " + std::to_string(end.size) + " sent, " +
                                   std::to_string(received_) + " received");
  } else if (end.checksumKind != net::kChecksumXxh3_64) {
    o = Refuse(kKpErrProtocol, "the file-end of " + name_ + " names checksum kind " +
                                   std::to_string(end.checksumKind) + ", which this server does not know");
  } else if (end.checksum != checksum_.Digest()) {
    char why[160];
    std::snprintf(why, sizeof why, " was damaged on the way: checksum %016llx sent, %016llx received",
                  static_cast<unsigned long long>(end.checksum),
                  static_cast<unsigned long long>(checksum_.Digest()));
    o = Refuse(kKpErrProtocol, name_ + why);
  } else if (CLmError e = Finish(name_)) {
    o = Refuse(e.GetErrorCode(), e.Text());
  } else {
    o.answer = true;
    o.storedPath = final_;
  }
  state_ = State::kIdle;
  return o;
}

// Durable first, then in place: fsync the data, rename (refusing to replace unless asked), and
// fsync the folder so the new name survives a crash too.
CLmError FileReceiver::Finish(const std::string& name) {
  if (::fsync(fd_) != 0) {
    return CLmError(kKpErrIo, WriteFailure(errno, name, received_, size_));
  }
  int rc = ::close(fd_);
  fd_ = -1;
  if (rc != 0) return CLmError(kKpErrIo, WriteFailure(errno, name, received_, size_));
  if (overwrite_) {
    rc = ::rename(part_.c_str(), final_.c_str());
  } else {
    rc = ::renameat2(AT_FDCWD, part_.c_str(), AT_FDCWD, final_.c_str(), RENAME_NOREPLACE);
    if (rc != 0 && errno == EINVAL) {  // a file system without the flag
      std::error_code ec;
      rc = std::filesystem::exists(final_, ec) ? (errno = EEXIST, -1)
                                               : ::rename(part_.c_str(), final_.c_str());
    }
  }
  if (rc != 0) {
    if (errno == EEXIST) return CLmError(kKpErrRefused, name + " exists already");
    return CLmError(kKpErrIo, "cannot store " + name + ": " + std::strerror(errno));
  }
  part_.clear();
  SyncDirectory(options_.directory);
  return {};
}

}  // namespace appmgr::server
