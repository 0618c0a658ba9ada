# Sources of the session library, relative to platform/.
set(KP_NET_SOURCES
  net/Arena.cc
  net/KpXdr.cc
  net/MangleHostName.cc
  net/XdrCodec.cc
)
list(APPEND KP_NET_SOURCES
  net/CKpNetwork.cc
  net/Frame.cc
  net/KpNetworkPool.cc
  net/Socket.cc
)
