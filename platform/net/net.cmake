# Sources of the session library, relative to platform/.
set(KP_NET_SOURCES
  net/Arena.cc
  net/KpXdr.cc
  net/MangleHostName.cc
  net/XdrCodec.cc
)
list(APPEND KP_NET_SOURCES
  net/CKpNetwork.cc
  net/FileChecksum.cc
  net/Frame.cc
  net/KpNetworkPool.cc
  net/Socket.cc
)

# The file-transfer checksum uses xxHash header-only (XXH_INLINE_ALL): nothing to link, but the
# header must be there (libxxhash-dev, scripts/install-deps.sh).
find_path(APPMGR_XXHASH_INCLUDE_DIR xxhash.h)
if(NOT APPMGR_XXHASH_INCLUDE_DIR)
  message(FATAL_ERROR "xxhash.h not found: install libxxhash-dev (scripts/install-deps.sh)")
endif()
