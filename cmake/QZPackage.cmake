# Debian packages by CPack (./qz package): the runtime package carries the versioned shared object
# and is named after its SONAME (libw64qzcore5.so.5 -> libw64qzcore5-5); the -dev package carries
# the link name, headers, CMake package, pkg-config file and the qzcore command, and depends on
# exactly this version of the runtime package. The runtime's own dependencies (ICU, SQLite, the C++
# run-time) are read from the shared object by dpkg-shlibdeps.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME libw64qzcore5)
set(CPACK_PACKAGE_VENDOR "QZCore developers")
set(CPACK_PACKAGE_CONTACT "QZCore developers <qzcore@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "QZCore portable services library")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime dev)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libw64qzcore5-${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
  "QZCore portable services library (run-time)\n The shared library libw64qzcore5.so.5: memory, strings in four encodings, locks with statistics, host identity and an option parser.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libw64qzcore5-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libw64qzcore5-${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")
# qzcore needs only this library and the C and C++ run-times, which the runtime package brings.
set(CPACK_DEBIAN_DEV_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEV_DESCRIPTION
  "QZCore portable services library (development files)\n Headers, the CMake package QZCore, the pkg-config file w64qzcore5.pc and the qzcore command.")
# A shlibs file, so packages built against this one get "libw64qzcore5-5 (>= 5.0.0)".
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
include(CPack)
