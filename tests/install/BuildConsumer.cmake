# Included by the install and package tests: builds the consumer program
# against the library installed under PREFIX, through find_package(vsupt 1.0)
# and through the flags of pkg-config, with CONSUMER_CXX at its default
# standard, and runs both. Any failing step fails the test.
if(NOT PKG_CONFIG)
  message(FATAL_ERROR "pkg-config was not found when the project was configured")
endif()
if(NOT CONSUMER_CXX)
  message(FATAL_ERROR "clang++-14 was not found when the project was configured")
endif()

# A library built with sanitizers needs their run-time in every program
# that loads it.
set(consumer_flags "")
if(SANITIZE)
  set(consumer_flags "-fsanitize=${SANITIZE}")
endif()

# (a) the CMake package
execute_process(
  COMMAND ${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/find_package -G ${GENERATOR}
    -DCMAKE_MAKE_PROGRAM=${MAKE_PROGRAM}
    -DCMAKE_CXX_COMPILER=${CONSUMER_CXX}
    -DCMAKE_CXX_FLAGS=${consumer_flags}
    -DCMAKE_BUILD_TYPE=${CONFIG}
    -DCMAKE_PREFIX_PATH=${PREFIX}
  COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
execute_process(
  COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR}/find_package
  COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)

# (b) pkg-config, with the compiler called directly
set(ENV{PKG_CONFIG_PATH} ${PREFIX}/${LIBDIR}/pkgconfig)
execute_process(
  COMMAND ${PKG_CONFIG} --cflags --libs vsupt
  OUTPUT_VARIABLE pkg_config_flags OUTPUT_STRIP_TRAILING_WHITESPACE
  COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(pkg_config_flags UNIX_COMMAND "${pkg_config_flags}")
file(MAKE_DIRECTORY ${WORK_DIR}/pkg-config)
execute_process(
  COMMAND ${CONSUMER_CXX} ${consumer_flags} ${CONSUMER_DIR}/consumer.cpp ${pkg_config_flags}
    -o ${WORK_DIR}/pkg-config/vsupt_consumer
  COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)

set(ENV{LD_LIBRARY_PATH} ${PREFIX}/${LIBDIR})
foreach(way find_package pkg-config)
  execute_process(
    COMMAND ${WORK_DIR}/${way}/vsupt_consumer
    COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
endforeach()
