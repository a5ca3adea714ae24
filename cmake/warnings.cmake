# jx_warnings: what every target of the project is compiled with. The presets make each warning an
# error; a build inside another project only shows them.
add_library(jx_warnings INTERFACE)
target_compile_options(jx_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(JX_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # What the sanitizers insert makes this compiler see uninitialized values that are none.
  target_compile_options(jx_warnings INTERFACE -Wno-maybe-uninitialized)
endif()
