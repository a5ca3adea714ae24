# 32-bit x86 on a 64-bit Debian: the multilib compilers with SSE2 as the baseline.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i386)
set(CMAKE_C_FLAGS_INIT "-m32 -msse2 -mfpmath=sse")
set(CMAKE_CXX_FLAGS_INIT "-m32 -msse2 -mfpmath=sse")
set(CMAKE_CROSSCOMPILING_EMULATOR "")
set(CMAKE_SIZEOF_VOID_P 4)
# Packages of i386 are found too, which the compiler of amd64 knows nothing about.
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
