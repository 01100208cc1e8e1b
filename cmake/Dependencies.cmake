# The installed libraries the project calls. Those whose packages bring no usable CMake description (Debian's libzip
# names programs of other packages in its own) are found by header and library.
function(orv_find_library target header)
  string(MAKE_C_IDENTIFIER "${target}" id)
  find_path(${id}_INCLUDE_DIR ${header} REQUIRED)
  find_library(${id}_LIBRARY NAMES ${ARGN} REQUIRED)
  mark_as_advanced(${id}_INCLUDE_DIR ${id}_LIBRARY)
  add_library(${target} UNKNOWN IMPORTED GLOBAL)
  set_target_properties(${target} PROPERTIES
    IMPORTED_LOCATION "${${id}_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${${id}_INCLUDE_DIR}")
  if(ORV_STATIC_DEPENDENCIES)
    orv_complete_static_library(${target} ${id})
  endif()
endfunction()

if(ORV_STATIC_DEPENDENCIES)
  include(StaticDependencies)
endif()

find_package(Threads REQUIRED)
find_package(Boost 1.81 REQUIRED)
find_package(simdjson REQUIRED)
orv_find_library(orv::libzip zip.h zip)
orv_find_library(orv::zlib zlib.h z)
orv_find_library(orv::libcurl curl/curl.h curl)
orv_find_library(orv::sqlite3 sqlite3.h sqlite3)
orv_find_library(orv::utf8proc utf8proc.h utf8proc)

# Header-only.
find_path(ORV_XXHASH_INCLUDE_DIR xxhash.h REQUIRED)
mark_as_advanced(ORV_XXHASH_INCLUDE_DIR)
add_library(orv_xxhash INTERFACE)
add_library(orv::xxhash ALIAS orv_xxhash)
target_include_directories(orv_xxhash SYSTEM INTERFACE "$<BUILD_INTERFACE:${ORV_XXHASH_INCLUDE_DIR}>")
