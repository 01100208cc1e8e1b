file(REMOVE_RECURSE "${WORK_DIR}")
set(prefix "${WORK_DIR}/moved")

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGN}: ${result}\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

function(expect_greeting)
  if(NOT output STREQUAL "Größe canAnimate\n")
    message(FATAL_ERROR "the consumer printed: ${output}")
  endif()
endfunction()

# The tree is moved before its use: nothing in it may name the place where it was installed.
run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${WORK_DIR}/installed")
file(RENAME "${WORK_DIR}/installed" "${prefix}")
file(GLOB_RECURSE private_headers "${prefix}/include/*/detail/*" "${prefix}/include/*/shared/*")
if(private_headers)
  message(FATAL_ERROR "private headers were installed: ${private_headers}")
endif()

# What people read, and programs load, comes along.
file(GLOB_RECURSE documents RELATIVE "${prefix}" "${prefix}/share/*")
foreach(wanted IN ITEMS hosting.md definition.schema.json orvcapsule/en_US.txt)
  string(FIND ";${documents};" "/${wanted};" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "${wanted} was not installed: ${documents}")
  endif()
endforeach()
file(STRINGS "${prefix}/share/orvcapsule/en_US.txt" texts REGEX "^\\$\\$\\$/[A-Za-z/]+=[A-Z].*[a-z0-9]$")
file(STRINGS "${prefix}/share/orvcapsule/en_US.txt" lines)
list(LENGTH texts count)
if(count LESS 8 OR NOT "${texts}" STREQUAL "${lines}")
  message(FATAL_ERROR "the dictionary is not whole: ${lines}")
endif()

# The host includes every header: what they include must be installed too.
set(include_dir "${prefix}/${INCLUDEDIR}/orvcapsule")
file(GLOB_RECURSE headers RELATIVE "${include_dir}" "${include_dir}/*.h")
if(NOT headers)
  message(FATAL_ERROR "no headers were installed in ${include_dir}")
endif()
list(TRANSFORM headers REPLACE "(.+)" "#include <\\1>\n")
string(CONCAT includes ${headers})
file(WRITE "${WORK_DIR}/headers.cpp" "${includes}")

run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}" -B "${WORK_DIR}/cmake" -G Ninja "-DCMAKE_CXX_COMPILER=${CXX}"
    "-DCMAKE_BUILD_TYPE=${CONFIG}" "-DCMAKE_PREFIX_PATH=${prefix}" "-DHEADERS_SOURCE=${WORK_DIR}/headers.cpp")
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/cmake")
run("${WORK_DIR}/cmake/consumer")
expect_greeting()

# The installed examples are whole: they build against nothing but the installed tree, and run.
file(GLOB examples "${prefix}/share/doc/*/examples/CMakeLists.txt")
cmake_path(GET examples PARENT_PATH examples)
run("${CMAKE_COMMAND}" -S "${examples}" -B "${WORK_DIR}/examples" -G Ninja "-DCMAKE_CXX_COMPILER=${CXX}"
    "-DCMAKE_BUILD_TYPE=${CONFIG}" "-DCMAKE_PREFIX_PATH=${prefix}")
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/examples")
run("${WORK_DIR}/examples/browse" "${WORK_DIR}/missing")

if(PKG_CONFIG)
  set(ENV{PKG_CONFIG_PATH} "${prefix}/${LIBDIR}/pkgconfig")
  run("${PKG_CONFIG}" --cflags --libs orvcapsule)
  separate_arguments(flags UNIX_COMMAND "${output}")
  run("${CXX}" -std=c++20 "${SOURCE_DIR}/consumer.cpp" -o "${WORK_DIR}/consumer" ${flags})
  run("${CMAKE_COMMAND}" -E env "LD_LIBRARY_PATH=${prefix}/${LIBDIR}" "${WORK_DIR}/consumer")
  expect_greeting()
endif()
