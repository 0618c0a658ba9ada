# Sources of the session library, relative to platform/.
set(KP_NET_SOURCES
  net/MangleHostName.cc
)
