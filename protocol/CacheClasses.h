// How the client-side message cache treats each request id.
//
// Critical requests change server state: their answer empties the cache. Never-cached requests
// are always sent and never stored. Ids above the highest id this build knows of their subsystem
// (and ids of other subsystems) count as critical, so a newer server message is never served
// stale. The lists cover messages this library does not catalogue (the scheduling service's
// 0x49 family among them): the cache must classify any id it sees.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace appmgr::wire {

inline constexpr uint32_t kAppMgrSubsystem = 0x34000000;
inline constexpr uint32_t kSchedulerSubsystem = 0x49000000;
inline constexpr uint32_t kSubsystemMask = 0xfffe0000;
// The highest App Manager and scheduling-service ids this build knows.
inline constexpr uint32_t kAppMgrMaxMessageNumber = 0x34000324;
inline constexpr uint32_t kSchedulerMaxMessageNumber = 0x4900007a;

// Sorted, so membership is a binary search.
std::span<const uint32_t> NoCacheMessageIds();
std::span<const uint32_t> ResetCacheMessageIds();

bool IsNoCacheMessage(uint32_t id);
bool IsResetCacheMessage(uint32_t id);

}  // namespace appmgr::wire
