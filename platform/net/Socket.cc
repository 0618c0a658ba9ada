#include "platform/net/Socket.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <climits>
#include <cstring>

namespace appmgr::net {

int64_t Deadline::RemainingMs() const {
  if (at_ == Clock::time_point::max()) return INT64_MAX;
  auto left = std::chrono::duration_cast<std::chrono::milliseconds>(at_ - Clock::now()).count();
  if (left > 0) return left;
  return Clock::now() >= at_ ? 0 : 1;
}

std::string HostPortText(const std::string& host, unsigned port) {
  bool v6 = host.find(':') != std::string::npos;
  return (v6 ? "[" + host + "]" : host) + ":" + std::to_string(port);
}

Socket& Socket::operator=(Socket&& o) noexcept {
  if (this != &o) {
    Close();
    fd_ = o.fd_;
    rcvTimeoutMs_ = o.rcvTimeoutMs_;
    sndTimeoutMs_ = o.sndTimeoutMs_;
    o.fd_ = -1;
  }
  return *this;
}

void Socket::Close() {
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
}

int Socket::Release() {
  int fd = fd_;
  fd_ = -1;
  return fd;
}

void Socket::ShutdownAndClose() {
  if (fd_ >= 0) ::shutdown(fd_, SHUT_RDWR);
  Close();
}

namespace {

void Tune(int fd) {
  int one = 1;
  // Requests are small and answered at once: never wait to coalesce them.
  ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
  // A peer that vanished without a word is found by keepalive on idle pooled sessions.
  ::setsockopt(fd, SOL_SOCKET, SO_KEEPALIVE, &one, sizeof one);
}

bool SetBlocking(int fd, bool blocking) {
  int flags = ::fcntl(fd, F_GETFL, 0);
  if (flags < 0) return false;
  flags = blocking ? (flags & ~O_NONBLOCK) : (flags | O_NONBLOCK);
  return ::fcntl(fd, F_SETFL, flags) == 0;
}

int PollMs(int64_t ms) { return ms > INT_MAX ? -1 : static_cast<int>(ms); }

CLmError ConnectOne(const addrinfo* ai, const std::string& target, Deadline deadline, int* fdOut) {
  int fd = ::socket(ai->ai_family, ai->ai_socktype | SOCK_CLOEXEC | SOCK_NONBLOCK, ai->ai_protocol);
  if (fd < 0) return CLmError::FromErrno(kKpErrIo, errno, "socket for " + target);
  Socket guard(fd);
  if (::connect(fd, ai->ai_addr, ai->ai_addrlen) != 0) {
    if (errno != EINPROGRESS) {
      int e = errno;
      return CLmError::FromErrno(e == ECONNREFUSED ? kKpErrRefused : kKpErrIo, e,
                                 "connect to " + target);
    }
    for (;;) {
      int64_t left = deadline.RemainingMs();
      if (left == 0) {
        return CLmError(kKpErrTimeout, "connect to " + target + " timed out");
      }
      pollfd p{fd, POLLOUT, 0};
      int r = ::poll(&p, 1, PollMs(left));
      if (r < 0 && errno == EINTR) continue;
      if (r < 0) return CLmError::FromErrno(kKpErrIo, errno, "poll while connecting to " + target);
      if (r == 0) continue;
      int err = 0;
      socklen_t len = sizeof err;
      ::getsockopt(fd, SOL_SOCKET, SO_ERROR, &err, &len);
      if (err != 0) {
        return CLmError::FromErrno(err == ECONNREFUSED ? kKpErrRefused : kKpErrIo, err,
                                   "connect to " + target);
      }
      break;
    }
  }
  if (!SetBlocking(fd, true)) return CLmError::FromErrno(kKpErrIo, errno, "fcntl");
  Tune(fd);
  *fdOut = guard.Release();
  return {};
}

}  // namespace

CLmError Socket::Connect(const std::string& host, unsigned port, Deadline deadline, Socket* out) {
  std::string target = HostPortText(host, port);
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_NUMERICSERV;
  addrinfo* list = nullptr;
  std::string service = std::to_string(port);
  int rc = ::getaddrinfo(host.c_str(), service.c_str(), &hints, &list);
  if (rc != 0) {
    return CLmError(kKpErrNotFound, "cannot resolve " + host + ": " + gai_strerror(rc));
  }
  CLmError last(kKpErrNotFound, "no address for " + host);
  for (addrinfo* ai = list; ai; ai = ai->ai_next) {
    int fd = -1;
    last = ConnectOne(ai, target, deadline, &fd);
    if (!last) {
      *out = Socket(fd);
      break;
    }
    if (last.GetErrorCode() == kKpErrTimeout) break;
  }
  ::freeaddrinfo(list);
  return last;
}

CLmError Socket::Listen(const std::string& address, unsigned port, int backlog, Socket* out,
                        unsigned* boundPort) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_PASSIVE | AI_NUMERICSERV;
  addrinfo* list = nullptr;
  std::string service = std::to_string(port);
  int rc = ::getaddrinfo(address.empty() ? nullptr : address.c_str(), service.c_str(), &hints, &list);
  if (rc != 0) return CLmError(kKpErrNotFound, "cannot resolve " + address + ": " + gai_strerror(rc));
  CLmError last(kKpErrNotFound, "no address for " + address);
  for (addrinfo* ai = list; ai; ai = ai->ai_next) {
    int fd = ::socket(ai->ai_family, ai->ai_socktype | SOCK_CLOEXEC, ai->ai_protocol);
    if (fd < 0) {
      last = CLmError::FromErrno(kKpErrIo, errno, "socket");
      continue;
    }
    Socket s(fd);
    int one = 1;
    ::setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
    if (::bind(fd, ai->ai_addr, ai->ai_addrlen) != 0) {
      last = CLmError::FromErrno(kKpErrIo, errno, "bind to " + HostPortText(address, port));
      continue;
    }
    if (::listen(fd, backlog) != 0) {
      last = CLmError::FromErrno(kKpErrIo, errno, "listen on " + HostPortText(address, port));
      continue;
    }
    sockaddr_storage ss{};
    socklen_t len = sizeof ss;
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&ss), &len);
    *boundPort = ntohs(ss.ss_family == AF_INET6 ? reinterpret_cast<sockaddr_in6*>(&ss)->sin6_port
                                                : reinterpret_cast<sockaddr_in*>(&ss)->sin_port);
    *out = std::move(s);
    last = CLmError();
    break;
  }
  ::freeaddrinfo(list);
  return last;
}

CLmError Socket::Accept(Deadline deadline, Socket* out, std::string* peer) const {
  for (;;) {
    pollfd p{fd_, POLLIN, 0};
    int r = ::poll(&p, 1, PollMs(deadline.RemainingMs()));
    if (r < 0 && errno == EINTR) continue;
    if (r < 0) return CLmError::FromErrno(kKpErrIo, errno, "poll on listener");
    if (r == 0) return CLmError(kKpErrTimeout, "no connection");
    if (p.revents & (POLLERR | POLLNVAL)) return CLmError(kKpErrDisconnected, "listener closed");
    sockaddr_storage ss{};
    socklen_t len = sizeof ss;
    int fd = ::accept4(fd_, reinterpret_cast<sockaddr*>(&ss), &len, SOCK_CLOEXEC);
    if (fd < 0) {
      if (errno == EINTR || errno == EAGAIN || errno == ECONNABORTED) continue;
      return CLmError::FromErrno(kKpErrIo, errno, "accept");
    }
    Tune(fd);
    if (peer) {
      char host[INET6_ADDRSTRLEN] = "?";
      unsigned port = 0;
      if (ss.ss_family == AF_INET6) {
        auto* a = reinterpret_cast<sockaddr_in6*>(&ss);
        inet_ntop(AF_INET6, &a->sin6_addr, host, sizeof host);
        port = ntohs(a->sin6_port);
      } else {
        auto* a = reinterpret_cast<sockaddr_in*>(&ss);
        inet_ntop(AF_INET, &a->sin_addr, host, sizeof host);
        port = ntohs(a->sin_port);
      }
      *peer = HostPortText(host, port);
    }
    *out = Socket(fd);
    return {};
  }
}

CLmError Socket::SetTimeout(int option, int64_t ms, int* cached) {
  // 0 in SO_RCVTIMEO means "wait forever"; a bounded wait is at least 1 ms.
  int want = ms >= INT_MAX ? 0 : static_cast<int>(std::max<int64_t>(ms, 1));
  // Calls with the same time-out see slightly different remaining times; re-arming the socket
  // for each would cost a system call per send and receive. A wait may overrun its deadline by
  // at most kTimeoutSlackMs.
  if (*cached == want || (want > 0 && *cached > 0 && std::abs(*cached - want) <= kTimeoutSlackMs)) {
    return {};
  }
  timeval tv{want / 1000, (want % 1000) * 1000};
  if (::setsockopt(fd_, SOL_SOCKET, option, &tv, sizeof tv) != 0) {
    return CLmError::FromErrno(kKpErrIo, errno, "setsockopt timeout");
  }
  *cached = want;
  return {};
}

CLmError Socket::SendAll(const void* data, size_t length, Deadline deadline, const char* what) {
  auto* p = static_cast<const char*>(data);
  while (length > 0) {
    int64_t left = deadline.RemainingMs();
    if (left == 0) return CLmError::Format(kKpErrTimeout, "%s: send timed out", what);
    if (CLmError e = SetTimeout(SO_SNDTIMEO, left, &sndTimeoutMs_)) return e;
    ssize_t n = ::send(fd_, p, length, MSG_NOSIGNAL);
    if (n < 0) {
      if (errno == EINTR) continue;
      if (errno == EAGAIN || errno == EWOULDBLOCK) {
        if (deadline.Expired()) return CLmError::Format(kKpErrTimeout, "%s: send timed out", what);
        continue;
      }
      int e = errno;
      return CLmError::FromErrno(e == EPIPE || e == ECONNRESET ? kKpErrDisconnected : kKpErrIo, e,
                                 std::string(what) + ": send");
    }
    p += n;
    length -= static_cast<size_t>(n);
  }
  return {};
}

CLmError Socket::RecvSome(void* data, size_t room, Deadline deadline, size_t* received,
                          const char* what) {
  for (;;) {
    int64_t left = deadline.RemainingMs();
    if (left == 0) return CLmError::Format(kKpErrTimeout, "%s: receive timed out", what);
    if (CLmError e = SetTimeout(SO_RCVTIMEO, left, &rcvTimeoutMs_)) return e;
    ssize_t n = ::recv(fd_, data, room, 0);
    if (n > 0) {
      *received = static_cast<size_t>(n);
      return {};
    }
    if (n == 0) return CLmError::Format(kKpErrDisconnected, "%s: the peer closed the connection", what);
    if (errno == EINTR) continue;
    if (errno == EAGAIN || errno == EWOULDBLOCK) {
      if (deadline.Expired()) return CLmError::Format(kKpErrTimeout, "%s: receive timed out", what);
      continue;
    }
    int e = errno;
    return CLmError::FromErrno(e == ECONNRESET ? kKpErrDisconnected : kKpErrIo, e,
                               std::string(what) + ": receive");
  }
}

bool Socket::LooksAlive() const {
  if (fd_ < 0) return false;
  char c;
  ssize_t n = ::recv(fd_, &c, 1, MSG_PEEK | MSG_DONTWAIT);
  if (n < 0) return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
  return false;  // end of stream, or bytes nobody asked for: either way not fit for a request
}

size_t Socket::UnacknowledgedBytes() const {
  int queued = 0;
  if (fd_ < 0 || ::ioctl(fd_, SIOCOUTQ, &queued) != 0 || queued < 0) return 0;
  return static_cast<size_t>(queued);
}

bool Socket::HasIncoming() const {
  if (fd_ < 0) return false;
  char c;
  ssize_t n = ::recv(fd_, &c, 1, MSG_PEEK | MSG_DONTWAIT);
  return n >= 0;
}

}  // namespace appmgr::net
