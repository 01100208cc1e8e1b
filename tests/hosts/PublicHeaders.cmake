# One source file a public header. On Windows it includes the system's header first, as hosts do, without the defines
# that the project's own sources use.
file(GLOB public_headers CONFIGURE_DEPENDS RELATIVE "${PROJECT_SOURCE_DIR}"
  "${PROJECT_SOURCE_DIR}/platform/*/*.h" "${PROJECT_SOURCE_DIR}/platform/orvcore/*/*.h"
  "${PROJECT_SOURCE_DIR}/capsule/*.h" "${PROJECT_SOURCE_DIR}/package/*.h" "${PROJECT_SOURCE_DIR}/validation/*.h"
  "${PROJECT_SOURCE_DIR}/sources/*.h"
  "${PROJECT_SOURCE_DIR}/rewrite/*.h" "${PROJECT_SOURCE_DIR}/manager/*.h" "${PROJECT_SOURCE_DIR}/stock/*.h"
  "${PROJECT_SOURCE_DIR}/fontusage/*.h")
foreach(path IN LISTS public_headers)
  string(REGEX REPLACE "^platform/" "" header "${path}")
  string(MAKE_C_IDENTIFIER "${header}" id)
  configure_file(HeaderAlone.cpp.in "${CMAKE_CURRENT_BINARY_DIR}/headers/${id}.cpp" @ONLY)
  list(APPEND header_sources "${CMAKE_CURRENT_BINARY_DIR}/headers/${id}.cpp")
endforeach()
add_library(public_headers_compile OBJECT ${header_sources})
target_link_libraries(public_headers_compile PRIVATE orvcapsule orv_warnings)
target_compile_options(public_headers_compile PRIVATE $<IF:$<BOOL:${MSVC}>,/Od,-O0;-g0>)
