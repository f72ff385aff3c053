# cpack -G DEB in a build folder makes a Debian package of all that is installed; cpack --config
# CPackSourceConfig.cmake an archive of the sources.
set(CPACK_PACKAGE_NAME kapris)
set(CPACK_PACKAGE_VENDOR "kapris developers")
set(KAPRIS_MAINTAINER "kapris developers" CACHE STRING "Who answers for packages: Name <address>")
set(CPACK_PACKAGE_CONTACT "${KAPRIS_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_PACKAGE_DESCRIPTION
  "kapris divides the cells of a hypergraph into parts of nearly equal weight
while cutting as little net weight as possible: for circuit placement, for
sparse matrices and for parallel computing. This package holds the C library,
shared and static, its headers and the command line tool.")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_GENERATOR TGZ)
set(CPACK_STRIP_FILES ON)
# The package is the same for every umask.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${CPACK_PACKAGE_CONTACT})
set(CPACK_DEBIAN_PACKAGE_SECTION math)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# A package of its own for kapris-mpi, which needs MPI.
if(TARGET kapris_mpi)
  set(CPACK_DEB_COMPONENT_INSTALL ON)
  set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_NAME kapris)
  set(CPACK_DEBIAN_MPI_PACKAGE_NAME kapris-mpi)
  set(CPACK_COMPONENT_UNSPECIFIED_DESCRIPTION "${CPACK_PACKAGE_DESCRIPTION}")
  set(CPACK_COMPONENT_MPI_DESCRIPTION "kapris-mpi partitions a hypergraph by many processes, on one machine or on
many: it spreads independent starts, or searches with all of them until a
time limit.")
endif()

# Patterns of paths below the source folder, whose own path may hold anything.
string(REGEX REPLACE "([][+.*()^$?\\])" "\\\\\\1" source_dir "${PROJECT_SOURCE_DIR}")
set(CPACK_SOURCE_GENERATOR TGZ)
set(CPACK_SOURCE_PACKAGE_FILE_NAME kapris-${PROJECT_VERSION})
set(CPACK_SOURCE_IGNORE_FILES
  "^${source_dir}/[.]git(/|$)"
  "^${source_dir}/build"
  "^${source_dir}/CMakeUserPresets[.]json$"
  "[.]part[.]"
  "/__pycache__/")
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
