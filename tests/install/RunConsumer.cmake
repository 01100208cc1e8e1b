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

if(PKG_CONFIG)
  set(ENV{PKG_CONFIG_PATH} "${prefix}/${LIBDIR}/pkgconfig")
  run("${PKG_CONFIG}" --cflags --libs orvcapsule)
  separate_arguments(flags UNIX_COMMAND "${output}")
  run("${CXX}" -std=c++20 "${SOURCE_DIR}/consumer.cpp" -o "${WORK_DIR}/consumer" ${flags})
  run("${CMAKE_COMMAND}" -E env "LD_LIBRARY_PATH=${prefix}/${LIBDIR}" "${WORK_DIR}/consumer")
  expect_greeting()
endif()
