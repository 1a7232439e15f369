# Debian packages through CPack:  cd build/default && cpack -G DEB
#
#   tavrel-binary_<version>_<arch>.deb      the install component "runtime": /usr/bin/minihost,
#                                           /usr/lib/tavrel/modules/Binary.so and the manual page
#   tavrel-binary-dev_<version>_<arch>.deb  the component "dev": the headers under
#                                           /usr/include/tavrel, the static libraries, the CMake
#                                           package and the pkg-config file
#
# Two packages, because they serve two kinds of users: a host administrator wants the program
# and the module and no headers; a developer wants the libraries and needs neither of them
# (the libraries are static, so nothing of the runtime package is used by what they build).
# Each package carries its copyright file and a changelog in /usr/share/doc/<package>/, as
# Debian's rules ask (.ci/package runs lintian on the packages).
#
# It makes no source package and no package for other systems. The package version is the
# project's, with the packaging revision behind it (1.5.0.0-1).

set(TAVREL_PACKAGE_MAINTAINER "Binary maintainers <maintainers@tavrel.example>"
    CACHE STRING "The maintainer named in the Debian packages")

set(CPACK_PACKAGE_NAME tavrel-binary)
set(CPACK_PACKAGE_VENDOR "Tavrel")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${TAVREL_PACKAGE_MAINTAINER})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_GENERATOR DEB)
# Programs and the module lose their debug information in the package (the build tree keeps
# it); static libraries are never stripped.
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime dev)
set(CPACK_DEB_COMPONENT_INSTALL ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# The packages' own revision, behind the project's version: 1.5.0.0-1. Made outside Debian's
# archive, they are not native packages, so each changelog is changelog.Debian.gz, and its
# newest entry names this full version (.ci/package checks that).
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${TAVREL_PACKAGE_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME tavrel-binary)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION interpreters)
# The libraries minihost and the module need (the C and C++ runtimes, GNU readline), read
# from the files by dpkg-shlibdeps.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
# A description's first line is the package's synopsis; CPack indents the others and turns an
# empty line into the paragraph mark " .".
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
  "byte buffers for Tavrel scripts: the Binary module and minihost
Binary is a loadable module for the script host Tavrel. It gives scripts byte
buffers, the script type DATAREF: made from strings or files, sliced, copied,
appended and turned back into strings.

minihost is a stand-in host that loads the module as Tavrel does and runs
small scripts against it (see minihost(1)).")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME tavrel-binary-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEV_DESCRIPTION
  "byte buffers for Tavrel scripts: libraries for developers
The libraries that the Binary module for the script host Tavrel carries, as
static libraries with their headers: FSPath, which edits file-system paths as
text, a string library, and the object and host interfaces of Tavrel modules.

A CMake package (find_package(TavrelBinary)) and a pkg-config file
(tavrel-binary) describe them.")

# /usr/share/doc/<package>/copyright and changelog.Debian.gz of each package.
foreach(component runtime dev)
  if(component STREQUAL "runtime")
    set(_package tavrel-binary)
  else()
    set(_package tavrel-binary-dev)
  endif()
  install(FILES ${PROJECT_SOURCE_DIR}/doc/copyright
          DESTINATION share/doc/${_package} COMPONENT ${component})
  if(TAVREL_GZIP)
    install(FILES ${PROJECT_BINARY_DIR}/package/changelog.Debian.gz
            DESTINATION share/doc/${_package} COMPONENT ${component})
  endif()
endforeach()
if(TAVREL_GZIP)
  add_custom_command(
    OUTPUT ${PROJECT_BINARY_DIR}/package/changelog.Debian.gz
    COMMAND ${CMAKE_COMMAND} -E copy ${PROJECT_SOURCE_DIR}/doc/changelog.Debian
            ${PROJECT_BINARY_DIR}/package/changelog.Debian
    COMMAND ${TAVREL_GZIP} -9 -n -f ${PROJECT_BINARY_DIR}/package/changelog.Debian
    DEPENDS ${PROJECT_SOURCE_DIR}/doc/changelog.Debian
    COMMENT "Compressing the Debian changelog"
    VERBATIM)
  add_custom_target(tavrel_debian_changelog ALL
    DEPENDS ${PROJECT_BINARY_DIR}/package/changelog.Debian.gz)
endif()

include(CPack)
