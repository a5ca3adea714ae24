# The target `jxwem_typed`: typed/jxwem.so, the module with full debug information, from which
# tools/check_abi reads the types of the exported routines. Not optimized: that takes half as long.
# Built only when asked for.
add_library(jxwem_typed SHARED EXCLUDE_FROM_ALL ${jxwem_sources})
target_include_directories(jxwem_typed PRIVATE ${PROJECT_SOURCE_DIR})
target_link_libraries(jxwem_typed PRIVATE jx_sdk jx_reproducible)
target_compile_definitions(jxwem_typed PRIVATE _FILE_OFFSET_BITS=64 _TIME_BITS=64)
target_compile_options(jxwem_typed PRIVATE -g -O0 -fno-exceptions -fno-rtti -fno-threadsafe-statics
  -fvisibility=hidden -fvisibility-inlines-hidden)
set_target_properties(jxwem_typed PROPERTIES OUTPUT_NAME jxwem PREFIX "" LINKER_LANGUAGE C
  LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/typed
  LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/jxwem.map)
target_link_options(jxwem_typed PRIVATE -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/jxwem.map)
