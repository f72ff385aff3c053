# What cmake --install puts where: headers, both forms of the library, the CMake package and the pkg-config file that
# find them, the command line tool if it is built, documents.
include(GNUInstallDirs)

install(TARGETS kapris kapris_shared EXPORT kaprisTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${KAPRIS_PUBLIC_HEADERS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(KAPRIS_BUILD_CLI)
  install(TARGETS kapris_cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  if(TARGET kapris_manual_files)
    set(share_dir ${PROJECT_BINARY_DIR}/cli/manual/share)
    install(DIRECTORY ${share_dir}/man/ DESTINATION ${CMAKE_INSTALL_MANDIR})
    install(DIRECTORY ${share_dir}/bash-completion ${share_dir}/zsh ${share_dir}/fish
      DESTINATION ${CMAKE_INSTALL_DATAROOTDIR})
  endif()
endif()
# Apart from the rest, so that the tool does not need MPI: cmake --install installs both, packages have one of them.
if(TARGET kapris_mpi)
  install(TARGETS kapris_mpi RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT mpi)
  if(TARGET kapris_manual_files)
    install(DIRECTORY ${share_dir}-mpi/man/ DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT mpi)
    install(DIRECTORY ${share_dir}-mpi/bash-completion ${share_dir}-mpi/zsh ${share_dir}-mpi/fish
      DESTINATION ${CMAKE_INSTALL_DATAROOTDIR} COMPONENT mpi)
  endif()
endif()

# The CMake package.
include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/kapris)
configure_package_config_file(cmake/kaprisConfig.cmake.in ${PROJECT_BINARY_DIR}/package/kaprisConfig.cmake
  INSTALL_DESTINATION ${package_dir} NO_SET_AND_CHECK_MACRO)
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(compatibility SameMinorVersion)
else()
  set(compatibility SameMajorVersion)
endif()
write_basic_package_version_file(${PROJECT_BINARY_DIR}/package/kaprisConfigVersion.cmake
  COMPATIBILITY ${compatibility})
install(FILES ${PROJECT_BINARY_DIR}/package/kaprisConfig.cmake ${PROJECT_BINARY_DIR}/package/kaprisConfigVersion.cmake
  DESTINATION ${package_dir})
install(EXPORT kaprisTargets NAMESPACE kapris:: DESTINATION ${package_dir})

# The pkg-config file. Its prefix is relative to its own place, so that the tree can be moved, unless the folders were
# given as absolute paths.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}" OR IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
  set(pc_prefix ${CMAKE_INSTALL_PREFIX})
  set(pc_libdir ${CMAKE_INSTALL_FULL_LIBDIR})
  set(pc_includedir ${CMAKE_INSTALL_FULL_INCLUDEDIR})
else()
  file(RELATIVE_PATH up /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  string(REGEX REPLACE "/$" "" up "${up}")
  set(pc_prefix "\${pcfiledir}/${up}")
  set(pc_libdir "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
  set(pc_includedir "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
list(TRANSFORM KAPRIS_CXX_RUNTIME PREPEND -l OUTPUT_VARIABLE pc_runtime)
list(JOIN pc_runtime " " pc_runtime)
configure_file(cmake/kapris.pc.in ${PROJECT_BINARY_DIR}/package/kapris.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/package/kapris.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# Not CMAKE_INSTALL_DOCDIR, which a parent project may have set to its own. The folders are those of the source, for the
# links between the documents.
set(doc_dir ${CMAKE_INSTALL_DATAROOTDIR}/doc/kapris)
install(FILES LICENSE CHANGELOG.md DESTINATION ${doc_dir})
install(FILES README.md DESTINATION ${doc_dir} OPTIONAL)
install(DIRECTORY docs DESTINATION ${doc_dir} FILES_MATCHING PATTERN *.md PATTERN *.png)
install(FILES examples/partition.c DESTINATION ${doc_dir}/examples)
