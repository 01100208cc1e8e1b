# What a user of a dependency's static library must define and link besides: orv_find_library asks here where the
# dependencies are static. A shared library carries both itself.
set(ORV_STATIC_DEFINITIONS_orv__libzip ZIP_STATIC)
set(ORV_STATIC_LIBRARIES_orv__libzip ZLIB::ZLIB advapi32 bcrypt)
set(ORV_STATIC_DEFINITIONS_orv__libcurl CURL_STATICLIB)
set(ORV_STATIC_LIBRARIES_orv__libcurl ZLIB::ZLIB ws2_32 crypt32 bcrypt advapi32 winmm)
set(ORV_STATIC_DEFINITIONS_orv__utf8proc UTF8PROC_STATIC)

find_package(ZLIB REQUIRED)

function(orv_complete_static_library target id)
  set_target_properties(${target} PROPERTIES
    INTERFACE_COMPILE_DEFINITIONS "${ORV_STATIC_DEFINITIONS_${id}}"
    INTERFACE_LINK_LIBRARIES "${ORV_STATIC_LIBRARIES_${id}}")
endfunction()
