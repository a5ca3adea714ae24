# jx_debian_architecture, jx_triplet: Debian's names of the ABI that is built for. The second is that of
# a folder below lib for files of one ABI.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(jx_debian_architecture i386)
  set(jx_triplet i386-linux-gnu)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
  set(jx_debian_architecture arm64)
  set(jx_triplet aarch64-linux-gnu)
else()
  set(jx_debian_architecture amd64)
  set(jx_triplet x86_64-linux-gnu)
endif()
