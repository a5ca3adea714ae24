# Run by cpack after the files of all packages are laid down and before they are packed: adds what
# Debian wants in each package, and makes the files independent of when and where they were built.
cmake_minimum_required(VERSION 3.25)

# run(COMMAND...): ends the packing if the command fails.
function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# compress(FILE TARGET): without name and date.
function(compress file target)
  execute_process(COMMAND gzip -9nc ${file} OUTPUT_FILE ${target} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

foreach(component ${CPACK_COMPONENTS_ALL})
  string(TOUPPER ${component} key)
  set(root ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr)
  set(package ${CPACK_DEBIAN_${key}_PACKAGE_NAME})
  set(documents ${root}/share/doc/${package})

  file(MAKE_DIRECTORY ${documents})
  file(COPY_FILE ${CPACK_JX_SOURCE}/packaging/debian/copyright ${documents}/copyright)
  compress(${CPACK_JX_CHANGELOG} ${documents}/changelog.Debian.gz)
  if(package STREQUAL "jxwem")
    compress(${CPACK_JX_SOURCE}/CHANGELOG.md ${documents}/changelog.gz)
  endif()
  file(MAKE_DIRECTORY ${root}/share/lintian/overrides)
  file(COPY_FILE ${CPACK_JX_SOURCE}/packaging/debian/lintian-overrides
    ${root}/share/lintian/overrides/${package})

  file(GLOB_RECURSE pages ${root}/share/man/*.[1-9])
  foreach(page ${pages})
    compress(${page} ${page}.gz)
    file(REMOVE ${page})
  endforeach()

  file(GLOB_RECURSE libraries ${root}/lib/*.a)
  foreach(library ${libraries})
    run(${CPACK_JX_STRIP} --strip-debug --remove-section=.comment --enable-deterministic-archives
      ${library})
  endforeach()
  file(GLOB_RECURSE binaries ${root}/lib/*.so ${root}/bin/*)
  foreach(binary ${binaries})
    run(${CPACK_JX_STRIP} --strip-unneeded --remove-section=.comment ${binary})
  endforeach()
  run(chmod -R u=rwX,go=rX ${root})
  run(find ${root} -type f -path */lib/* -exec chmod a-x {} +)
  run(find ${root} -exec touch --no-dereference --date=@$ENV{SOURCE_DATE_EPOCH} {} +)
endforeach()
