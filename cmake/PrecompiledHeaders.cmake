# The standard library's headers that most sources include, compiled once a target rather than once a source: a third of
# the whole build's time. Sources include what they use all the same; scripts/check-clang builds without this.
option(ORV_PRECOMPILE "Compile the common standard headers once a target" ON)
set(ORV_COMMON_HEADERS
  <algorithm> <any> <array> <atomic> <chrono> <condition_variable> <cstdint> <deque> <filesystem> <functional> <map>
  <memory> <mutex> <optional> <set> <span> <string> <string_view> <system_error> <thread> <unordered_map> <utility>
  <variant> <vector>)

# orv_precompile(TARGET HEADERS...): the common headers and these.
function(orv_precompile target)
  if(ORV_PRECOMPILE)
    target_precompile_headers(${target} PRIVATE ${ORV_COMMON_HEADERS} ${ARGN})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
      target_compile_options(${target} PRIVATE -fpch-preprocess) # lets the compiler cache see through them
    endif()
  endif()
endfunction()
