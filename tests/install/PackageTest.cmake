# Run by CTest in script mode. Makes the Debian packages of the build tree
# with cpack, checks their names, dependencies and stripped library, installs
# both with dpkg into a scratch root of its own, and builds and runs the
# consumer program against what they installed.
if(NOT EXISTS ${LIBRARY})
  message(FATAL_ERROR "${LIBRARY} does not exist: build the project before running this test")
endif()
find_program(DPKG dpkg)
find_program(DPKG_DEB dpkg-deb)
if(NOT DPKG OR NOT DPKG_DEB)
  message(FATAL_ERROR "dpkg was not found")
endif()

file(REMOVE_RECURSE ${WORK_DIR})
execute_process(
  COMMAND ${CPACK} -G DEB -C ${CONFIG} --config ${BUILD_DIR}/CPackConfig.cmake -B ${WORK_DIR}/packages
  COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)

set(runtime ${WORK_DIR}/packages/libvsupt${VERSION_MAJOR}_${VERSION}_${ARCH}.deb)
set(development ${WORK_DIR}/packages/libvsupt-dev_${VERSION}_${ARCH}.deb)
foreach(package ${runtime} ${development})
  if(NOT EXISTS ${package})
    message(FATAL_ERROR "cpack did not make ${package}")
  endif()
endforeach()

function(expect_field package field pattern)
  execute_process(COMMAND ${DPKG_DEB} --field ${package} ${field}
    OUTPUT_VARIABLE value OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  if(NOT value MATCHES "${pattern}")
    message(FATAL_ERROR "${package}: ${field} is \"${value}\", expected it to match \"${pattern}\"")
  endif()
endfunction()
expect_field(${runtime} Depends "libc6 .*libstdc\\+\\+6")
expect_field(${runtime} Section "^libs$")
expect_field(${development} Depends "^libvsupt${VERSION_MAJOR} \\(= ${VERSION}\\)$")
expect_field(${development} Section "^libdevel$")

# Installed with dpkg into a root of its own: an empty package database, and
# the system's own packages (libc6, libstdc++6) taken as present. The
# runtime package's scripts run outside the root; the ldconfig they call is
# a stand-in that leaves the system's cache alone.
set(ROOT ${WORK_DIR}/root)
file(MAKE_DIRECTORY ${ROOT}/var/lib/dpkg/info ${ROOT}/var/lib/dpkg/updates ${ROOT}/var/lib/dpkg/triggers)
file(TOUCH ${ROOT}/var/lib/dpkg/status)
file(WRITE ${WORK_DIR}/bin/ldconfig "#!/bin/sh\nexit 0\n")
file(CHMOD ${WORK_DIR}/bin/ldconfig PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
set(ENV{PATH} "${WORK_DIR}/bin:$ENV{PATH}")
execute_process(
  COMMAND ${DPKG} --root=${ROOT} --force-not-root --force-depends --force-script-chrootless
    --log=${WORK_DIR}/dpkg.log -i ${runtime} ${development}
  COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)

set(installed ${ROOT}/usr/${LIBDIR}/libvsupt.so.${VERSION})
foreach(file ${installed} ${ROOT}/usr/${LIBDIR}/libvsupt.so.${VERSION_MAJOR} ${ROOT}/usr/${LIBDIR}/libvsupt.so
    ${ROOT}/usr/include/vsupt/VsuptVersion.h ${ROOT}/usr/${LIBDIR}/pkgconfig/vsupt.pc
    ${ROOT}/usr/${LIBDIR}/cmake/vsupt/vsuptConfig.cmake)
  if(NOT EXISTS ${file})
    message(FATAL_ERROR "the packages did not install ${file}")
  endif()
endforeach()
execute_process(COMMAND ${READELF} --sections ${installed}
  OUTPUT_VARIABLE sections COMMAND_ERROR_IS_FATAL ANY)
if(sections MATCHES "[.]symtab|[.]debug_info")
  message(FATAL_ERROR "the packaged library is not stripped")
endif()

set(PREFIX ${ROOT}/usr)
include(${CMAKE_CURRENT_LIST_DIR}/BuildConsumer.cmake)
