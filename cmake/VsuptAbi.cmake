# The ABI of libvsupt.so.1 is recorded in abi/libvsupt.so.1.abi (abidw, from
# Debian's abigail-tools), limited to the types the exported headers declare.
#   abi-check   compares the built library with the record; it fails on a
#               change that breaks programs built against the record (an
#               addition is reported and passes);
#   abi-record  writes the record anew from the built library, for a
#               deliberate change (see README.md).
# Both need the library's debug information (the default RelWithDebInfo build).
find_program(VSUPT_ABIDW abidw)
find_program(VSUPT_ABIDIFF abidiff)
set(VSUPT_ABI_RECORD ${PROJECT_SOURCE_DIR}/abi/libvsupt.so.${PROJECT_VERSION_MAJOR}.abi)
if(VSUPT_ABIDW AND VSUPT_ABIDIFF)
  add_custom_target(abi-record
    COMMAND ${VSUPT_ABIDW} --no-corpus-path --short-locs --drop-private-types --type-id-style hash
      --headers-dir ${PROJECT_SOURCE_DIR}/include/vsupt
      --headers-dir ${VSUPT_GENERATED_INCLUDE_DIR}/vsupt
      --out-file ${VSUPT_ABI_RECORD} $<TARGET_FILE:vsupt>
    DEPENDS vsupt
    COMMENT "Recording the ABI of the built library in ${VSUPT_ABI_RECORD}"
    VERBATIM)
  add_custom_target(abi-check
    COMMAND ${CMAKE_COMMAND} -DABIDIFF=${VSUPT_ABIDIFF} -DRECORD=${VSUPT_ABI_RECORD}
      -DLIBRARY=$<TARGET_FILE:vsupt>
      -DHEADERS=${PROJECT_SOURCE_DIR}/include/vsupt
      -DGENERATED_HEADERS=${VSUPT_GENERATED_INCLUDE_DIR}/vsupt
      -P ${CMAKE_CURRENT_LIST_DIR}/AbiCheck.cmake
    DEPENDS vsupt
    VERBATIM)
endif()
