# What `cmake --install` puts where, beyond minihost and the module (their rules stand beside
# the program in minihost/script/CMakeLists.txt):
#
#   include/tavrel/{strings,path,object,host}/*.h   the headers, in their folders, so that a
#                                                    user writes #include "path/FSPath.h"
#   lib/libtavrel_{strings,path,object}.a            the static libraries (host is headers only)
#   lib/cmake/TavrelBinary/                          the CMake package: TavrelBinaryConfig.cmake,
#                                                    its version file and the exported targets
#                                                    TavrelBinary::strings, ::path, ::object and
#                                                    ::host, with their link dependencies
#   lib/pkgconfig/tavrel-binary.pc                   the same for pkg-config (all four at once)
#   share/man/man1/minihost.1.gz                     minihost's manual page
#
# Two install components: "runtime" (minihost, the module, the manual page) and "dev" (the
# headers, the libraries and both package descriptions). Debian's packages are made from them
# (cmake/Packaging.cmake). The directories are fixed rather than taken from GNUInstallDirs,
# because minihost finds the module at <prefix>/bin/../lib/tavrel/modules/ whatever the system
# calls its library directory.
#
# It does not install the stand-in host's libraries, the tests or anything of testing/.

include(CMakePackageConfigHelpers)

set(TAVREL_INSTALL_INCLUDEDIR include/tavrel)
set(TAVREL_INSTALL_LIBDIR lib)
set(TAVREL_INSTALL_CMAKEDIR ${TAVREL_INSTALL_LIBDIR}/cmake/TavrelBinary)

# The four libraries, by the short name they carry in the package.
set(_tavrel_libraries strings path object host)

foreach(name IN LISTS _tavrel_libraries)
  set(target tavrel_${name})
  # The same names inside this build, for a project that adds this one as a subdirectory.
  add_library(TavrelBinary::${name} ALIAS ${target})
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${name})
  # Users compile the headers as C++20, the standard the libraries are built with.
  target_compile_features(${target} INTERFACE cxx_std_20)
  # NOTE: each folder puts the source tree on its users' include path. That path means nothing
  # on another machine, so it is kept for this build only; installed, the targets carry
  # include/tavrel instead (INCLUDES DESTINATION below).
  get_target_property(_dirs ${target} INTERFACE_INCLUDE_DIRECTORIES)
  set(_build_dirs "")
  foreach(dir IN LISTS _dirs)
    list(APPEND _build_dirs "$<BUILD_INTERFACE:${dir}>")
  endforeach()
  set_property(TARGET ${target} PROPERTY INTERFACE_INCLUDE_DIRECTORIES ${_build_dirs})

  install(DIRECTORY ${PROJECT_SOURCE_DIR}/${name}/
          DESTINATION ${TAVREL_INSTALL_INCLUDEDIR}/${name}
          COMPONENT dev
          FILES_MATCHING PATTERN "*.h")
endforeach()
list(TRANSFORM _tavrel_libraries PREPEND tavrel_ OUTPUT_VARIABLE _tavrel_targets)

install(TARGETS ${_tavrel_targets}
        EXPORT TavrelBinaryTargets
        ARCHIVE DESTINATION ${TAVREL_INSTALL_LIBDIR} COMPONENT dev
        INCLUDES DESTINATION ${TAVREL_INSTALL_INCLUDEDIR})
install(EXPORT TavrelBinaryTargets
        NAMESPACE TavrelBinary::
        DESTINATION ${TAVREL_INSTALL_CMAKEDIR}
        COMPONENT dev)

configure_package_config_file(
  ${CMAKE_CURRENT_LIST_DIR}/TavrelBinaryConfig.cmake.in
  ${PROJECT_BINARY_DIR}/package/TavrelBinaryConfig.cmake
  INSTALL_DESTINATION ${TAVREL_INSTALL_CMAKEDIR})
# A newer release within the same major version serves a user who asks for an older one.
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/package/TavrelBinaryConfigVersion.cmake
  VERSION ${PROJECT_VERSION}
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/package/TavrelBinaryConfig.cmake
              ${PROJECT_BINARY_DIR}/package/TavrelBinaryConfigVersion.cmake
        DESTINATION ${TAVREL_INSTALL_CMAKEDIR}
        COMPONENT dev)

configure_file(${CMAKE_CURRENT_LIST_DIR}/tavrel-binary.pc.in
               ${PROJECT_BINARY_DIR}/package/tavrel-binary.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/package/tavrel-binary.pc
        DESTINATION ${TAVREL_INSTALL_LIBDIR}/pkgconfig
        COMPONENT dev)

# The manual page, compressed as Debian keeps manual pages (gzip -n: no name or time stamp in
# the file, so that the same page always gives the same bytes). Where gzip is missing, the
# page is installed as it is.
find_program(TAVREL_GZIP gzip)
if(TAVREL_GZIP)
  add_custom_command(
    OUTPUT ${PROJECT_BINARY_DIR}/package/minihost.1.gz
    COMMAND ${CMAKE_COMMAND} -E copy ${PROJECT_SOURCE_DIR}/doc/minihost.1
            ${PROJECT_BINARY_DIR}/package/minihost.1
    COMMAND ${TAVREL_GZIP} -9 -n -f ${PROJECT_BINARY_DIR}/package/minihost.1
    DEPENDS ${PROJECT_SOURCE_DIR}/doc/minihost.1
    COMMENT "Compressing the manual page minihost.1"
    VERBATIM)
  add_custom_target(tavrel_man_page ALL DEPENDS ${PROJECT_BINARY_DIR}/package/minihost.1.gz)
  install(FILES ${PROJECT_BINARY_DIR}/package/minihost.1.gz
          DESTINATION share/man/man1 COMPONENT runtime)
else()
  install(FILES ${PROJECT_SOURCE_DIR}/doc/minihost.1 DESTINATION share/man/man1 COMPONENT runtime)
endif()
