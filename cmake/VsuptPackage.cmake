# Debian packages, made by `cpack -G DEB` in a release build:
#   libvsupt1     the Runtime component: the library and its SONAME link;
#   libvsupt-dev  the Development component: headers, the .so link,
#                 vsupt.pc, the CMake package and the examples.
# Their dependencies come from dpkg-shlibdeps and from the components' own
# (the development package needs the runtime package of the same version);
# the library is stripped, and the runtime package carries its shlibs file.
set(CPACK_PACKAGE_NAME vsupt)
set(CPACK_PACKAGE_VENDOR "vsupt developers")
set(CPACK_PACKAGE_CONTACT "vsupt developers <vsupt@localhost>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL Runtime Development)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS Runtime)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libvsupt${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
# CPack puts the project's description first, as the synopsis.
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "libvsupt.so.${PROJECT_VERSION_MAJOR}: counted objects, recursive locks that survive the
cancellation of their holder, events, threads and timers, a logger with
levels per category, property stores and files, and a daemon framework.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvsupt-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "Development files: headers, the pkg-config file, the CMake package and example programs for
building against libvsupt.so.${PROJECT_VERSION_MAJOR}.")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

include(CPack)
