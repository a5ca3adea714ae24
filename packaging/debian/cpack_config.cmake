# Read by cpack before it packs.

# Packages made from the same sources are the same: their dates are that of the change log.
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
  execute_process(COMMAND dpkg-parsechangelog -l ${CPACK_JX_CHANGELOG} -S Timestamp
    OUTPUT_VARIABLE timestamp OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  set(ENV{SOURCE_DATE_EPOCH} ${timestamp})
endif()

# The libraries of i386 may be those for compilers on amd64.
set(SHLIBDEPS_EXECUTABLE ${CPACK_JX_SOURCE}/packaging/debian/shlibdeps)
