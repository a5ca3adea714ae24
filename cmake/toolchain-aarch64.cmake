# aarch64 on a 64-bit Debian of another kind: clang with the cross libraries of the archive, and qemu
# to run what it builds. The archive's GNU cross compiler cannot be installed beside g++-multilib.
# /usr/include is searched last, so headers without code of their own (SIMDe, CLI11) are found there;
# those of one processor lie in folders that are not searched.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER clang-19)
set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_C_COMPILER_TARGET aarch64-linux-gnu)
set(CMAKE_CXX_COMPILER_TARGET aarch64-linux-gnu)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64-static -L /usr/aarch64-linux-gnu)
