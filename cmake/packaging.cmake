# What `cmake --install` lays down and what `cpack` packs: the modules, the SDK, the reference host,
# jxfile and the documents, each a component.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# jx_lay_out(LAYOUT LIBRARIES MODULES [EXCLUDE_FROM_ALL]): installs everything, with libraries and
# modules in the folders given; the components are LAYOUT_module, LAYOUT_sdk, LAYOUT_program and
# LAYOUT_documents.
function(jx_lay_out layout library_folder module_folder)
  set(include_folder ${CMAKE_INSTALL_INCLUDEDIR})
  set(config_folder ${library_folder}/cmake/jxwem)
  set(generated ${PROJECT_BINARY_DIR}/${layout})
  foreach(part module sdk program documents)
    set(${part} COMPONENT ${layout}_${part} ${ARGN})
  endforeach()

  # Modules are loaded by path, so they have a folder of their own rather than one of the linker's.
  # jxcheck serves those who write hosts.
  install(TARGETS jxwem LIBRARY DESTINATION ${module_folder} ${module})
  install(TARGETS jxcheck LIBRARY DESTINATION ${module_folder} ${sdk})

  install(DIRECTORY include/jx DESTINATION ${include_folder} ${sdk})
  install(TARGETS jxhost ARCHIVE DESTINATION ${library_folder} ${sdk})
  configure_package_config_file(cmake/jxwem-config.cmake.in ${generated}/jxwem-config.cmake
    INSTALL_DESTINATION ${config_folder} PATH_VARS include_folder library_folder module_folder)
  # The version file also refuses a build of the other pointer size.
  write_basic_package_version_file(${generated}/jxwem-config-version.cmake
    COMPATIBILITY SameMajorVersion)
  install(FILES ${generated}/jxwem-config.cmake ${generated}/jxwem-config-version.cmake
    DESTINATION ${config_folder} ${sdk})
  file(RELATIVE_PATH prefix_from_pc /${library_folder}/pkgconfig /)
  configure_file(cmake/jxwem.pc.in ${generated}/jxwem.pc @ONLY)
  install(FILES ${generated}/jxwem.pc DESTINATION ${library_folder}/pkgconfig ${sdk})

  # jxfile's page and its completions are what `jxfile generate` prints, the other pages what
  # tools/man_pages makes of the headers' comments; the checks compare them.
  foreach(section 1 3 7)
    file(GLOB pages_${section} CONFIGURE_DEPENDS docs/man/*.${section})
  endforeach()
  foreach(section 3 7)
    install(FILES ${pages_${section}} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} ${sdk})
  endforeach()
  if(JX_PROGRAM)
    install(TARGETS jxfile RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} ${program})
    install(FILES ${pages_1} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 ${program})
    install(FILES docs/completion/jxfile.bash RENAME jxfile
      DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions ${program})
    # Debian keeps what packages bring apart from what users install.
    set(zsh_folder zsh/site-functions)
    if(layout STREQUAL debian)
      set(zsh_folder zsh/vendor-completions)
    endif()
    install(FILES docs/completion/_jxfile DESTINATION ${CMAKE_INSTALL_DATADIR}/${zsh_folder} ${program})
    install(FILES docs/completion/jxfile.fish
      DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d ${program})
  endif()

  install(FILES README.md SECURITY.md DESTINATION ${CMAKE_INSTALL_DOCDIR} ${documents})
  install(FILES examples/host.c examples/host.cpp examples/own_kernel.c examples/own_kernel.h
    DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples ${documents})
  install(FILES docs/architecture.md docs/detect.md docs/host-guide.md docs/packaging.md
    docs/performance.md docs/status-codes.md docs/testing.md docs/jxfile.schema.json
    DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs ${documents})
  install(DIRECTORY docs/charts DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs ${documents})
  # Only when the target `reference` has been built.
  install(DIRECTORY ${PROJECT_BINARY_DIR}/reference/html
    DESTINATION ${CMAKE_INSTALL_DOCDIR}/reference ${documents} OPTIONAL)
endfunction()

# jxfile finds the modules relative to its own path: in either of these folders below lib.
jx_lay_out(prefix ${CMAKE_INSTALL_LIBDIR} lib/jxwem)
install(FILES CHANGELOG.md LICENSE packaging/debian/copyright
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT prefix_documents)

# The packages are those of this project, not of one that contains it.
if(PROJECT_IS_TOP_LEVEL)
  jx_lay_out(debian lib/${jx_triplet} lib/${jx_triplet}/jxwem EXCLUDE_FROM_ALL)
  include(packaging/debian/packages.cmake)
endif()
