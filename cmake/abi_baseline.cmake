# The targets jxwem_typed and jxcheck_typed: typed/jxwem.so and typed/jxcheck.so, the modules with full
# debug information, from which tools/check_abi reads the types of the exported routines. Not optimized:
# that takes half as long. Built only when asked for.
foreach(module jxwem jxcheck)
  set(typed ${module}_typed)
  set(map ${PROJECT_SOURCE_DIR}/cmake/${module}.map)
  get_target_property(sources ${module} SOURCES)
  add_library(${typed} SHARED EXCLUDE_FROM_ALL ${sources})
  target_include_directories(${typed} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${typed} PRIVATE jx_sdk jx_reproducible)
  target_compile_definitions(${typed} PRIVATE _FILE_OFFSET_BITS=64 _TIME_BITS=64)
  target_compile_options(${typed} PRIVATE -g -O0 -fno-exceptions -fno-rtti -fno-threadsafe-statics
    -fvisibility=hidden -fvisibility-inlines-hidden)
  set_target_properties(${typed} PROPERTIES OUTPUT_NAME ${module} PREFIX "" LINKER_LANGUAGE C
    LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/typed LINK_DEPENDS ${map}
    EXPORT_COMPILE_COMMANDS OFF)  # clang-tidy would read every source twice
  target_link_options(${typed} PRIVATE -Wl,--version-script=${map})
endforeach()
