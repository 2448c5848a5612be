# What `cmake --install` puts under the prefix: headers, the static engine,
# the shared C library, the tools, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

set(QUORVIX_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/QuorvixEngine)

install(TARGETS quorvix_engine quorvix_c EXPORT QuorvixEngineTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} NAMELINK_COMPONENT Development
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/quorvix DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${QUORVIX_GENERATED_INCLUDE}/quorvix/Version.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/quorvix)
if(QUORVIX_BUILD_TOOLS)
  install(TARGETS quorvix quorvix-sandbox RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

install(EXPORT QuorvixEngineTargets NAMESPACE QuorvixEngine:: DESTINATION ${QUORVIX_CMAKE_DIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/QuorvixEngineConfig.cmake.in
  ${PROJECT_BINARY_DIR}/QuorvixEngineConfig.cmake INSTALL_DESTINATION ${QUORVIX_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/QuorvixEngineConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/QuorvixEngineConfig.cmake ${PROJECT_BINARY_DIR}/QuorvixEngineConfigVersion.cmake
  DESTINATION ${QUORVIX_CMAKE_DIR})

# The file finds its prefix from where it lies, so an installed tree can move.
file(RELATIVE_PATH QUORVIX_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${PROJECT_SOURCE_DIR}/cmake/quorvix.pc.in ${PROJECT_BINARY_DIR}/quorvix.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/quorvix.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
