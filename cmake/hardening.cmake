# jx_hardening: on for everything that ships. Sanitizer builds leave out what their run-time
# libraries replace.
add_library(jx_hardening INTERFACE)
target_link_libraries(jx_hardening INTERFACE jx_reproducible)
target_compile_definitions(jx_hardening INTERFACE _FILE_OFFSET_BITS=64 _TIME_BITS=64)
target_link_options(jx_hardening INTERFACE
  -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack -Wl,-z,text -Wl,--disable-new-dtags)
if(NOT JX_SANITIZE)
  target_compile_options(jx_hardening INTERFACE -fstack-protector-strong -fstack-clash-protection
    -ftrivial-auto-var-init=zero)
  # clang before 16 takes the option only with this one beside it; clang 18 no longer knows that.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 16)
    target_compile_options(jx_hardening INTERFACE
      -enable-trivial-auto-var-init-zero-knowing-it-will-be-removed-from-clang)
  endif()
  if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
    target_compile_definitions(jx_hardening INTERFACE _FORTIFY_SOURCE=2)
  endif()
  # Each indirect branch must end at a mark.
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
    target_compile_options(jx_hardening INTERFACE -mbranch-protection=standard)
  elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|amd64|i.86)$")
    target_compile_options(jx_hardening INTERFACE -fcf-protection=full)
  endif()
endif()
if(JX_SANITIZE)
  target_compile_options(jx_hardening INTERFACE -fsanitize=${JX_SANITIZE}
    -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(jx_hardening INTERFACE -fsanitize=${JX_SANITIZE})
endif()
if(JX_COVERAGE)
  # The counters are in files mapped into each process (%c), one for each process (%p) and binary (%m):
  # a process that a signal ends is counted too, and the name holds when a program empties its
  # environment. In a file of all processes, one that starts would write back the counts that it found.
  # Counted atomically: most lines have the difference of two counters, and threads that lose a count
  # can make it 0.
  set(counters -fprofile-instr-generate=${PROJECT_BINARY_DIR}/counters/%p-%m%c.profraw)
  target_compile_options(jx_hardening INTERFACE ${counters} -fcoverage-mapping
    -mllvm -runtime-counter-relocation -fprofile-update=atomic)
  target_link_options(jx_hardening INTERFACE ${counters})
endif()
