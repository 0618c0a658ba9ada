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
  net/FileChecksumAvx2.cc
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
# FileChecksumAvx2.cc is the AVX2 build of the checksum, used at run time only on processors
# that have AVX2; elsewhere (another architecture) it is left out.
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
  set_source_files_properties(${CMAKE_CURRENT_LIST_DIR}/FileChecksumAvx2.cc PROPERTIES COMPILE_OPTIONS -mavx2)
  set_source_files_properties(${CMAKE_CURRENT_LIST_DIR}/FileChecksum.cc PROPERTIES COMPILE_DEFINITIONS APPMGR_CHECKSUM_AVX2)
else()
  list(REMOVE_ITEM KP_NET_SOURCES net/FileChecksumAvx2.cc)
endif()
