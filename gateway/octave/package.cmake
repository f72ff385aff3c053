# Makes the Octave package: cmake -D SOURCE=DIR -D OUTPUT=DIR -D VERSION=X.Y.Z -P package.cmake
#
# OUTPUT/kapris-X.Y.Z.tar.gz holds all that "pkg install" needs to build it: the library's sources and the gateway's.
set(name kapris-${VERSION})
set(package ${OUTPUT}/${name})

file(REMOVE_RECURSE ${package})
file(COPY ${SOURCE}/gateway/octave/ DESTINATION ${package}
  PATTERN package.cmake EXCLUDE
  PATTERN *.in EXCLUDE)
file(COPY ${SOURCE}/gateway/gateway.cpp ${SOURCE}/gateway/host.h DESTINATION ${package}/src)
file(COPY ${SOURCE}/include ${SOURCE}/lib DESTINATION ${package}/src
  FILES_MATCHING PATTERN *.cpp PATTERN *.h PATTERN *.hpp)
file(COPY_FILE ${SOURCE}/LICENSE ${package}/COPYING)
# SOURCE_DATE_EPOCH, where it is set, decides the date.
string(TIMESTAMP date %Y-%m-%d UTC)
configure_file(${SOURCE}/gateway/octave/DESCRIPTION.in ${package}/DESCRIPTION @ONLY)

execute_process(COMMAND ${CMAKE_COMMAND} -E tar czf ${name}.tar.gz --format=gnutar ${name}
  WORKING_DIRECTORY ${OUTPUT} COMMAND_ERROR_IS_FATAL ANY)
message("made ${OUTPUT}/${name}.tar.gz")
