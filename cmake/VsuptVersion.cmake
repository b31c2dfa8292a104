# <vsupt/VsuptVersion.h>, made from the project's version into the build
# tree's include directory, beside the headers of include/vsupt.
set(VSUPT_GENERATED_INCLUDE_DIR ${PROJECT_BINARY_DIR}/include)
configure_file(${CMAKE_CURRENT_LIST_DIR}/VsuptVersion.h.in
  ${VSUPT_GENERATED_INCLUDE_DIR}/vsupt/VsuptVersion.h @ONLY)
