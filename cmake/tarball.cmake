# The target `tarball`: what is committed, as jxwem-VERSION.tar.gz in the build folder. The same commit
# gives the same bytes.
find_program(GIT git)
if(NOT GIT OR NOT EXISTS ${PROJECT_SOURCE_DIR}/.git)
  return()
endif()
set(jx_tarball ${PROJECT_BINARY_DIR}/jxwem-${PROJECT_VERSION}.tar)
add_custom_target(tarball
  COMMAND ${GIT} -C ${PROJECT_SOURCE_DIR} -c tar.umask=0022 archive
    --prefix=jxwem-${PROJECT_VERSION}/ --output=${jx_tarball} HEAD
  COMMAND gzip -9nf ${jx_tarball}
  COMMENT "Writing ${jx_tarball}.gz" VERBATIM)
