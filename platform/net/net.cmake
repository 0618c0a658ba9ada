# Sources of the session library, relative to platform/.
set(KP_NET_SOURCES
  net/Arena.cc
  net/KpXdr.cc
  net/MangleHostName.cc
  net/XdrCodec.cc
)
