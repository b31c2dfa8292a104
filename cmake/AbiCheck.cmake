# Run by the abi-check target in script mode: compares the built LIBRARY with
# the RECORD through ABIDIFF, looking only at the types that the headers in
# HEADERS and GENERATED_HEADERS declare.
# abidiff's status is a set of bits: 1 an error of the tool, 2 a usage
# error, 4 a change of the ABI, 8 a change that breaks programs built
# against the record. Additions (4 alone) are shown and pass.
if(NOT EXISTS ${RECORD})
  message(FATAL_ERROR "No ABI record at ${RECORD}: build the abi-record target and commit the file")
endif()
execute_process(
  COMMAND ${ABIDIFF} --headers-dir2 ${HEADERS} --headers-dir2 ${GENERATED_HEADERS} ${RECORD} ${LIBRARY}
  RESULT_VARIABLE status)
if(NOT status MATCHES "^[0-9]+$")
  message(FATAL_ERROR "abidiff did not run: ${status}")
endif()
math(EXPR tool_failed "${status} & 3")
math(EXPR incompatible "${status} & 8")
if(tool_failed)
  message(FATAL_ERROR "abidiff failed (status ${status})")
endif()
if(incompatible)
  message(FATAL_ERROR "abidiff: the library's ABI is incompatible with ${RECORD} (status ${status}). "
    "A deliberate change updates the record and the version: see README.md.")
endif()
if(status EQUAL 4)
  message(STATUS "The ABI grew compatibly; the record stays as it is until the next version.")
else()
  message(STATUS "The ABI matches ${RECORD}.")
endif()
