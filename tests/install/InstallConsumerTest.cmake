# Run by CTest in script mode. Installs the build tree into a fresh prefix,
# then builds the consumer program against that prefix twice, through
# find_package(vsupt) and through the flags of pkg-config, and runs both.
# Any failing step fails the test.
if(NOT EXISTS ${LIBRARY})
  message(FATAL_ERROR "${LIBRARY} does not exist: build the project before running this test")
endif()
if(NOT PKG_CONFIG)
  message(FATAL_ERROR "pkg-config was not found when the project was configured")
endif()

# A library built with sanitizers needs their run-time in every program
# that loads it.
if(SANITIZE)
  string(APPEND CXX_FLAGS " -fsanitize=${SANITIZE}")
endif()

set(prefix ${WORK_DIR}/prefix)
file(REMOVE_RECURSE ${WORK_DIR})

execute_process(
  COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix} --config ${CONFIG}
  COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)

# (a) the CMake package
execute_process(
  COMMAND ${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/find_package -G ${GENERATOR}
    -DCMAKE_MAKE_PROGRAM=${MAKE_PROGRAM}
    -DCMAKE_CXX_COMPILER=${CXX}
    -DCMAKE_CXX_FLAGS=${CXX_FLAGS}
    -DCMAKE_BUILD_TYPE=${CONFIG}
    -DCMAKE_PREFIX_PATH=${prefix}
  COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
execute_process(
  COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR}/find_package
  COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)

# (b) pkg-config, with the compiler called directly
set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)
execute_process(
  COMMAND ${PKG_CONFIG} --cflags --libs vsupt
  OUTPUT_VARIABLE pkg_config_flags OUTPUT_STRIP_TRAILING_WHITESPACE
  COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(pkg_config_flags UNIX_COMMAND "${pkg_config_flags}")
separate_arguments(compile_flags UNIX_COMMAND "${CXX_FLAGS}")
file(MAKE_DIRECTORY ${WORK_DIR}/pkg-config)
execute_process(
  COMMAND ${CXX} -std=c++17 ${compile_flags} ${CONSUMER_DIR}/consumer.cpp ${pkg_config_flags}
    -o ${WORK_DIR}/pkg-config/vsupt_consumer
  COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)

set(ENV{LD_LIBRARY_PATH} ${prefix}/${LIBDIR})
foreach(way find_package pkg-config)
  execute_process(
    COMMAND ${WORK_DIR}/${way}/vsupt_consumer
    COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
endforeach()
