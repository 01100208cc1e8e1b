# GoogleTest is built with the project's own language version: Debian's binary is C++17 and cannot print char8_t text.
# The sources come from Debian's googletest package; elsewhere an installed GoogleTest serves.
set(ORV_GOOGLETEST_SOURCE "/usr/src/googletest" CACHE PATH "Where GoogleTest's sources lie")
if(EXISTS "${ORV_GOOGLETEST_SOURCE}/CMakeLists.txt")
  set(INSTALL_GTEST OFF CACHE INTERNAL "")
  set(gtest_force_shared_crt ON CACHE INTERNAL "")
  add_subdirectory("${ORV_GOOGLETEST_SOURCE}" "${PROJECT_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL SYSTEM)
else()
  find_package(GTest REQUIRED)
endif()
