# Install rules: the library with its SONAME links, the public headers, the qzcore command, an
# exported CMake package (find_package(QZCore) -> QZCore::w64qzcore5) and the pkg-config file
# w64qzcore5.pc. Components: "runtime" (the versioned shared object) and "dev" (everything a
# program needs to build against it, and the qzcore command).
include(CMakePackageConfigHelpers)

set(QZ_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/QZCore)

install(TARGETS w64qzcore5 EXPORT QZCoreTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${PROJECT_SOURCE_DIR}/include/qzcore.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/qzcore/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qzcore
  COMPONENT dev FILES_MATCHING PATTERN "*.h")
if(QZ_BUILD_TOOLS)
  install(TARGETS qzcore RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT dev)
endif()

install(EXPORT QZCoreTargets NAMESPACE QZCore:: DESTINATION ${QZ_CMAKE_DIR} COMPONENT dev)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/QZCoreConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/QZCoreConfig.cmake INSTALL_DESTINATION ${QZ_CMAKE_DIR})
# One major version is one binary interface (the major is in the library's name).
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/QZCoreConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/QZCoreConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/QZCoreConfigVersion.cmake
  DESTINATION ${QZ_CMAKE_DIR} COMPONENT dev)

# pkg-config: paths relative to ${prefix} where they lie under it, so a moved tree still works.
foreach(kind LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${kind}}")
    set(QZ_PC_${kind} "${CMAKE_INSTALL_${kind}}")
  else()
    set(QZ_PC_${kind} "\${prefix}/${CMAKE_INSTALL_${kind}}")
  endif()
endforeach()
# The prefix is the one of the install itself (cmake --install --prefix, or CPack's), so it is filled
# in when installing rather than when configuring.
install(CODE "
  set(QZ_PC_PREFIX \"\${CMAKE_INSTALL_PREFIX}\")
  set(QZ_PC_LIBDIR [==[${QZ_PC_LIBDIR}]==])
  set(QZ_PC_INCLUDEDIR [==[${QZ_PC_INCLUDEDIR}]==])
  set(PROJECT_VERSION ${PROJECT_VERSION})
  configure_file(\"${CMAKE_CURRENT_LIST_DIR}/w64qzcore5.pc.in\" \"${CMAKE_CURRENT_BINARY_DIR}/w64qzcore5.pc\" @ONLY)
  " COMPONENT dev)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/w64qzcore5.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
