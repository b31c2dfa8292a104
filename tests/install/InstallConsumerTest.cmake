# Run by CTest in script mode. Installs the build tree into a fresh prefix,
# then builds and runs the consumer program against it.
if(NOT EXISTS ${LIBRARY})
  message(FATAL_ERROR "${LIBRARY} does not exist: build the project before running this test")
endif()

set(PREFIX ${WORK_DIR}/prefix)
file(REMOVE_RECURSE ${WORK_DIR})
execute_process(
  COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${PREFIX} --config ${CONFIG}
  COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)

include(${CMAKE_CURRENT_LIST_DIR}/BuildConsumer.cmake)
