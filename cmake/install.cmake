# What is installed, and how other builds find it: a CMake package and a pkg-config file, both
# relocatable. The components are those of the Debian packages (cmake/packages.cmake).
include(CMakePackageConfigHelpers)

install(TARGETS vxicore26 EXPORT vxicore26-targets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  COMPONENT library NAMELINK_COMPONENT development)
install(FILES include/vxicore26.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)

set(vx_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vxicore26)
install(EXPORT vxicore26-targets NAMESPACE vxicore26:: DESTINATION ${vx_package_dir} COMPONENT development)
configure_package_config_file(cmake/vxicore26-config.cmake.in vxicore26-config.cmake
  INSTALL_DESTINATION ${vx_package_dir})
write_basic_package_version_file(vxicore26-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vxicore26-config.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/vxicore26-config-version.cmake DESTINATION ${vx_package_dir}
  COMPONENT development)

file(RELATIVE_PATH vx_pc_prefix /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/vxicore26.pc.in vxicore26.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vxicore26.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT development)

# Read by people who write a host; the documentation of the Debian package.
install(FILES examples/c/consumer.c examples/c/consumer.cpp
  examples/c/CMakeLists.txt DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT development)
