# Installation: headers, the shared library with its SONAME links, a
# pkg-config file and a CMake package giving the imported target vsupt::vsupt.
# The Runtime component is what a program needs to run; Development adds what
# is needed to build against the library.
include(CMakePackageConfigHelpers)

set(VSUPT_CMAKE_INSTALL_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/vsupt)

install(TARGETS vsupt EXPORT vsuptTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Runtime NAMELINK_COMPONENT Development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/vsupt/
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vsupt
  COMPONENT Development
  FILES_MATCHING PATTERN "*.h")
install(FILES ${VSUPT_GENERATED_INCLUDE_DIR}/vsupt/VsuptVersion.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vsupt
  COMPONENT Development)

install(EXPORT vsuptTargets
  NAMESPACE vsupt::
  DESTINATION ${VSUPT_CMAKE_INSTALL_DIR}
  COMPONENT Development)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/vsuptConfig.cmake.in
  ${PROJECT_BINARY_DIR}/vsuptConfig.cmake
  INSTALL_DESTINATION ${VSUPT_CMAKE_INSTALL_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vsuptConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vsuptConfig.cmake ${PROJECT_BINARY_DIR}/vsuptConfigVersion.cmake
  DESTINATION ${VSUPT_CMAKE_INSTALL_DIR}
  COMPONENT Development)

# The headers need C++17: the pkg-config file asks for it (a program that
# wants a later standard gives its own -std after these flags). It finds its
# prefix from its own location, so that the installed tree may be put elsewhere (cmake --install --prefix, DESTDIR).
# Directories given as absolute paths stay absolute.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
  BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
  OUTPUT_VARIABLE VSUPT_PC_PREFIX_FROM_PCFILEDIR)
set(VSUPT_PC_LIBDIR "\${prefix}")
cmake_path(APPEND VSUPT_PC_LIBDIR ${CMAKE_INSTALL_LIBDIR})
set(VSUPT_PC_INCLUDEDIR "\${prefix}")
cmake_path(APPEND VSUPT_PC_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR})
configure_file(${CMAKE_CURRENT_LIST_DIR}/vsupt.pc.in ${PROJECT_BINARY_DIR}/vsupt.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vsupt.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT Development)
